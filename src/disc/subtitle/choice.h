#pragma once

#include "disc/film/film.h"
#include "disc/project/project.h"

namespace tkv::disc {

/// Whether what subtitles hold can be drawn: texts, and the pictures of Blu-ray discs.
bool areDrawable(const FilmSubtitle& subtitle);

/// Sets a film's subtitles to those that the disc gets: those that the person names, else its own
/// and those in files beside it, of kinds that can be drawn or, as a DVD's own, copied, at most as
/// many as a disc holds; none where none are wanted. Looks for the files, and reads only indexes
/// (.idx), which tell of several tracks. What is left out stands in its notes. Throws DiscError
/// when a file that the person names is not there.
void chooseSubtitles(const FilmRequest& request, const Project& project, Film& film);

/// The files that belong to a film by their names and lie in its folder, in their order.
std::vector<FilmSubtitle> subtitlesBeside(const std::string& film);

/// What a sentence calls subtitles: "film.fr.srt", or "track 3 of film.mkv".
std::string nameOf(const FilmSubtitle& subtitle, const Film& film);

}  // namespace tkv::disc
