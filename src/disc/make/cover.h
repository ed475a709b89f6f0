#pragma once

#include <optional>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/project/labels.h"
#include "disc/run/environment.h"
#include "graphics/sheet.h"

// The cover of the disc's case: back, spine and front beside each other on one sheet of paper, with
// marks to cut and to fold it at. What stands where is decided here, in millimetres; nothing is
// drawn.

namespace tkv::disc {

/// A picture of a cover as a whole JPEG file.
struct CoverPicture {
    Bytes jpeg;
    PixelSize size;
};

struct CoverPictures {
    std::optional<CoverPicture> front;  ///< of the shape that coverFront says
    std::vector<CoverPicture> stills;   ///< kCoverStills at most, of 16:9
    Color ground = kBlack;              ///< behind the texts of back and spine, which are white
};

/// Pictures of the back.
inline constexpr std::size_t kCoverStills = 4;

/// The place of the front's picture on that paper: the front, and what is cut off around it.
SheetPlace coverFront(Paper paper);

/// The sheet of a plan's disc. `labels`: of its menus, for chapters without names.
Sheet coverSheet(const DiscPlan& plan, const Labels& labels, CoverPictures pictures, Paper paper);

}  // namespace tkv::disc
