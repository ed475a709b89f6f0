#pragma once

#include "disc/film/film.h"
#include "disc/project/project.h"

namespace tkv::disc {

/// Has a film be as somebody wants it, whether its frames are counted or not: it begins and ends
/// where that is said, with those tracks. The request's own times follow. Throws DiscError, which
/// names the place where it stands, for what this film has not.
void applyChoices(FilmRequest& request, Film& film);

/// Cuts edges off a film's picture, which has a shape of its own then. Of pictures with colours for
/// two rows, and of fields that have such, less may be cut.
void cutEdges(Film& film, const Edges& edges);

}  // namespace tkv::disc
