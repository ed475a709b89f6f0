#pragma once

#include <istream>

#include "disc/subtitle/bitmap_cue.h"

// Subtitles that are pictures, as DVDs have them: units of the format that vobsub.h writes.

namespace tkv::disc {

/// Tells what a track of such units shows before a time in seconds. `file`: of the format Matroska.
/// Damaged units are left out. Where the file has no colours, outlines are black and letters white.
void readDvdUnits(std::istream& file, double until, const BitmapReceiver& take);

}  // namespace tkv::disc
