#pragma once

#include "graphics/bitmap.h"
#include "graphics/geometry.h"

namespace tkv {

/// A drop shadow: the shape of what is drawn, offset and blurred, in one colour underneath.
struct Shadow {
    Color color = kBlack;
    double offsetX = 0;     ///< Pixels to the right.
    double offsetY = 0;     ///< Pixels upwards.
    double blurRadius = 0;  ///< Pixels; twice the standard deviation of the Gaussian blur.
    bool operator==(const Shadow&) const = default;
    auto operator<=>(const Shadow&) const = default;
};

/// The largest extent of the shadow beyond the shape on any side, in whole pixels.
int shadowReach(const Shadow& shadow);

/// Puts the shadow of the bitmap's pixels under them. The shadow is clipped to the bitmap: leave a
/// margin of shadowReach.
void addShadow(Bitmap& bitmap, const Shadow& shadow);

}  // namespace tkv
