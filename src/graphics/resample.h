#pragma once

#include <optional>

#include "graphics/bitmap.h"

namespace tkv {

/// The part `part` of the source's pixels, which need not begin or end at whole ones, scaled to
/// `size` pixels; beyond the source's edges its last pixels go on. Pixels that are neither scaled
/// nor moved stay what they are. None when there is no memory.
///
/// Enlarging joins the pixels by straight lines. Shrinking averages these lines over the width of
/// one pixel of the answer, and that over the width of one and a half: no weight is negative, so
/// nothing rings, and of a pattern too fine for the answer's pixels next to nothing is left.
std::optional<Bitmap> resampled(const Bitmap& source, const PixelRect& part, PixelSize size);

}  // namespace tkv
