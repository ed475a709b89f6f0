#pragma once

#include <string_view>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/color_profile.h"

// What files state about their pictures and GdkPixbuf does not report.

namespace tkv::desktop {

/// The colour model in which a file is stored, whatever GdkPixbuf converts it to: PNG and TIFF
/// state it, all others count as RGB.
ColorKind storedColors(ByteView file);

/// The payload of a WebP file's first chunk of that type ("EXIF", "ICCP"); empty without one.
ByteView webpChunk(ByteView file, std::string_view name);

/// A WebP animation reduced to its first frame, as a valid file: the reader would hold all frames
/// at once. Empty where there is only one.
Bytes firstOfWebp(ByteView file);

/// Those parts of a PNG file that draw: one chunk of each type that does, and one run of image
/// data. What else there is only costs: the library unpacks and keeps a thousand compressed texts
/// of eight megabytes.
std::vector<ByteView> drawingParts(ByteView file);

/// The sizes that the first picture of a TIFF file states.
struct TiffSizes {
    PixelSize picture;
    std::int64_t pieceBytes = 0;  ///< of a decompressed strip or tile
};
TiffSizes tiffSizes(ByteView file);

/// The ICC profile of a TIFF file's first picture; empty without one.
ByteView tiffProfile(ByteView file);

/// Whether a TIFF file is compressed as pictures are: not at all, or by CCITT's codes, LZW, JPEG,
/// Deflate or PackBits. The library's other codecs are for scanners and science, hardly tested, and
/// one aborts when its data are damaged.
bool hasPictureCompression(ByteView file);

/// The size that a WebP file states; 0 x 0 where it states none.
PixelSize webpSize(ByteView file);

}  // namespace tkv::desktop
