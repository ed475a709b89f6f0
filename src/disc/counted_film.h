#pragma once

#include "disc/film.h"
#include "disc/workshop.h"

namespace tkv::disc {

/// Does what countFrames does, but reads a film only once: what was found is kept in the workshop.
void countFramesOnce(Film& film, Workshop& workshop);

}  // namespace tkv::disc
