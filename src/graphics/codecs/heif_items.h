#pragma once

#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/color_codes.h"

// What a HEIF or AVIF file (ISO/IEC 23008-12) makes its reader do, found by walking its items as
// the reader would.

namespace tkv {

/// The bytes that a reader of the file's primary picture allocates at most besides the file. None
/// where that cannot be said: when the picture is no coded item or one grid of such, or the file is
/// not laid out as others are. Libraries follow references from item to item without an end, and
/// allocate by the size in the coded stream rather than the one that the file states.
std::optional<std::int64_t> bytesForHeif(ByteView file);

/// What a HEIF or AVIF file says of its picture's colours: an ICC profile, or numbers.
struct HeifColors {
    ByteView icc{};  ///< Empty without one.
    ColorCodes codes;
};

/// Of the file's primary picture, or of a grid's first tile where only that has any.
HeifColors colorsOfHeif(ByteView file);

/// The file as its reader gets it, in parts: without anything behind the last whole box, and with
/// the primary picture alone instead of a sequence, which states its pictures in another way. The
/// parts have no ICC profile either: some readers convert from it themselves.
std::vector<ByteView> stillParts(ByteView file);

}  // namespace tkv
