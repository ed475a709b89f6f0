#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "graphics/codecs/codecs.h"

namespace tkv::desktop {

/// The first picture of a TIFF file.
struct TiffPixels {
    PixelSize size;
    /// From the top left, row by row; the bytes of each are, from the lowest, red, green, blue and
    /// alpha, by which the colours are multiplied.
    std::vector<std::uint32_t> words;
    int orientation = 1;  ///< 1 to 8, as in EXIF
};

/// None for a damaged file, a truncated one, and a picture whose size is not wanted, for which
/// nothing is allocated. GdkPixbuf's readers of this format differ from version to version: in
/// alpha, in profiles, in orientations.
std::optional<TiffPixels> decodeTiff(ByteView file, const std::function<bool(PixelSize)>& isWanted);

}  // namespace tkv::desktop
