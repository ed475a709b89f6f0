#pragma once

#include <cstdint>
#include <span>

#include "graphics/bitmap.h"

namespace tkv {

/// The colour model of a file's pixels, which its profile has to match. As `inks` (CMYK) the four
/// bytes of a pixel are, in memory order, cyan, magenta, yellow and black; 255 is full coverage.
enum class ColorKind { rgb, grey, inks };

/// Converts the bitmap from the embedded ICC profile `icc` to sRGB, in place; CMYK becomes opaque.
/// False, with the bitmap as it was, when the profile cannot be read or is for another kind.
bool convertToSrgb(Bitmap& bitmap, std::span<const std::uint8_t> icc, ColorKind kind);

}  // namespace tkv
