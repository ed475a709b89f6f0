#include "platform/picture_file.h"

#include <array>
#include <new>

#include "platform/codecs/codecs.h"
#include "platform/files.h"

namespace tkv {

namespace {

struct Format {
    bool (*is)(ByteView file);
    std::optional<Bitmap> (*decode)(ByteView file, const NeededSize& needed);
};

// GdkPixbuf comes last: it tells its own formats apart.
constexpr std::array kFormats{
    Format{isJpeg, decodeJpeg},
    Format{isJpeg2000, decodeJpeg2000},
    Format{[](ByteView) { return true; }, decodeWithPixbuf},
};

}  // namespace

PixelSize everyPixel(PixelSize full) {
    return full;
}

std::optional<Bitmap> decodePicture(const std::string& path, const NeededSize& needed) {
    try {
        const std::optional<Bytes> file = readFile(path);
        if (!file || file->empty()) return std::nullopt;
        for (const Format& format : kFormats) {
            if (format.is(*file)) return format.decode(*file, needed);
        }
    } catch (const std::bad_alloc&) {
        // A picture that memory cannot hold is one that cannot be shown.
    }
    return std::nullopt;
}

}  // namespace tkv
