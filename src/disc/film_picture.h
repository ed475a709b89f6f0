#pragma once

#include <string>

#include "disc/film.h"
#include "disc/standard.h"

// What becomes of a film's picture and motion on a disc.

namespace tkv::disc {

/// Width to height of a wide display.
inline constexpr double kWideAspect = 16.0 / 9;

/// What a standard makes of a film's motion.
struct Motion {
    double speed = 1;       ///< the disc's film plays this much faster, its sound too
    bool isFields = false;  ///< two moments of time in a frame, on alternate rows
    std::string note;       ///< what is worth telling about it, in some words; mostly empty
};
Motion motionOf(const VideoTrack& video, Standard standard);

/// Where the disc's fields come from.
enum class FieldSource {
    none,      ///< its frames are whole pictures
    kept,      ///< the film's own fields
    other,     ///< the film's fields, of which others are made for this standard's rate
    pictures,  ///< a field of each of the film's 48 or more pictures a second
    pulldown,  ///< two and three fields in turn of the film's 24 pictures a second
};
FieldSource fieldSourceOf(const VideoTrack& video, Standard standard);

/// Whether a film stands better in a frame of 16:9 than in one of 4:3.
bool isWide(const VideoTrack& video);

/// Where a film's picture lies in a raster; the rest is black. Columns and rows from the top left.
struct Placement {
    int x, y, width, height;
    bool operator==(const Placement&) const = default;
};

/// Columns are even, rows in fours, so that each field has whole rows of colour.
Placement placementOf(const VideoTrack& video, Standard standard);

/// A picture of the shape `aspect` in a raster that is shown in the shape `rasterAspect`: as large
/// as it fits, in the middle, the bars multiples of `step`; the whole raster for a shape that is
/// nearly its own.
Placement placedIn(PixelSize raster, double rasterAspect, double aspect, PixelSize step);

}  // namespace tkv::disc
