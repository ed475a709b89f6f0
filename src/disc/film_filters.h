#pragma once

#include <string>

#include "disc/film_encoding.h"

// Chains of ffmpeg's filters, without the names of what goes in and comes out.

namespace tkv::disc {

/// Makes the disc's frames, all of them, of a film's pictures: in its rate and raster, with its
/// colours.
std::string discFrames(const Film& film, Standard standard);

/// Makes the pictures of an excerpt out of the disc's frames.
std::string excerptOf(const ExcerptOutput& excerpt, bool isWide, bool isFields);

/// The same out of the frames of a finished disc's film, from `seconds` on.
std::string excerptFrom(double seconds, PixelSize size, bool isWide);

/// Makes a picture of 16:9, squeezed into `size`, out of one of a film's.
std::string stillOf(const VideoTrack& video, PixelSize size);

}  // namespace tkv::disc
