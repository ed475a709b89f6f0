#pragma once

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// Looks at a film to tell how hard its picture is to encode, as the disc will have it: at short
/// samples, spread over its length, with each of kLookQuantisers. A look is kept in the workshop.
/// All 0 where nothing can be read; whoever encodes the film says why.
Hardness hardnessOf(const DiscFilm& film, Workshop& workshop);

}  // namespace tkv::disc
