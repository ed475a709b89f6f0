#pragma once

#include <string>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// What the subtitles that are drawn for a film of the disc are called in the workshop, a folder;
/// empty where there are none.
std::string subtitlesName(const DiscFilm& film);

/// The index in that folder, as ffmpeg reads it.
std::string subtitleIndex(const std::string& folder);

/// The palette of a film's subtitles, as dvdauthor reads it: a file of the workshop. Empty where
/// there are none.
std::string subtitlePalette(const DiscFilm& film, Workshop& workshop);

/// Draws the subtitles of a film and has them in the workshop. Returns a sentence on what could not
/// be shown; mostly empty.
std::string makeSubtitles(const DiscFilm& film, Workshop& workshop);

}  // namespace tkv::disc
