#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// The bytes that a run will write: the pieces, the disc and, where it is wanted, the image, which
/// hold the same, and what menus and excerpts take on the way. `films`: the names of the pieces in
/// the workshop, of which those that are made already count no more.
std::int64_t neededSpace(const DiscPlan& plan, const std::vector<std::string>& films,
                         bool makesImage, const Workshop& workshop);

}  // namespace tkv::disc
