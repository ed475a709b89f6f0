#pragma once

#include "graphics/bitmap.h"
#include "graphics/geometry.h"

namespace tkv {

/// A soft shadow of what is drawn: its shape, moved and blurred, in one colour underneath.
struct Shadow {
    Color color = kBlack;
    double offsetX = 0;     ///< Pixels to the right.
    double offsetY = 0;     ///< Pixels upwards.
    double blurRadius = 0;  ///< Pixels; twice the standard deviation of the Gaussian blur.
    bool operator==(const Shadow&) const = default;
    auto operator<=>(const Shadow&) const = default;
};

/// How far, in whole pixels, the shadow reaches beyond the shape on its farthest side.
int shadowReach(const Shadow& shadow);

/// Puts the shadow of the bitmap's pixels under them. What would fall outside the bitmap is cut:
/// leave a margin of shadowReach.
void addShadow(Bitmap& bitmap, const Shadow& shadow);

}  // namespace tkv
