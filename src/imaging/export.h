#pragma once

#include <optional>
#include <string>

#include "graphics/bitmap.h"
#include "graphics/geometry.h"

namespace tkv {

/// Writes the bitmap, which it consumes, to `path` (tilde expanded, not atomically) in the file
/// type that the path's extension names, in whatever case: jpg, jpeg, tif, tiff, bmp, gif, png,
/// jp2, jpx; any other is written as JPEG at the encoder's default compression.
/// `quality`: compression factor of jpg and jpeg, used when it is in (0, 1], otherwise 0.9.
/// True when a file exists at the path afterwards; false, and nothing written, for no bitmap.
/// `isWritten`, unless null, gets whether the whole file has been written: another one may be
/// there.
bool imgExport(std::optional<Bitmap> bitmap, const std::string& path, float quality,
               bool* isWritten = nullptr);

/// Writes a PNG of width x height pixels, all of `colour` at `opacity` in 0..1, to `path` (tilde
/// expanded) whatever its extension. True when a file exists there afterwards.
bool imgColorPNG(const Color& colour, const std::string& path, int width, int height,
                 float opacity);

}  // namespace tkv
