#pragma once

#include <string>

#include "disc/film/film.h"

namespace tkv::disc {

/// Why a film cannot stand on a disc as it is, in some words; empty when it can. Frames counted.
std::string whyNotDvdReady(const Film& film, Standard standard);

}  // namespace tkv::disc
