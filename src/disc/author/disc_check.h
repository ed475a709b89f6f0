#pragma once

#include <cstdint>
#include <string>

#include "disc/author/output_folder.h"
#include "disc/plan/plan.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// Seconds of work that it takes to check a disc of so many bytes, as Progress counts it.
double checkingWeight(std::int64_t bytes);

/// Has tkvDvdCheck read a new disc and press its buttons as players do, and says what it has
/// checked, or that there is no such program. A faulty disc is put into the folder as
/// "disc-faulty", and DiscError thrown; one that an earlier run has left there goes otherwise.
/// `disc`: a name in the workshop.
void checkDisc(const DiscPlan& plan, const std::string& disc, const OutputFolder& folder,
               const Workshop& workshop, Progress& progress);

}  // namespace tkv::disc
