#pragma once

#include <functional>
#include <string>
#include <vector>

#include "disc/film/film.h"
#include "disc/project/project.h"
#include "system/processes.h"

namespace tkv::disc {

/// The files of a project's films, in their order. Throws as sourceOf.
std::vector<FilmSource> sourcesOf(const Project& project);

struct FoundFilms {
    std::vector<Film> films;              ///< in the project's order
    std::vector<std::string> passedOver;  ///< names of files that are no films
};

/// Probes the films of a project side by side. Of requests that stand on the command line, as a
/// shell lists a folder, texts and pictures are passed over and leave the project, as long as there
/// is a film. `sources`: those of the project. `probe` is called from several threads. Throws what
/// it throws.
FoundFilms findFilms(Project& project, const std::vector<FilmSource>& sources, ProgramStop& stop,
                     const std::function<Film(const FilmSource&)>& probe);

}  // namespace tkv::disc
