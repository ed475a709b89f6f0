#pragma once

#include <string>

#include "disc/project/project.h"

namespace tkv::disc {

/// Reads a project file over what `project` holds already; its films come behind those. Relative
/// paths are taken from the file's folder, a leading tilde is a home folder. Throws DiscError,
/// which names the file and the line, for what is no TOML, an unknown key, or a value that is not
/// of its kind. `folder`: absolute, where a relative `path` begins.
void readProjectFile(const std::string& path, const std::string& folder, Project& project);

}  // namespace tkv::disc
