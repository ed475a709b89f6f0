#pragma once

#include <string>

#include "disc/project/project.h"

namespace tkv::disc {

/// The text of a project file that says all that `project` does, with every other key in a comment
/// that tells its default. `folder`: absolute; paths below it are written relative to it. Throws
/// DiscError for a text that is not UTF-8, which no TOML can hold.
std::string projectFileText(const Project& project, const std::string& folder);

}  // namespace tkv::disc
