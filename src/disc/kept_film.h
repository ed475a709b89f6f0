#pragma once

#include <string>

#include "disc/film.h"
#include "disc/workshop.h"

namespace tkv::disc {

/// Does what probeFilm does, but asks ffprobe only about films of which keepAnswer has kept nothing
/// in the workshop in `folder`. The folder need not be there.
Film probeFilmOnce(const std::string& path, const std::string& folder);

/// Keeps in the workshop what ffprobe answered about a film.
void keepAnswer(const Film& film, Workshop& workshop);

/// Does what countFrames does, but reads a film only once: what was found is kept in the workshop.
void countFramesOnce(Film& film, Workshop& workshop);

}  // namespace tkv::disc
