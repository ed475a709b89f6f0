#pragma once

#include <vector>

#include "disc/film/film.h"

namespace tkv::disc {

/// Whether streams are pieces of one: each goes on with the clock of the one before. They are read
/// as one stream, byte by byte, with no joint at all.
bool areOneStream(const std::vector<Film>& clips);

/// Whether a decoder can go on with a clip behind another: it is of the same kind.
bool canGoOn(const Film& film, const Film& clip);

/// The film that clips are together, each beginning with the frame behind the last one's; each is a
/// chapter. `source`: of all of them. Throws DiscError for a clip that is of another kind than the
/// first, from whose pictures or sound a decoder could not go on.
Film joinedFilm(FilmSource source, const std::vector<Film>& clips);

/// Where the clips begin, in seconds of the whole.
std::vector<Chapter> clipMarks(const std::vector<Film>& clips);

}  // namespace tkv::disc
