#pragma once

#include <string>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// What the subtitles of a film of the disc are called in the workshop, a folder; empty where there
/// are none.
std::string subtitlesName(const DiscFilm& film);

/// The index in that folder, as ffmpeg reads it, and the palette, as dvdauthor does.
std::string subtitleIndex(const std::string& folder);
std::string subtitlePalette(const std::string& folder);

/// Draws the subtitles of a film and has them in the workshop. Returns a sentence on what could not
/// be shown; mostly empty.
std::string makeSubtitles(const DiscFilm& film, Workshop& workshop);

}  // namespace tkv::disc
