#pragma once

#include <vector>

#include "disc/film/film.h"
#include "disc/project/project.h"

namespace tkv::disc {

/// Puts into a project what its films say where the person has said nothing, for a project file
/// that is to be edited: captions, and chapters where the rule counts the films' marks.
void addSuggestions(Project& project, const std::vector<Film>& films);

}  // namespace tkv::disc
