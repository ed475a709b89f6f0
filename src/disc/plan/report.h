#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/project/command_line.h"

// What the program tells of a disc, line by line.

namespace tkv::disc {

/// That some files are no films. `names`: without their folders, at least one.
std::string passedOverLine(const std::vector<std::string>& names);

/// What is going to be made of which film.
std::vector<std::string> planLines(const DiscPlan& plan);

/// Why nobody can make the disc of a plan: it has no film, too many, or is too full. Empty when it
/// can be made.
std::string whyNoDisc(const DiscPlan& plan);

/// What a run has made.
struct MadeDisc {
    std::int64_t bytes = 0;  ///< of the disc
    bool hasCover = false;
    std::optional<std::int64_t> firstLayer;  ///< its sectors, where a burner is to be told
    std::string drive;                       ///< in which it is burnt; empty: in none
};

/// What was made, and how to play and burn it.
std::vector<std::string> madeLines(const Options& options, const DiscPlan& plan,
                                   const MadeDisc& made);

/// The same of a run that has only drawn menus.
std::vector<std::string> previewLines(const Options& options, const DiscPlan& plan);

/// What follows on a project file: how to make its disc.
std::vector<std::string> writtenLines(const Options& options);

/// The jacket's line of text: how long the films are. `label`: as Labels::minutes.
std::string jacketLine(const DiscPlan& plan, std::string_view label);

}  // namespace tkv::disc
