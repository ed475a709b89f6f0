#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "graphics/geometry.h"

namespace tkv::disc {

/// A part of a picture, in colours 0xAARRGGBB that are not premultiplied.
struct SubtitleBitmap {
    int x = 0, y = 0;  ///< in the canvas, from the top left
    PixelSize size;
    std::vector<std::uint32_t> pixels;  ///< row by row
};

/// What is shown for a while: nothing without bitmaps.
struct BitmapCue {
    double begin = 0;   ///< seconds; it lasts until the next one
    PixelSize canvas;   ///< in which the bitmaps lie; empty when the file does not tell
    double aspect = 0;  ///< of the canvas as shown, width to height; 0: its pixels are square
    std::vector<SubtitleBitmap> bitmaps;
    bool isForced = false;   ///< is it shown where subtitles are switched off, too?
    bool isTooMuch = false;  ///< were there bitmaps, left out since they follow too fast?
};

/// Takes what is shown, in the order of time.
using BitmapReceiver = std::function<void(const BitmapCue& cue)>;

/// How much of a file is decoded: more than real subtitles need, and no more than some minutes of
/// work for the longest film, since pictures of millions of pixels may take a dozen bytes each.
class PixelAllowance {
  public:
    /// Takes so many pixels for a picture, unless they are too many by that time, in seconds.
    bool take(double seconds, double pixels) {
        constexpr double kMostASecond = 1e6;
        if (seconds > last_)
            room_ = std::min(kMostAtOnce, room_ + (seconds - last_) * kMostASecond);
        last_ = std::max(last_, seconds);
        if (pixels > room_) return false;
        room_ -= pixels;
        return true;
    }

  private:
    static constexpr double kMostAtOnce = 10e6;
    double room_ = kMostAtOnce, last_ = 0;
};

}  // namespace tkv::disc
