#pragma once

#include "disc/film/film.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// The black bars of a film's picture, as cutEdges takes them: what is black at all of some
/// moments, by ffmpeg's cropdetect. None of a film that is black at all of them. Throws DiscError
/// when the film cannot be looked at.
Edges barsOf(const Film& film, Workshop& workshop);

}  // namespace tkv::disc
