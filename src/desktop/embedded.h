#pragma once

#include <string_view>

#include "graphics/codecs/codecs.h"
#include "graphics/color_profile.h"

// What files say of their pictures and GdkPixbuf does not.

namespace tkv::desktop {

/// What a file stores, whatever GdkPixbuf makes of it: of PNG and TIFF as they say, of all others
/// RGB.
ColorKind storedColors(ByteView file);

/// The content of a WebP file's first chunk of that name ("EXIF", "ICCP"); empty without one.
ByteView webpChunk(ByteView file, std::string_view name);

}  // namespace tkv::desktop
