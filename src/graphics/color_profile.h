#pragma once

#include <cstdint>
#include <span>

#include "graphics/bitmap.h"

namespace tkv {

/// Converts the bitmap from the embedded RGB or grey ICC profile `icc` to sRGB, in place. A
/// profile that cannot be read, or is none for RGB or grey pictures, leaves it as it is.
void convertToSrgb(Bitmap& bitmap, std::span<const std::uint8_t> icc);

}  // namespace tkv
