#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "graphics/geometry.h"

// Subtitles that are pictures, as Blu-ray discs have them (PGS).

namespace tkv::disc {

/// A part of a picture, in colours 0xAARRGGBB that are not premultiplied.
struct SubtitleBitmap {
    int x = 0, y = 0;  ///< in the canvas, from the top left
    PixelSize size;
    std::vector<std::uint32_t> pixels;  ///< row by row
};

/// What is shown for a while: nothing without bitmaps.
struct BitmapCue {
    double begin = 0;  ///< seconds; it lasts until the next one
    PixelSize canvas;  ///< in which the bitmaps lie
    std::vector<SubtitleBitmap> bitmaps;
};

/// Tells `take` what the file of such subtitles (.sup) shows, in the order of time. Damaged parts
/// of it are left out.
void readPgs(std::span<const std::uint8_t> bytes,
             const std::function<void(const BitmapCue& cue)>& take);

}  // namespace tkv::disc
