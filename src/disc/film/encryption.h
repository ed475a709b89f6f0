#pragma once

#include "disc/film/source.h"

namespace tkv::disc {

/// Whether a film's program or transport stream says of many of its packets that they are
/// scrambled, as those of bought discs and of pay television are. Decoders take no notice of it:
/// they make something of these packets all the same.
bool isScrambled(const FilmSource& source);

}  // namespace tkv::disc
