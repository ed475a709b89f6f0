#pragma once

#include "disc/film/film.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// The film of a source, of which ffprobe is asked only once: its answer is kept in the workshop.
/// Throws as probeAnswer and probedFilm.
Film probeFilmOnce(const FilmSource& source, Workshop& workshop);

/// Does what countFrames does, but reads a film only once: what was found is kept in the workshop.
void countFramesOnce(Film& film, Workshop& workshop);

}  // namespace tkv::disc
