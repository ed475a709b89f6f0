#include "disc/make/film_subtitles.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include "disc/run/fault.h"
#include "disc/run/text_file.h"
#include "disc/subtitle/bitmap_picture.h"
#include "disc/subtitle/choice.h"
#include "disc/subtitle/cues.h"
#include "disc/subtitle/drawing.h"
#include "disc/subtitle/dvb_canvas.h"
#include "disc/subtitle/dvd_units.h"
#include "disc/subtitle/pgs.h"
#include "disc/subtitle/texts.h"
#include "disc/subtitle/vobsub.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// Of a track, so that its packs never crowd out others': bytes that may come at once, and bytes a
// second after that.
constexpr double kMostAtOnce = 60'000, kMostASecond = 25'000;

SubtitleFrame frameOf(const DiscFilm& film) {
    const Conversion& conversion = film.conversion;
    SubtitleFrame frame;
    frame.raster = {kRasterWidth, factsOf(conversion.standard).rasterHeight};
    frame.aspect = conversion.isWide ? kWideAspect : kNarrowAspect;
    frame.film = film.film.video.shown;
    // What is copied has its bars in the picture.
    if (conversion.isCopied) return frame;
    frame.barX = conversion.placement.x;
    frame.barY = conversion.placement.y;
    return frame;
}

CueTimes timesOf(const DiscFilm& film) {
    const Conversion& conversion = film.conversion;
    const double start = film.film.video.start, speed = conversion.speed;
    return {[&conversion, start, speed](double seconds) {
                // Files may name any hour; behind the film's end all are one.
                const double time = (seconds - start) / speed;
                return conversion.frameAt(std::clamp(time, 0.0, conversion.seconds + 1));
            },
            [&conversion, start, speed](int frame) {
                return frame / conversion.frameRate().perSecond() * speed + start;
            },
            conversion.frames};
}

bool keepsStyle(const FilmSubtitle& subtitle) {
    return subtitle.codec == "ass" || subtitle.codec == "ssa";
}

// A track without a unit would not be there at all, and those behind it had other numbers.
SubpictureUnit emptyUnit(const Conversion& conversion) {
    const SubtitlePicture picture{0, 0, 2, 2, std::vector<std::uint8_t>(4), {}};
    return *unitOf(picture, 0, conversion.startOf(1), false);
}

// The units of one track.
class UnitMaker {
  public:
    UnitMaker(const Conversion& conversion, bool isForced)
        : conversion_(conversion), isForced_(isForced) {}

    void add(const Cue& cue) {
        const double begin = conversion_.startOf(cue.first);
        auto unit =
            unitOf(cue.picture, begin, conversion_.startOf(cue.end), isForced_ || cue.isForced);
        const double bytes = unit ? static_cast<double>(unit->bytes.size()) : 0;
        room_ = std::min(kMostAtOnce, room_ + (begin - last_) * kMostASecond);
        last_ = begin;
        if (!unit || bytes > room_) {
            leaveOut();
            return;
        }
        room_ -= bytes;
        units_.push_back(std::move(*unit));
    }

    std::vector<SubpictureUnit> finish() {
        if (units_.empty()) units_.push_back(emptyUnit(conversion_));
        return std::move(units_);
    }

    void leaveOut() { ++leftOut_; }
    int leftOut() const { return leftOut_; }
    bool isEmpty() const { return units_.empty(); }

  private:
    const Conversion& conversion_;
    bool isForced_;
    std::vector<SubpictureUnit> units_;
    double room_ = kMostAtOnce, last_ = 0;
    int leftOut_ = 0;
};

// The shape in which the canvas of pictures is shown.
double aspectOf(PixelSize canvas, const FilmSubtitle& subtitle, const VideoTrack& video) {
    // Television's lie in the film's frame, however many pixels either has.
    if (subtitle.codec == "dvb_subtitle" || canvas == video.size) return video.aspect;
    // A DVD's lie in its frame, of which the film may be a part, as it was cut out.
    if (canvas.height != 480 && canvas.height != 576) return 0;
    constexpr double kMiddleAspect = 1.5;
    return video.aspect > kMiddleAspect ? kWideAspect : kNarrowAspect;
}

