#pragma once

#include "disc/film/film.h"

namespace tkv::disc {

/// Whether a film lacks sound that its DVD's tables know: it begins behind what was looked at.
bool lacksSound(const Film& film);

/// Completes a film that is a DVD's title by what the disc's tables tell: its chapters, its
/// subtitles with their palette, and the languages of its sound, whose tracks come in the order in
/// which a copy has them.
void addTitleFacts(Film& film);

}  // namespace tkv::disc
