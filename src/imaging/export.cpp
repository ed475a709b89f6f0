#include "imaging/export.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "imaging/output_bitmap.h"
#include "platform/codecs/codecs.h"
#include "platform/drawing.h"
#include "platform/files.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

using Encoder = std::optional<Bytes> (*)(const Bitmap& bitmap, float quality);

std::optional<Bytes> encodeJpegAt(const Bitmap& bitmap, float quality) {
    return encodeJpeg(bitmap, quality > 0 && quality <= 1.0F ? quality : 0.9F);
}

std::optional<Bytes> encodeDefaultJpeg(const Bitmap& bitmap, float) {
    return encodeJpeg(bitmap, std::nullopt);
}

/// An encoder that takes no compression factor, as one that ignores it.
template <std::optional<Bytes> (*encode)(const Bitmap&)>
std::optional<Bytes> withoutQuality(const Bitmap& bitmap, float) {
    return encode(bitmap);
}

struct FileType {
    std::string_view extension;
    Encoder encode;
};

constexpr std::array kFileTypes{
    FileType{"jpg", encodeJpegAt},
    FileType{"jpeg", encodeJpegAt},
    FileType{"tif", withoutQuality<encodeTiff>},
    FileType{"tiff", withoutQuality<encodeTiff>},
    FileType{"bmp", withoutQuality<encodeBmp>},
    FileType{"gif", withoutQuality<encodeGif>},
    FileType{"png", withoutQuality<encodePng>},
    FileType{"jp2", withoutQuality<encodeJpeg2000>},
    FileType{"jpx", withoutQuality<encodeJpeg2000>},
};

Encoder encoderFor(const std::string& path) {
    const auto* const row =
        std::ranges::find(kFileTypes, asciiLowered(pathExtension(path)), &FileType::extension);
    return row == kFileTypes.end() ? encodeDefaultJpeg : row->encode;
}

void writeIfEncoded(const std::string& path, const std::optional<Bytes>& file) {
    // The verdict is the file's existence afterwards, so a failed write needs no answer here.
    if (file) static_cast<void>(writeFile(expandTilde(path), *file));
}

}  // namespace

bool imgExport(std::optional<Bitmap> bitmap, const std::string& path, float quality) {
    if (!bitmap) return false;
    writeIfEncoded(path, encoderFor(path)(*bitmap, quality));
    bitmap.reset();
    if (isVerbose()) logLine("imgExport - end");
    return fileExists(path);
}

bool imgColorPNG(const Color& colour, const std::string& path, int width, int height,
                 float opacity) {
    if (std::optional<Bitmap> bitmap = newOutputBitmap({width, height})) {
        const Rect whole{0, 0, static_cast<double>(width), static_cast<double>(height)};
        fillRect(*bitmap, whole, withAlpha(colour, colour.alpha * opacity));
        writeIfEncoded(path, encodePng(*bitmap));
    }
    return fileExists(path);
}

}  // namespace tkv
