#pragma once

#include <string>
#include <vector>

#include "disc/plan/plan.h"

namespace tkv::disc {

/// The files that a disc is put together from, whose names hold no character with a meaning to
/// dvdauthor or its XML.
struct DiscPieces {
    std::vector<std::string> films;       ///< in the plan's order
    std::vector<std::string> clips;       ///< of the plan's pages
    std::vector<std::string> palettes{};  ///< of each film's subtitles; empty without any
};

/// What dvdauthor reads to write the disc into the folder `destination`: the plan, and the commands
/// with which a player follows it.
std::string authorFile(const DiscPlan& plan, const DiscPieces& pieces,
                       const std::string& destination);

}  // namespace tkv::disc
