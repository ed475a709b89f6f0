#include "disc/film_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace tkv::disc {

namespace {

constexpr double kFilmRate = 24000.0 / 1001;  // cinema's 24, as television writes it

// Rates a thousandth apart, as 24 and 23.976, are one rate by two names.
bool isNear(double a, double b) {
    return std::abs(a / b - 1) < 0.004;
}

bool isCinema(double rate) {
    return isNear(rate, kFilmRate) || isNear(rate, 24);
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

}  // namespace

FieldSource fieldSourceOf(const VideoTrack& video, Standard standard) {
    const double rate = video.frameRate.perSecond();
    if (video.fields != Fields::progressive) {
        const bool isOwn = isNear(rate, factsOf(standard).frameRate.perSecond());
        return isOwn ? FieldSource::kept : FieldSource::other;
    }
    if (rate >= 47.5) return FieldSource::pictures;
    if (standard == Standard::ntsc && isCinema(rate)) return FieldSource::pulldown;
    return FieldSource::none;
}

Motion motionOf(const VideoTrack& video, Standard standard) {
    const double rate = video.frameRate.perSecond();
    const double discRate = factsOf(standard).frameRate.perSecond();
    switch (fieldSourceOf(video, standard)) {
        case FieldSource::kept:
        case FieldSource::pulldown:
            return {1, true, {}};
        case FieldSource::other:
            return {1, true, noteOn(2 * rate, 2 * discRate)};
        case FieldSource::pictures:
            return {1, true, noteOn(rate, 2 * discRate)};
        case FieldSource::none:
            break;
    }
    if (standard == Standard::pal && isCinema(rate)) {
        const bool isWhole = std::abs(rate - 24) < std::abs(rate - kFilmRate);
        return {discRate / (isWhole ? 24 : kFilmRate), false,
                "its 24 pictures a second play as 25, 4 % faster"};
    }
    return {1, false, noteOn(rate, discRate)};
}

bool isWide(const VideoTrack& video) {
    // Between the two, where either leaves as much of its frame black.
    return video.aspect > std::sqrt(4.0 / 3 * 16 / 9);
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

Placement placementOf(const VideoTrack& video, Standard standard) {
    return placedIn({kRasterWidth, factsOf(standard).rasterHeight},
                    isWide(video) ? 16.0 / 9 : 4.0 / 3, video.aspect, {2, 4});
}

}  // namespace tkv::disc
