#pragma once

#include <optional>

#include "graphics/bitmap.h"

namespace tkv {

/// The part `part` of the source's pixels, whose edges may be fractional, scaled to `size` pixels;
/// beyond the source its edge pixels repeat. Pixels that are neither scaled nor moved are
/// unchanged, and no colour exceeds its alpha.
///
/// Enlarging interpolates linearly. Shrinking convolves with a cubic four output pixels wide, whose
/// second moment is zero: what is not too fine is neither blurred nor sharpened. Pixels that a
/// decoder has averaged (Bitmap::averaged) are sharpened by what that took. docs/sharpness.md
/// compares it with other filters.
std::optional<Bitmap> resampled(const Bitmap& source, const PixelRect& part, PixelSize size);

}  // namespace tkv
