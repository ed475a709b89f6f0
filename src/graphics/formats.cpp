#include "graphics/formats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

#include "graphics/codecs/codecs.h"
#include "graphics/pixels.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv {

namespace {

struct Format {
    /// Null for a format that is only read.
    std::array<std::string_view, 2> extensions{};
    /// Whether a file that begins with these bytes is of this format; null where GdkPixbuf, which
    /// does its own detection, reads it.
    bool (*isIn)(ByteView head) = nullptr;
    std::optional<Bitmap> (*decode)(ByteView file, const NeededSize& needed) = decodeWithPixbuf;
    std::optional<Bytes> (*encode)(const Bitmap& bitmap, std::optional<float> factor) = nullptr;
    bool keepsAlpha = false;
    bool heedsQuality = false;
};

/// In the order in which a file's format is probed. Pictures in JPEG 2000 stand on black although
/// the format could keep alpha: that is part of the interface.
constexpr std::array kFormats{
    Format{.extensions = {"jpg", "jpeg"},
           .isIn = isJpeg,
           .decode = decodeJpeg,
           .encode = encodeJpeg,
           .heedsQuality = true},
    Format{.extensions = {"jp2", "jpx"},
           .isIn = isJpeg2000,
           .decode = decodeJpeg2000,
           .encode = encodeJpeg2000},
    Format{.extensions = {"png"}, .encode = encodePng, .keepsAlpha = true},
    Format{.extensions = {"gif"}, .encode = encodeGif, .keepsAlpha = true},
    Format{.extensions = {"tif", "tiff"}, .encode = encodeTiff, .keepsAlpha = true},
    Format{.extensions = {"bmp"}, .encode = encodeBmp},
    Format{.isIn = isReadByPixbuf},
};

/// Null when no format has that extension.
const Format* formatNamed(std::string_view extension) {
    const std::string lowered = asciiLowered(extension);
    if (lowered.empty()) return nullptr;
    const auto* const row = std::ranges::find_if(kFormats, [&](const Format& format) {
        return std::ranges::count(format.extensions, lowered) > 0;
    });
    return row == kFormats.end() ? nullptr : row;
}

/// Null when it is none that is read.
const Format* formatOf(ByteView head) {
    const auto* const row = std::ranges::find_if(kFormats, [&](const Format& format) {
        return format.isIn != nullptr && format.isIn(head);
    });
    return row == kFormats.end() ? nullptr : row;
}

}  // namespace

PixelSize sufficientFor(Size shown) {
    constexpr double kMore = 4.0 / 3;
    return {static_cast<int>(std::ceil(shown.width * kMore)),
            static_cast<int>(std::ceil(shown.height * kMore))};
}

PixelSize everyPixel(PixelSize full) {
    return full;
}

std::optional<Bitmap> decodePicture(const std::string& path, const NeededSize& needed) {
    try {
        const Format* format = nullptr;
        const std::optional<Bytes> file = readFile(path, kLargestFile, [&](ByteView head) {
            format = formatOf(head);
            return format != nullptr;
        });
        if (file) return format->decode(*file, needed);
    } catch (const std::bad_alloc&) {
        // A picture that does not fit into memory counts as one that cannot be decoded.
    }
    return std::nullopt;
}

std::optional<Bytes> encodePicture(const Bitmap& bitmap, std::string_view extension, float factor) {
    try {
        const Format* const format = formatNamed(extension);
        if (format == nullptr) return encodeJpeg(bitmap);
        if (!format->heedsQuality) return format->encode(bitmap, std::nullopt);
        return format->encode(bitmap, factor);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

std::optional<Bytes> encodePlainPng(PixelSize size, const Color& color) {
    try {
        return encodePlainPng(size, straightPixel(color));
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

bool keepsAlpha(std::string_view extension) {
    const Format* const format = formatNamed(extension);
    return format != nullptr && format->keepsAlpha;
}

}  // namespace tkv
