#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "disc/film/film.h"
#include "disc/project/project.h"

namespace tkv::disc {

/// Whether a name without its extension is one that a camera or telephone gives.
bool isCameraName(const std::string& name);

/// What the menus call each film: as the person says, else as the film's own tag does, else by the
/// day and time it was taken, where a camera has named the file, else by its name. A number that
/// all of them begin with goes where it says no more than their order. Several titles of a DVD are
/// numbered by a label. `labels`: of the menus.
std::vector<std::string> captionsOf(const std::vector<FilmRequest>& requests,
                                    const std::vector<Film>& films, const Labels& labels);

}  // namespace tkv::disc
