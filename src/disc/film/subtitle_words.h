#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "disc/film/film.h"

namespace tkv::disc {

/// What a title of subtitles tells of whom they are for: "English (SDH)".
SubtitleKind kindInTitle(std::string_view title);

/// The subtitles that a file holds which belongs to a film by its name, as players have it:
/// "film.srt", "film.fr.srt", "Film.English.forced.ass", its parts in any order. None when it does
/// not. `stem`: the film's name without its extension. All but the subtitles' path is filled in.
std::optional<FilmSubtitle> subtitleNamed(const std::string& name, const std::string& stem);

/// What a file's name tells of the subtitles in it, whatever film they are of; none when it is of
/// no format that is known here.
std::optional<FilmSubtitle> subtitleNamed(const std::string& name);

}  // namespace tkv::disc
