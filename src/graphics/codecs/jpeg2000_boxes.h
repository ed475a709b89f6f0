#pragma once

#include "graphics/codecs/codecs.h"
#include "graphics/pixels.h"

// What OpenJPEG neither tells of the boxes of a file, nor writes into them.

namespace tkv {

/// How many colours each entry of the file's palette has; 0 without a palette.
unsigned paletteColors(ByteView file);

/// Appends the display resolution to the header box of a file that has none.
void stateResolution(Bytes& file, Resolution dots);

}  // namespace tkv
