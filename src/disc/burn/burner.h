#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "disc/run/tools.h"

namespace tkv::disc {

/// What one of the burning programs has to say in a line about why it fails; empty where it has
/// nothing. `reads`: what they would get over when they write counts, too.
std::string_view causeIn(std::string_view line, bool reads = false);

/// Runs one of them. Throws as Tools::run, but with the first line that tells a cause: the last
/// ones only tell that it gives up.
void runBurner(Program program, const std::string& task, const std::string& advice,
               const Tools& tools);

}  // namespace tkv::disc
