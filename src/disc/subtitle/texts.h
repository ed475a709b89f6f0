#pragma once

#include <string>
#include <vector>

#include "disc/film/film.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// Has a film's chosen subtitles in the workshop, texts all in the format ASS, and the fonts that
/// are attached to the film. Subtitles without a cue leave it, with a note; an encoding that had to
/// be guessed is another. Throws DiscError when the film cannot be read.
void readSubtitles(Film& film, Workshop& workshop);

/// Beside what is read of pictures from television: the same as they were.
std::string dvbSource(const std::string& text);

/// The fonts attached to a film, as names in the workshop: those beside its subtitles' texts.
std::vector<std::string> attachedFonts(const Film& film, const Workshop& workshop);

}  // namespace tkv::disc
