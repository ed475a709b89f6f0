#pragma once

#include "graphics/codecs/codecs.h"
#include "graphics/pixels.h"

// What OpenJPEG neither reports about the boxes of a file nor writes into them.

namespace tkv {

/// The number of channels in the file's palette; 0 without a palette.
unsigned paletteColors(ByteView file);

/// Appends the display resolution to the header box of a file that has none.
void stateResolution(Bytes& file, Resolution dots);

}  // namespace tkv
