#pragma once

#include <string>
#include <vector>

#include "disc/film.h"
#include "disc/project.h"

namespace tkv::disc {

/// Reads a project file over what `project` holds already; its films come behind those. Relative
/// paths are taken from the file's folder, a leading tilde is a home folder. Throws DiscError,
/// which names the file and the line, for what is no TOML, an unknown key, or a value that is not
/// of its kind.
void readProjectFile(const std::string& path, Project& project);

/// The text of a project file that says all that `project` does, with every other key in a comment
/// that tells its default. `films`: those of the project, for their captions and chapters.
/// `folder`: absolute; paths below it are written relative to it. Throws DiscError for a text that
/// is not UTF-8, which no TOML can hold.
std::string projectFileText(const Project& project, const std::vector<Film>& films,
                            const std::string& folder);

}  // namespace tkv::disc
