#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "graphics/bitmap.h"

// The arithmetic of one pixel, the word 0xAARRGGBB, and of a bitmap's resolution.

namespace tkv {

constexpr unsigned alphaOf(std::uint32_t pixel) {
    return pixel >> 24U;
}
constexpr unsigned redOf(std::uint32_t pixel) {
    return (pixel >> 16U) & 0xFFU;
}
constexpr unsigned greenOf(std::uint32_t pixel) {
    return (pixel >> 8U) & 0xFFU;
}
constexpr unsigned blueOf(std::uint32_t pixel) {
    return pixel & 0xFFU;
}

/// Each channel in 0..255.
constexpr std::uint32_t pixelOf(unsigned alpha, unsigned red, unsigned green, unsigned blue) {
    return alpha << 24U | red << 16U | green << 8U | blue;
}

/// The nearest pixel, not premultiplied.
inline std::uint32_t straightPixel(const Color& color) {
    const auto level = [](float part) {
        return static_cast<unsigned>(std::lround(std::clamp(part, 0.0F, 1.0F) * 255));
    };
    return pixelOf(level(color.alpha), level(color.red), level(color.green), level(color.blue));
}

/// From straight alpha to premultiplied.
constexpr std::uint32_t premultiplied(std::uint32_t straight) {
    const unsigned alpha = alphaOf(straight);
    if (alpha == 255) return straight;
    const auto times = [alpha](unsigned channel) { return (channel * alpha + 127) / 255; };
    return pixelOf(alpha, times(redOf(straight)), times(greenOf(straight)),
                   times(blueOf(straight)));
}

/// From premultiplied to straight; what is fully transparent has no colour left and turns black.
constexpr std::uint32_t straight(std::uint32_t premultiplied) {
    const unsigned alpha = alphaOf(premultiplied);
    if (alpha == 255) return premultiplied;
    if (alpha == 0) return 0;
    const auto over = [alpha](unsigned channel) {
        return std::min(255U, (channel * 255 + alpha / 2) / alpha);
    };
    return pixelOf(alpha, over(redOf(premultiplied)), over(greenOf(premultiplied)),
                   over(blueOf(premultiplied)));
}

/// The opaque colour of CMYK in 0..255, converted without a profile.
constexpr std::uint32_t pixelOfInks(unsigned cyan, unsigned magenta, unsigned yellow,
                                    unsigned black) {
    const auto left = [black](unsigned ink) { return ((255 - ink) * (255 - black) + 127) / 255; };
    return pixelOf(255, left(cyan), left(magenta), left(yellow));
}

/// Whole numbers of at least 1, as every format can hold them.
struct Resolution {
    int across;
    int down;
};

/// Dots per inch: 72 where each pixel stands for one drawing unit.
inline Resolution dotsPerInch(const Bitmap& bitmap) {
    const auto dots = [](int pixels, double units) {
        const double perInch = units > 0 ? pixels * kUnitsPerInch / units : kUnitsPerInch;
        return static_cast<int>(std::lround(std::clamp(perInch, 1.0, 65535.0)));
    };
    return {dots(bitmap.width(), bitmap.nominalSize().width),
            dots(bitmap.height(), bitmap.nominalSize().height)};
}

}  // namespace tkv
