#pragma once

#include <string>
#include <vector>

#include "disc/plan.h"

namespace tkv::disc {

/// The pieces that a disc is put together from: names of files that hold no character with a
/// meaning to dvdauthor or its XML.
struct DiscPieces {
    std::vector<std::string> films;
    std::vector<std::string> pages;                        ///< of the films
    std::vector<std::vector<std::string>> chapterPages;    ///< of each film
    std::vector<std::vector<std::string>> soundLanguages;  ///< two letters for each film's tracks
    std::string language;                                  ///< of the menus
};

/// What dvdauthor reads to write the disc into the folder `destination`: the plan, and the commands
/// with which a player follows it.
std::string authorFile(const DiscPlan& plan, const DiscPieces& pieces,
                       const std::string& destination);

}  // namespace tkv::disc
