#pragma once

// Decodes and encodes picture files:
//
//     const auto needed = [](tkv::PixelSize) { return tkv::PixelSize{160, 120}; };
//     const std::optional<tkv::Bitmap> picture = tkv::decodePicture("photo.jpg", needed);
//     if (!picture) return false;
//     const std::optional<tkv::Bytes> png = tkv::encodePicture(*picture, "png", 1);
//     return png && tkv::writeFile("photo.png", *png);  // system/files.h

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "graphics/bitmap.h"

// Picture files: which formats there are, how each is recognised, read and written.

namespace tkv {

using Bytes = std::vector<std::uint8_t>;

/// Callback, called once when a picture's upright size in pixels is known (as stored, for one that
/// is too large to be decoded): returns the smallest size in pixels that is sufficient. A decoder
/// may then return any reduced picture that is at least that large.
using NeededSize = std::function<PixelSize(PixelSize full)>;

/// The pixels that suffice to show a picture at that size as if all were decoded: a third more a
/// side. Decoders that average boxes of pixels fold finer patterns into coarser ones; then all but
/// those that the drawing filters out stay apart.
PixelSize sufficientFor(Size shown);

/// Asks for every pixel of the picture.
PixelSize everyPixel(PixelSize full);

/// Decodes the picture in the regular file at `path` (tilde already expanded), whatever its name
/// says: JPEG, JPEG 2000, and of what the system's GdkPixbuf loads PNG, GIF, BMP, TIFF, WebP, AVIF,
/// HEIF, TGA and PNM; of several pictures the first.
/// It stands upright (EXIF orientation applied) and in sRGB (converted from an embedded profile, or
/// from the numbers that HEIF and AVIF have instead); its nominal size is its full upright size in
/// pixels, also where fewer pixels were decoded.
/// None when the file cannot be read or decoded, has a side above 32,768 pixels, would take more
/// than a gigabyte of memory or some seconds to decode: with JPEG 2000 more samples than 32 million
/// after reduction, with GdkPixbuf's formats more than 80 megapixels. A picture cut short shows
/// what there is, where its format can; JPEG 2000 only with OpenJPEG 2.5.3 or later.
std::optional<Bitmap> decodePicture(const std::string& path, const NeededSize& needed = everyPixel);

/// The whole of a file that holds the bitmap in the type that `extension` (without a dot, in
/// whatever case) names: jpg, jpeg, tif, tiff, bmp, gif, png, jp2, jpx; any other is JPEG at the
/// encoder's default compression.
/// `factor`: compression factor in (0, 1], heeded by jpg and jpeg alone.
/// None when the bitmap is too large for the type, the library fails or memory is short.
std::optional<Bytes> encodePicture(const Bitmap& bitmap, std::string_view extension, float factor);

/// The whole of a PNG file of that size, all of `color` exactly: a bitmap would keep less of a
/// translucent colour. None as above.
std::optional<Bytes> encodePlainPng(PixelSize size, const Color& color);

/// Whether transparency is kept in files of that extension, in whatever case; in all others
/// pictures stand on black.
bool keepsAlpha(std::string_view extension);

}  // namespace tkv
