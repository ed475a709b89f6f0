#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/bitmap.h"

namespace tkv {

/// Asked once, when a picture's upright size in pixels is known: answers the smallest size in
/// pixels that will do. A decoder may then answer any reduction of which no side is below it.
using NeededSize = std::function<PixelSize(PixelSize full)>;

/// Asks for every pixel of the picture.
PixelSize everyPixel(PixelSize full);

/// Decodes the picture in the regular file at `path` (tilde already expanded), whatever its name
/// says: JPEG, JPEG 2000 and all that the system's GdkPixbuf loads; of several pictures the first.
/// It stands upright (EXIF orientation applied) and in sRGB (an embedded profile converted); its
/// nominal size is its full upright size in pixels, also where fewer pixels were decoded.
/// None when the file cannot be read or decoded, or has a side above 32,768 pixels or more than
/// 512 megapixels after reduction. A picture cut short shows what there is, where its format can.
std::optional<Bitmap> decodePicture(const std::string& path, const NeededSize& needed = everyPixel);

}  // namespace tkv
