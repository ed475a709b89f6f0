#include "disc/plan/conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace tkv::disc {

namespace {

constexpr FrameRate kFilmRate{24'000, 1001};  // cinema's 24, as television writes it

// Rates a thousandth apart, as 24 and 23.976, are one rate by two names.
bool isNear(double a, double b) {
    return std::abs(a / b - 1) < 0.004;
}

bool isCinema(double rate) {
    return isNear(rate, kFilmRate.perSecond()) || isNear(rate, 24);
}

// Does each moment of one rate fall on one of the other, or nearly so?
bool areMultiples(double a, double b) {
    const double ratio = std::max(a, b) / std::min(a, b);
    return isNear(ratio, std::round(ratio));
}

std::string noteOn(double from, double to) {
    if (areMultiples(from, to)) return {};
    return fmt::format("its {:.4g} pictures a second become {:.4g}, which motion can show", from,
                       to);
}

FieldSource fieldsOf(const VideoTrack& video, Standard standard) {
    const double rate = video.frameRate.perSecond();
    if (video.isToBeWhole) return FieldSource::merged;
    if (video.fields != Fields::progressive) {
        const bool isOwn = isNear(rate, factsOf(standard).frameRate.perSecond());
        return isOwn ? FieldSource::kept : FieldSource::other;
    }
    if (rate >= 47.5) return FieldSource::pictures;
    return FieldSource::none;
}

// Fields, speed and what is worth telling about them.
void decideMotion(const VideoTrack& video, Conversion& conversion) {
    const double rate = video.frameRate.perSecond();
    const double discRate = factsOf(conversion.standard).frameRate.perSecond();
    conversion.fields = fieldsOf(video, conversion.standard);
    conversion.isTopFirst = video.fields == Fields::topFirst;
    switch (conversion.fields) {
        case FieldSource::kept:
            return;
        case FieldSource::other:
            conversion.note = noteOn(2 * rate, 2 * discRate);
            return;
        case FieldSource::pictures:
            conversion.note = noteOn(rate, 2 * discRate);
            return;
        case FieldSource::none:
        case FieldSource::merged:
            break;
    }
    if (isCinema(rate) && conversion.standard == Standard::ntsc) {
        conversion.isPulledDown = true;
        return;
    }
    if (isCinema(rate)) {
        const double television = kFilmRate.perSecond();
        const bool isWhole = std::abs(rate - 24) < std::abs(rate - television);
        conversion.speed = discRate / (isWhole ? 24 : television);
        conversion.note = "its 24 pictures a second play as 25, 4 % faster";
        return;
    }
    conversion.note = noteOn(rate, discRate);
}

int framesIn(double seconds, const FrameRate& rate) {
    return static_cast<int>(std::lround(seconds * rate.perSecond()));
}

// Of a film that stays as it is, what is stored tells.
bool storesCinema(const Film& film, Standard standard) {
    return standard == Standard::ntsc && film.seconds > 0 && isCinema(film.frames / film.seconds);
}

void decideLength(const Film& film, Conversion& conversion) {
    conversion.seconds = film.seconds / conversion.speed;
    conversion.frames = std::max(1, framesIn(conversion.seconds, conversion.frameRate()));
}

// Whether a film stands better in a frame of 16:9 than in one of 4:3.
bool isWide(const VideoTrack& video) {
    // Between the two, where either leaves as much of its frame black.
    return video.aspect > std::sqrt(kNarrowAspect * kWideAspect);
}

void decideShape(const VideoTrack& video, Conversion& conversion) {
    conversion.isWide = isWide(video);
    conversion.cut = video.cut;
    // Columns are even, rows in fours, so that each field has whole rows of colour.
    conversion.placement =
        placedIn({kRasterWidth, factsOf(conversion.standard).rasterHeight},
                 conversion.isWide ? kWideAspect : kNarrowAspect, video.aspect, {2, 4});
}

bool isRgb(const VideoTrack& video) {
    return video.matrix == "gbr" || video.pixelFormat == "pal8" ||
           std::ranges::any_of(std::array{"rgb", "bgr", "gbr"}, [&](const char* name) {
               return video.pixelFormat.find(name) != std::string::npos;
           });
}

// What the film's colours are stored by, as `scale` calls it.
std::string_view matrixOf(const VideoTrack& video) {
    const std::string& tag = video.matrix;
    if (tag == "bt470bg" || tag == "smpte170m") return "bt601";
    if (tag == "bt2020nc" || tag == "bt2020c") return "bt2020";
    if (tag == "bt709") return "bt709";
    if (tag == "smpte240m") return "smpte240m";
    if (tag == "fcc") return "fcc";
    const bool isHigh = video.size.width > 1024 || video.size.height > 576;
    return isHigh ? "bt709" : "bt601";
}

bool isFullRange(const VideoTrack& video) {
    return video.range == "pc" || video.pixelFormat.starts_with("yuvj");
}

bool isHdr(const VideoTrack& video) {
    return video.transfer == "smpte2084" || video.transfer == "arib-std-b67";
}

SourceColors colorsOf(const VideoTrack& video) {
    SourceColors colors;
    colors.isFullRange = isFullRange(video);
    if (isHdr(video)) {
        colors.transfer = video.transfer;
        colors.matrix = video.matrix == "bt2020c" ? "2020_cl" : "2020_ncl";
    } else if (!isRgb(video)) {
        colors.matrix = matrixOf(video);
    }
    return colors;
}

// Of AC-3 on a disc, kb/s.
constexpr int kTopAc3Rate = 448;

// Seconds of a frame of AC-3.
constexpr double kAc3Frame = 1536.0 / 48000;

// Whether a track begins with the picture, within a frame, or what comes before can be left out
// without decoding it: where ffmpeg 5 leaves out a track's first frame, the next one gets a wrong
// time, unless the film counts in a disc's unit of time.
bool beginsRight(const AudioTrack& track, const Film& film) {
    return track.late <= kAc3Frame &&
           (track.late > -kAc3Frame || film.container.starts_with("mpeg"));
}

// Whether a track can be taken as it is: AC-3 as discs have it, of which nothing changes.
bool isTaken(const AudioTrack& track, const Film& film, const Conversion& conversion) {
    return track.codec == "ac3" && track.sampleRate == 48000 && track.bitRate > 0 &&
           track.bitRate <= kTopAc3Rate * std::int64_t{1000} && track.isWhole && track.isUnbroken &&
           beginsRight(track, film) && conversion.speed == 1 && !conversion.evensLoudness &&
           film.skipped == 0 && film.soundDelay == 0;
}

}  // namespace

Conversion conversionOf(const Film& film, Standard standard, bool isCopied) {
    Conversion conversion;
    conversion.standard = standard;
    conversion.isCopied = isCopied;
    if (isCopied) {
        conversion.isPulledDown = storesCinema(film, standard);
    } else if (film.source.slides) {
        conversion.isDrawn = true;
        if (film.source.slides->request.moves) conversion.fields = FieldSource::kept;
        conversion.isTopFirst = true;
    } else {
        decideMotion(film.video, conversion);
    }
    decideLength(film, conversion);
    decideShape(film.video, conversion);
    conversion.colors = colorsOf(film.video);
    setSound(film, kStereoRate, conversion);
    return conversion;
}

void setSound(const Film& film, int stereoRate, Conversion& conversion) {
    conversion.tracks.clear();
    conversion.soundRate = 0;
    conversion.isSoundWhole = !film.audio.empty();
    for (const AudioTrack& track : film.audio) {
        if (conversion.tracks.size() == kMostTracks) break;
        DiscTrack made{track.index, track.language, track.channels > 2, stereoRate,
                       isTaken(track, film, conversion)};
        if (made.isSurround) made.rate = kTopAc3Rate;
        if (made.isCopied) made.rate = static_cast<int>(track.bitRate / 1000);
        conversion.soundRate += made.rate;
        conversion.isSoundWhole = conversion.isSoundWhole && track.isWhole;
        conversion.tracks.push_back(std::move(made));
    }
    if (conversion.tracks.empty()) conversion.soundRate = kStereoRate;
    conversion.topVideoRate = kTopRate - conversion.soundRate - conversion.subtitleRate;
}

FrameRate Conversion::frameRate() const {
    return isPulledDown ? kFilmRate : factsOf(standard).frameRate;
}

int Conversion::keyframeInterval() const {
    // A group may last 36 fields, and 14 pictures last 35.
    return isPulledDown ? 14 : factsOf(standard).keyframeInterval;
}

int Conversion::shownFrames() const {
    return std::max(1, framesIn(seconds, factsOf(standard).frameRate));
}

int Conversion::frameAt(double time) const {
    return framesIn(time, frameRate());
}

double Conversion::startOf(int frame) const {
    const double rate = factsOf(standard).frameRate.perSecond();
    return isPulledDown ? fieldsBefore(frame) / (2 * rate) : frame / rate;
}

Placement placedIn(PixelSize raster, double rasterAspect, double aspect, PixelSize step) {
    // Pixels have been taken for a little wider or narrower than they are ever since they are not
    // square. Nobody sees 2.5 %, but everybody sees a thin bar.
    const double ratio = aspect / rasterAspect;
    if (std::abs(ratio - 1) <= 0.025) return {0, 0, raster.width, raster.height};
    const auto bar = [](int whole, double part, int steps) {
        const int count = static_cast<int>(std::lround(whole * (1 - part) / 2 / steps));
        return std::min(count, (whole / 2 - 1) / steps) * steps;
    };
    if (ratio > 1) {
        const int y = bar(raster.height, 1 / ratio, step.height);
        return {0, y, raster.width, raster.height - 2 * y};
    }
    const int x = bar(raster.width, ratio, step.width);
    return {x, 0, raster.width - 2 * x, raster.height};
}

}  // namespace tkv::disc
