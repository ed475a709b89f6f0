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

/// A WebP animation up to its first picture, a whole file again: the reader would hold all of them
/// at once. Empty where there is only one.
Bytes firstOfWebp(ByteView file);

/// What the first picture of a TIFF file states of itself.
struct TiffSizes {
    PixelSize picture;
    std::int64_t pieceBytes = 0;  ///< of a strip or tile, as it comes out of the decoder
};
TiffSizes tiffSizes(ByteView file);

/// The size that a WebP file states; 0 x 0 where it states none.
PixelSize webpSize(ByteView file);

/// Of the pictures in a HEIF or AVIF file the size with the most pixels.
PixelSize heifSize(ByteView file);

}  // namespace tkv::desktop
