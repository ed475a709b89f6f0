#include "disc/make/film_subtitles.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "disc/run/fault.h"
#include "disc/run/text_file.h"
#include "disc/subtitle/bitmap_picture.h"
#include "disc/subtitle/choice.h"
#include "disc/subtitle/cues.h"
#include "disc/subtitle/drawing.h"
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
        auto unit = unitOf(cue.picture, begin, conversion_.startOf(cue.end), isForced_);
        const double bytes = unit ? static_cast<double>(unit->bytes.size()) : 0;
        room_ = std::min(kMostAtOnce, room_ + (begin - last_) * kMostASecond);
        last_ = begin;
        if (!unit || bytes > room_) {
            ++leftOut_;
            return;
        }
        room_ -= bytes;
        units_.push_back(std::move(*unit));
    }

    std::vector<SubpictureUnit> finish() {
        if (units_.empty()) units_.push_back(emptyUnit(conversion_));
        return std::move(units_);
    }

    int leftOut() const { return leftOut_; }

  private:
    const Conversion& conversion_;
    bool isForced_;
    std::vector<SubpictureUnit> units_;
    double room_ = kMostAtOnce, last_ = 0;
    int leftOut_ = 0;
};

// The pictures of a file of PGS.
void addBitmaps(const std::string& path, const SubtitleFrame& frame, const CueTimes& times,
                const ProgramStop& stop, UnitMaker& units) {
    const auto bytes = readFile(path);
    if (!bytes) failOn(path, "read");
    Cue shown;
    const auto change = [&](int frameNumber, SubtitlePicture picture) {
        // Times of a damaged file may go back.
        const int number = std::clamp(frameNumber, shown.first, times.frames);
        shown.end = number;
        if (picture == shown.picture) return;
        if (!shown.picture.isEmpty() && shown.end > shown.first) units.add(shown);
        shown = {number, number, std::move(picture)};
    };
    readPgs(*bytes, [&](const BitmapCue& cue) {
        if (stop.isStopped()) throw Interrupted();
        change(times.frameAt(cue.begin), pictureOf(cue, frame));
    });
    change(times.frames, {});
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
        if (source.text.ends_with(".sup")) {
            addBitmaps(workshop.path(source.text), frame, times, workshop.tools().stop(), units);
        } else if (drawing.load(readText(workshop.path(source.text)), keepsStyle(source))) {
            for (const Cue& cue : cuesOf(drawing, times)) {
                if (workshop.tools().stop().isStopped()) throw Interrupted();
                units.add(cue);
            }
        }
        if (units.leftOut() > 0) {
            note +=
                fmt::format("{}{}: {} pictures are left out, which follow too fast on others",
                            note.empty() ? "" : "; ", nameOf(source, film.film), units.leftOut());
        }
        tracks.push_back({source.language, units.finish()});
    }
    const VobSub made = vobSubOf(std::move(tracks));
    writeText(workshop.path(subtitleIndex(folder)), made.index);
    writeText(workshop.path(subtitlePalette(folder)), made.palette);
    writeText(workshop.path(notePath(folder)), note);
    const std::string packs = workshop.path(withoutExtension(subtitleIndex(folder)) + ".sub");
    if (!writeFile(packs, made.packs)) failOn(packs, "written");
}

}  // namespace

std::string subtitlesName(const DiscFilm& film) {
    if (film.subtitles.empty()) return {};
    const Conversion& conversion = film.conversion;
    const SubtitleFrame frame = frameOf(film);
    std::vector<std::string> inputs{
        fmt::format("{} x {}, {:.4f}, bars {} {}, film {} x {}", frame.raster.width,
                    frame.raster.height, frame.aspect, frame.barX, frame.barY, frame.film.width,
                    frame.film.height),
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

std::string subtitlePalette(const std::string& folder) {
    return folder + "/film.rgb";
}

std::string makeSubtitles(const DiscFilm& film, Workshop& workshop) {
    if (film.subtitles.empty()) return {};
    const std::string name = workshop.result(subtitlesName(film), [&](const std::string& made) {
        std::filesystem::create_directory(workshop.path(made));
        writeSubtitles(film, made, workshop);
    });
    return readText(workshop.path(notePath(name)));
}

}  // namespace tkv::disc
