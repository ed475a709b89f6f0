#pragma once

#include <optional>

#include "graphics/bitmap.h"
#include "graphics/geometry.h"

namespace tkv {

// Each of these returns false when the drawing library failed, as it does without memory and on
// targets with a side above 32,767 pixels: the target then lacks what was to be drawn.

enum class Compositing { sourceOver, destinationOver };

/// Replaces the pixels of `area` (in the target's drawing units, cut to the target) by `color`.
[[nodiscard]] bool fillRect(Bitmap& target, const Rect& area, const Color& color);

/// Draws the part `from` of the picture (in the picture's drawing units; `Rect{}` means all of
/// it) into the rectangle `to` of the target (in the target's drawing units), scaled, at `opacity`
/// in 0..1. Where `from` reaches beyond the picture nothing is drawn. Scaling is that of
/// graphics/resample.h.
[[nodiscard]] bool drawPicture(Bitmap& target, const Bitmap& picture, const Rect& from,
                               const Rect& to, Compositing compositing, double opacity);

/// What drawPicture would make of a transparent bitmap of that size, for less. None where the
/// picture would not fill it, or without memory.
std::optional<Bitmap> filledBy(PixelSize size, const Bitmap& picture, const Rect& from,
                               const Rect& to);

/// Pixels made for one place of a canvas, ready to be blended there unscaled: the top left one is
/// `left` pixels from the canvas' left edge and `top` from its top edge; both may be negative.
struct PlacedBitmap {
    Bitmap pixels;
    int left = 0;
    int top = 0;
    bool isWhole = true;  ///< False when the drawing library failed on the way.
};

/// Blends source-over, pixel by pixel, what lies within the target; `opacity` in 0..1.
[[nodiscard]] bool blend(Bitmap& target, const PlacedBitmap& placed, double opacity);

}  // namespace tkv
