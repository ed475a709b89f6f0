#pragma once

#include <optional>
#include <string>

#include "disc/make/slide_planes.h"
#include "disc/plan/conversion.h"
#include "graphics/bitmap.h"

namespace tkv::disc {

/// What is seen of a stage: its top left corner and its size, in frames.
struct StageView {
    double x = 0, y = 0, size = 1;
    bool operator==(const StageView&) const = default;
};

/// How a slide is shown.
struct SlideLook {
    bool moves = false;
    std::size_t number = 0;  ///< of the slide: directions take turns
    double seconds = 0;      ///< from its first moment to its last
};

/// What is seen of a stage at its first and last moment.
struct Motion {
    StageView from, to;
};

/// A slide's picture as it is shown: so large that it can be moved behind the frame, or a frame
/// that stands still.
struct SlideStage {
    Planes picture;
    double width = 1, height = 1;    ///< in frames
    std::optional<Motion> motion;    ///< none stands still
    std::optional<Overlay> caption;  ///< of what moves; else it is drawn already
};

/// Whether a picture of that shape is cut so that it fills frames of 16:9, or else stands whole
/// before itself out of focus.
bool fillsFrame(double aspect, bool moves);

/// Makes a stage of a decoded picture, which may be of reduced size. `caption`: may be empty.
/// Throws std::bad_alloc.
SlideStage stageOf(const Bitmap& picture, const std::string& caption, const SlideLook& look,
                   PixelSize raster);

/// The pixels that suffice for a picture's stage, of that upright size.
PixelSize neededFor(PixelSize full, const SlideLook& look, PixelSize raster);

/// `width`, `height`: of the stage, in frames. `isFilling`: or else it is whole, and stays nearly
/// so.
Motion motionOf(double width, double height, bool isFilling, const SlideLook& look);

}  // namespace tkv::disc