// Of a DVD's title, whose tables have what its units lack. They count in video's range.
std::optional<UnitPalette> paletteOf(const Film& film) {
    if (!film.palette) return std::nullopt;
    UnitPalette palette{};
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const auto byte = [&](unsigned shift) { return (*film.palette)[i] >> shift & 0xFFU; };
        const double light = 1.164 * (byte(16) - 16.0), red = byte(8) - 128.0,
                     blue = byte(0) - 128.0;
        const auto channel = [](double value) {
            return static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0, 255.0)));
        };
        palette[i] = channel(light + 1.596 * red) << 16U |
                     channel(light - 0.813 * red - 0.391 * blue) << 8U |
                     channel(light + 2.018 * blue);
    }
    return palette;
}

// The pictures that a file in the workshop holds.
class BitmapDrawing {
  public:
    BitmapDrawing(const DiscFilm& film, const FilmSubtitle& subtitle, const Workshop& workshop)
        : frame_(frameOf(film)),
          times_(timesOf(film)),
          subtitle_(subtitle),
          film_(film.film),
          video_(film.film.video),
          workshop_(workshop),
          path_(workshop.path(subtitle.text)) {}

    void addTo(UnitMaker& units) {
        std::ifstream file(path_, std::ios::binary);
        if (!file) failOn(path_, "read");
        if (subtitle_.codec == "dvb_subtitle")
            canvas_ = dvbCanvas(readText(workshop_.path(dvbSource(subtitle_.text))));
        const double until = times_.secondsOf(times_.frames);
        const auto take = [&](const BitmapCue& cue) { show(cue, units); };
        if (subtitle_.text.ends_with(".sup")) {
            readPgs(file, until, take);
        } else {
            readDvdUnits(file, paletteOf(film_), until, take);
        }
        change(times_.frames, {}, units);
    }

  private:
    void show(BitmapCue cue, UnitMaker& units) {
        if (workshop_.tools().stop().isStopped()) throw Interrupted();
        if (cue.isTooMuch) units.leaveOut();
        if (canvas_) cue.canvas = *canvas_;
        if (cue.canvas.width <= 0 || cue.canvas.height <= 0) cue.canvas = video_.size;
        cue.aspect = aspectOf(cue.canvas, subtitle_, video_);
        change(times_.frameAt(cue.begin), {0, 0, pictureOf(cue, frame_), cue.isForced}, units);
    }

    // From this frame on something else is shown. Times of a damaged file may go back.
    void change(int frame, Cue next, UnitMaker& units) {
        const int number = std::clamp(frame, shown_.first, times_.frames);
        shown_.end = number;
        if (next.picture == shown_.picture) return;
        if (!shown_.picture.isEmpty() && shown_.end > shown_.first) units.add(shown_);
        next.first = next.end = number;
        shown_ = std::move(next);
    }

    SubtitleFrame frame_;
    CueTimes times_;
    const FilmSubtitle& subtitle_;
    const Film& film_;
    const VideoTrack& video_;
    const Workshop& workshop_;
    std::string path_;
    std::optional<PixelSize> canvas_;  // where something else tells it
    Cue shown_;
};

std::string palettePath(const std::string& folder) {
    return folder + "/film.rgb";
}

std::string notePath(const std::string& folder) {
    return folder + "/note";
}

