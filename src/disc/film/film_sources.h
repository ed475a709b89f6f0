#pragma once

#include <vector>

#include "disc/film/source.h"
#include "disc/project/project.h"
#include "system/processes.h"

namespace tkv::disc {

/// What a request stands for: a file, the files that are joined, or titles of a DVD, in the order
/// of the disc. These are the one that it names, else all, but for those of some seconds and those
/// that others contain; or the longest, where `areAllWanted` is false or the request says more than
/// one film could be given. Of a DVD whose tables tell nothing, it is its largest title set. What
/// is left out stands in the notes of the first. Throws DiscError as sourceOf, and where there is
/// no such title; Interrupted.
std::vector<FilmSource> sourcesOf(const FilmRequest& request, bool areAllWanted, ProgramStop& stop);

/// The source of a request with parts. Throws as sourceOf, and for what is no single file.
FilmSource joinedSource(const FilmRequest& request);

}  // namespace tkv::disc
