#pragma once

#include <cstdint>
#include <span>

#include "graphics/bitmap.h"

namespace tkv {

/// What a file holds for each of its pixels, and so which profiles can be meant for it. As `inks`
/// the four bytes of a pixel are, in the order of memory, the amounts of cyan, magenta, yellow and
/// black; 255 covers the paper.
enum class ColorKind { rgb, grey, inks };

/// Converts the bitmap from the embedded ICC profile `icc` to sRGB, in place; inks become opaque.
/// False, with the bitmap as it was, when the profile cannot be read or is for another kind.
bool convertToSrgb(Bitmap& bitmap, std::span<const std::uint8_t> icc, ColorKind kind);

}  // namespace tkv
