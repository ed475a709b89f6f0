#pragma once

#include <optional>

#include "graphics/bitmap.h"

// The five ways to fit a picture into a box of dstW x dstH pixels. Each returns a new bitmap at
// `resolution` dots per inch (0 or below means 72), or none when there is no image or the bitmap
// would have no area or be too large to hold. Without `keepAlpha` the picture stands on black.

namespace tkv {

using RescaleMode = std::optional<Bitmap> (*)(const Bitmap* image, int dstW, int dstH,
                                              double resolution, bool keepAlpha);

/// Covers the box; what does not fit is cropped equally from both sides.
std::optional<Bitmap> imgRescaleFillCrop(const Bitmap* image, int dstW, int dstH, double resolution,
                                         bool keepAlpha);

/// Fits inside the box, centred, letterboxed or pillarboxed.
std::optional<Bitmap> imgRescaleFitPad(const Bitmap* image, int dstW, int dstH, double resolution,
                                       bool keepAlpha);

/// Stretches to the box, aspect ratio ignored.
std::optional<Bitmap> imgRescaleStretch(const Bitmap* image, int dstW, int dstH, double resolution,
                                        bool keepAlpha);

/// As large as fits inside the box; the bitmap is as large as the picture becomes.
std::optional<Bitmap> imgRescaleFit(const Bitmap* image, int dstW, int dstH, double resolution,
                                    bool keepAlpha);

/// As small as covers the box, nothing cropped; the bitmap is as large as the picture becomes.
std::optional<Bitmap> imgRescaleCover(const Bitmap* image, int dstW, int dstH, double resolution,
                                      bool keepAlpha);

}  // namespace tkv
