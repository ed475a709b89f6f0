#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "graphics/bitmap.h"

namespace tkv {

/// The EXIF orientation (1 to 8, TIFF 6.0 tag 274) in data that begin with "Exif\0\0", as in an
/// APP1 segment of JPEG, or with the TIFF header that follows; 1 (upright) when there is none.
int exifOrientation(std::span<const std::uint8_t> exif);

/// Whether pictures of this orientation lie on their side, so that standing them up swaps width
/// and height.
constexpr bool swapsSides(int orientation) {
    return orientation >= 5 && orientation <= 8;
}

/// The bitmap rotated or mirrored so that it stands upright; as it is for orientation 1. None when
/// there is no memory for the rotated one.
std::optional<Bitmap> upright(Bitmap bitmap, int orientation);

}  // namespace tkv
