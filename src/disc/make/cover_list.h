#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/project/labels.h"
#include "graphics/sheet.h"

namespace tkv::disc {

/// The films with their chapters and playing times, set for the back of a cover.
struct CoverList {
    std::size_t stillsInRow = 1;  ///< of the pictures above it
    std::vector<SheetText> texts;
};

/// As large as all fits. Long names take two lines; what fits in no size is counted behind an
/// ellipsis. `labels`: for chapters. `placeBelow`: the place that is left by pictures of which so
/// many stand in a row.
CoverList coverList(const DiscPlan& plan, const Labels& labels,
                    const std::function<SheetPlace(std::size_t stillsInRow)>& placeBelow);

}  // namespace tkv::disc
