#pragma once

#include <string>
#include <vector>

#include "disc/plan/conversion.h"

// Chains of ffmpeg's filters, without the names of what goes in and comes out.

namespace tkv::disc {

/// A run of frames of the disc's film as players show it, in the standard's rate, counted from 0.
struct FrameRange {
    int first = 0;
    int count = 0;
    bool operator==(const FrameRange&) const = default;
};

/// Makes the disc's frames, all that are stored, of a film's pictures: in its rate and raster, with
/// its colours.
std::string discFrames(const Conversion& conversion);

// What a film shows fills the pictures that are taken of it: it is cut where that takes a little,
// or else whole, before itself out of focus.

/// Makes the pictures of excerpts out of the disc's frames as they are stored: those of all ranges,
/// one after another. `size`: in the page's pixels. Several such chains in one graph make pictures
/// of different sizes.
std::string excerptFilters(const std::vector<FrameRange>& ranges, PixelSize size,
                           const Conversion& conversion);

/// The same out of a finished disc's film from the first wanted frame on.
std::string excerptFiltersOf(PixelSize size, const Conversion& conversion);

/// Makes a picture of that raster out of one of a film's.
std::string stillFilters(const VideoTrack& video, const SourceColors& colors, const Raster& raster);

/// Whether a picture of one shape, width to height as shown, is cut where it is to fill another.
bool isCutToFill(double aspect, double shape);

}  // namespace tkv::disc
