#pragma once

#include <array>
#include <cstdint>
#include <istream>
#include <optional>

#include "disc/subtitle/bitmap_cue.h"

// Subtitles that are pictures, as DVDs have them: units of the format that vobsub.h writes.

namespace tkv::disc {

/// RRGGBB, to which the colours of units refer.
using UnitPalette = std::array<std::uint32_t, 16>;

/// Tells what a track of such units shows before a time in seconds. `file`: of the format Matroska.
/// Damaged units are left out. `palette`: where the file has none. Without either, outlines are
/// black and letters white.
void readDvdUnits(std::istream& file, const std::optional<UnitPalette>& palette, double until,
                  const BitmapReceiver& take);

}  // namespace tkv::disc
