#pragma once

#include <optional>

#include "graphics/bitmap.h"

namespace tkv {

/// The part `part` of the source's pixels, whose edges may be fractional, scaled to `size` pixels;
/// beyond the source its edge pixels repeat. Pixels that are neither scaled nor moved are
/// unchanged. None when there is no memory.
///
/// Upscaling interpolates linearly. Downscaling convolves that with boxes of about one and one and
/// a half output pixels: no weight is negative, so there is no ringing, and of a pattern above the
/// output's Nyquist frequency next to no aliasing is left.
std::optional<Bitmap> resampled(const Bitmap& source, const PixelRect& part, PixelSize size);

}  // namespace tkv
