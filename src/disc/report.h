#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "disc/command_line.h"
#include "disc/film.h"
#include "disc/plan.h"

// What the program tells of a disc, line by line.

namespace tkv::disc {

/// What is going to be made of which film.
std::vector<std::string> planLines(const Project& project, const std::vector<Film>& films,
                                   const DiscPlan& plan);

/// What was made, and how to play and burn it. `bytes`: of the disc.
std::vector<std::string> madeLines(const Options& options, const DiscPlan& plan, std::size_t menus,
                                   std::int64_t bytes);

/// The same of a run that has only drawn menus.
std::vector<std::string> previewLines(const Options& options, std::size_t menus);

/// A path as one word of a shell's command.
std::string shellWord(const std::string& path);

/// The jacket's line of text: how long the films are, in the language of the labels.
std::string jacketLine(const Project& project, const DiscPlan& plan);

}  // namespace tkv::disc
