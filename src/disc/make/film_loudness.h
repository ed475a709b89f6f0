#pragma once

#include <string>

#include "disc/film/film.h"
#include "disc/make/ffmpeg_arguments.h"

namespace tkv::disc {

/// Measures the loudness of the first track; ffmpeg tells it in its last lines, of which
/// gainFromAnswer makes the decibels that bring it to -23 LUFS with peaks below -1 dB.
Arguments loudnessCommand(const Film& film);
double gainFromAnswer(const std::string& answer);

}  // namespace tkv::disc
