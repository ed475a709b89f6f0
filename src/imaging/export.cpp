#include "imaging/export.h"

#include "graphics/formats.h"
#include "imaging/output_bitmap.h"
#include "system/files.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

/// Whatever is not in (0, 1], NaN included, means 0.9.
float compressionFactor(float quality) {
    return quality > 0 && quality <= 1.0F ? quality : 0.9F;
}

bool writeIfEncoded(const std::string& path, const std::optional<Bytes>& file) {
    return file && writeFile(expandTilde(path), *file);
}

}  // namespace

bool imgExport(std::optional<Bitmap> bitmap, const std::string& path, float quality,
               bool* isWritten) {
    const bool isWhole = bitmap && writeIfEncoded(path, encodePicture(*bitmap, pathExtension(path),
                                                                      compressionFactor(quality)));
    if (isWritten != nullptr) *isWritten = isWhole;
    if (!bitmap) return false;
    bitmap.reset();
    verboseLine("imgExport - end");
    return fileExists(path);
}

bool imgColorPNG(const Color& colour, const std::string& path, int width, int height,
                 float opacity) {
    const PixelSize size{width, height};
    if (isOutputSize(size)) {
        // Success is the file's existence, so the write's result is not needed here.
        static_cast<void>(
            writeIfEncoded(path, encodePlainPng(size, withAlpha(colour, colour.alpha * opacity))));
    }
    return fileExists(path);
}

}  // namespace tkv
