#pragma once

#include "graphics/codecs/codecs.h"
#include "support.h"

// Pictures to be decoded, and how they are looked at.

namespace tkv::test {

/// The bytes of a file that could be made.
std::string text(const std::optional<Bytes>& file);

/// Red and green above, blue and white below.
Bitmap quarters(PixelSize size, int alpha = 255);

/// The colours near the four corners as letters, the upper ones first.
std::string corners(const Bitmap& bitmap);

/// Asks for that size whatever the picture's is.
NeededSize atLeast(PixelSize size);

Bytes bytesOf(const std::string& path);

/// What ImageMagick makes of the picture with these arguments, of which the last names a type.
Bytes converted(const Bytes& picture, const std::string& arguments);

/// The same coefficients in the scans of `script`, or in those that are usual.
Bytes progressive(const Bytes& jpeg, const std::string& script = {});

/// The part `from` of the picture, or all of it, on a bitmap of its own.
Bitmap drawn(const Bitmap& picture, PixelSize size, const Rect& from = {});

}  // namespace tkv::test