void writeSubtitles(const DiscFilm& film, const std::string& folder, const Workshop& workshop) {
    std::vector<std::string> fonts;
    for (const std::string& name : attachedFonts(film.film, workshop))
        fonts.push_back(readText(workshop.path(name)));
    const SubtitleFrame frame = frameOf(film);
    SubtitleDrawing drawing(frame, fonts);
    const CueTimes times = timesOf(film);
    std::vector<SubpictureTrack> tracks;
    tracks.reserve(film.subtitles.size());
    std::string note;
    for (const DiscSubtitle& subtitle : film.subtitles) {
        const FilmSubtitle& source = subtitle.source;
        UnitMaker units(film.conversion, source.kind == SubtitleKind::forced);
        if (!source.text.ends_with(".ass")) {
            BitmapDrawing(film, source, workshop).addTo(units);
        } else if (drawing.load(readText(workshop.path(source.text)), keepsStyle(source))) {
            cuesOf(drawing, times, workshop.tools().stop(),
                   [&](const Cue& cue) { units.add(cue); });
        }
        const auto tell = [&](const std::string& words) {
            note += (note.empty() ? "" : "; ") + nameOf(source, film.film) + words;
        };
        if (units.leftOut() > 0) {
            tell(fmt::format(": {} pictures are left out, which follow too fast on others",
                             units.leftOut()));
        } else if (units.isEmpty()) {
            tell(" shows nothing before the film ends");
        }
        tracks.push_back({source.language, units.finish()});
    }
    const VobSub made = vobSubOf(std::move(tracks));
    writeText(workshop.path(subtitleIndex(folder)), made.index);
    writeText(workshop.path(palettePath(folder)), made.palette);
    writeText(workshop.path(notePath(folder)), note);
    const std::string packs = workshop.path(withoutExtension(subtitleIndex(folder)) + ".sub");
    if (!writeFile(packs, made.packs)) failOn(packs, "written");
}

}  // namespace

std::string subtitlesName(const DiscFilm& film) {
    if (film.subtitles.empty() || film.conversion.keepsSubtitles) return {};
    const Conversion& conversion = film.conversion;
    const SubtitleFrame frame = frameOf(film);
    std::vector<std::string> inputs{
        fmt::format("{} x {}, {:.4f}, bars {} {}, film {} x {}, {:.4f}", frame.raster.width,
                    frame.raster.height, frame.aspect, frame.barX, frame.barY, frame.film.width,
                    frame.film.height, film.film.video.aspect),
        fmt::format("from {:.6f}, speed {:.9f}, {} frames, {}", film.film.video.start,
                    conversion.speed, conversion.frames, conversion.isPulledDown)};
    for (const DiscSubtitle& subtitle : film.subtitles) {
        const FilmSubtitle& source = subtitle.source;
        inputs.push_back(source.text.empty() ? source.path + std::to_string(source.index)
                                             : source.text);
        inputs.push_back(source.language);
        inputs.emplace_back(source.kind == SubtitleKind::forced ? "forced" : "");
    }
    return Workshop::nameOf("subtitles", "", inputs);
}

std::string subtitleIndex(const std::string& folder) {
    return folder + "/film.idx";
}

std::string subtitlePalette(const DiscFilm& film, Workshop& workshop) {
    if (film.subtitles.empty()) return {};
    if (!film.conversion.keepsSubtitles) return palettePath(subtitlesName(film));
    // By any name that does not end like that of colours in RGB, dvdauthor takes them for what a
    // disc has; so nothing is rounded.
    std::string lines;
    for (const std::uint32_t color : film.film.palette.value_or(DvdPalette{}))
        lines += fmt::format("{:06x}\n", color);
    return workshop.result(Workshop::nameOf("palette", ".yuv", {lines}),
                           [&](const std::string& made) { writeText(workshop.path(made), lines); });
}

std::string makeSubtitles(const DiscFilm& film, Workshop& workshop) {
    const std::string folder = subtitlesName(film);
    if (folder.empty()) return {};
    const std::string name = workshop.result(folder, [&](const std::string& made) {
        std::filesystem::create_directory(workshop.path(made));
        writeSubtitles(film, made, workshop);
    });
    return readText(workshop.path(notePath(name)));
}

}  // namespace tkv::disc
