#pragma once

#include "disc/film/film.h"
#include "disc/project/project.h"

namespace tkv::disc {

/// The request with what the film says where the person has said nothing, for a project file that
/// is to be edited: a caption, and chapters where the rule counts the film's marks.
FilmRequest suggestedRequest(FilmRequest request, const Film& film, const ChapterRule& rule);

}  // namespace tkv::disc
