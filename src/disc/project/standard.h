#pragma once

#include <string_view>

#include "composer/page_geometry.h"

namespace tkv::disc {

/// Columns of the picture of every full-size DVD-Video film and menu.
inline constexpr int kRasterWidth = 720;

/// The two television standards that DVD-Video knows.
enum class Standard { pal, ntsc };

/// Bits of a film's picture that every player holds.
inline constexpr int kPlayerBuffer = 112 * 16'384;

/// A rate of frames as a fraction, as film files give it.
struct FrameRate {
    int numerator = 0;
    int denominator = 1;
    double perSecond() const { return static_cast<double>(numerator) / denominator; }
    bool operator==(const FrameRate&) const = default;
};

/// What a standard fixes.
struct StandardFacts {
    std::string_view name;  ///< as dvdauthor and the file of a disc call it
    int rasterHeight;       ///< rows of the picture
    FrameRate frameRate;
    int keyframeInterval;  ///< frames at most from one keyframe to the next
    int menuFrames;        ///< frames of an animated menu
    double menuSeconds() const { return menuFrames / frameRate.perSecond(); }
};

constexpr StandardFacts factsOf(Standard standard) {
    if (standard == Standard::pal) return {"pal", kPalRasterHeight, {25, 1}, 15, passCount(true)};
    return {"ntsc", kNtscRasterHeight, {30000, 1001}, 18, passCount(false)};
}

}  // namespace tkv::disc
