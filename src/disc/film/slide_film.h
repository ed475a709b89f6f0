#pragma once

#include <string>
#include <string_view>

#include "disc/film/film.h"
#include "disc/run/workshop.h"

// Films that are made of pictures.

namespace tkv::disc {

/// The pictures of a request, those of folders in natural order, and its music. Throws DiscError
/// when one of them is not there, or there is none.
FilmSource slideSource(const FilmRequest& request);

/// What the pictures and the music tell: which can be read, their titles, and how long it lasts.
/// Throws DiscError when the music cannot be heard.
std::string slideAnswer(const FilmSource& source, const Tools& tools);

/// The film that an answer tells of. Throws DiscError when no picture can be read.
Film slideFilm(FilmSource source, std::string_view answer);

/// Makes the sound of such a film, as long as it is, of its music; nothing of others.
void makeSlideSound(Film& film, Workshop& workshop);

}  // namespace tkv::disc
