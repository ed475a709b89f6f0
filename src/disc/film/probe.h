#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "disc/film/film.h"
#include "disc/run/tools.h"

namespace tkv::disc {

/// Asks ffprobe about a film and returns its answer, as filmFromAnswer reads it. Takes some tenths
/// of a second. Throws DiscError when the film cannot be read.
std::string probeAnswer(const FilmSource& source, const Tools& tools);

/// The film that an answer tells of; asks ffprobe once more where the answer cannot tell whether
/// its pictures are fields. The film's length is the file's word. Throws DiscError when it has no
/// moving picture.
Film probedFilm(FilmSource source, std::string_view answer, const Tools& tools);

/// The film of a source, whatever that is: of clips the film that they make. `filmOf`: makes those
/// of sources that are no clips. Throws as joinedFilm and `filmOf`.
Film filmOf(const FilmSource& source, const std::function<Film(const FilmSource&)>& filmOf);

/// Reads the whole film, without decoding it: fills in its frames and keyframes, and corrects its
/// length. Throws DiscError when it ends long before the file's word says it does.
void countFrames(Film& film, const Tools& tools);

}  // namespace tkv::disc
