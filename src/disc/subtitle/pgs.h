#pragma once

#include <istream>

#include "disc/subtitle/bitmap_cue.h"

// Subtitles that are pictures, as Blu-ray discs have them (PGS).

namespace tkv::disc {

/// Tells what a file of such subtitles (.sup) shows before a time in seconds. Damaged parts of it
/// are left out.
void readPgs(std::istream& file, double until, const BitmapReceiver& take);

}  // namespace tkv::disc
