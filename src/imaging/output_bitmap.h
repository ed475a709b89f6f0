#pragma once

#include <algorithm>
#include <optional>

#include "graphics/bitmap.h"

namespace tkv {

/// The largest side of a picture that is written; the drawing library goes no further.
inline constexpr int kLargestOutputSide = 32767;

/// Whether pictures of that size can be written.
constexpr bool isOutputSize(PixelSize size) {
    return std::min(size.width, size.height) >= 1 &&
           std::max(size.width, size.height) <= kLargestOutputSide;
}

/// A transparent bitmap for a picture to be written, with a stride of 32 bytes per pixel: that is
/// eight times what the pixels need (bits per pixel taken for bytes), and part of the interface.
/// None when a side is below 1 or too large to draw or hold.
inline std::optional<Bitmap> newOutputBitmap(PixelSize size) {
    constexpr std::size_t kRowBytesPerPixel = 32;
    if (!isOutputSize(size)) return std::nullopt;
    return Bitmap::create(size, kRowBytesPerPixel * static_cast<std::size_t>(size.width));
}

}  // namespace tkv
