#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "graphics/bitmap.h"
#include "graphics/formats.h"

// The picture formats, one source file each. A decoder takes a whole file in memory and returns an
// upright sRGB bitmap, or none when the bytes are not a picture that it can show; `needed` and the
// nominal size are as decodePicture says. An encoder returns the bytes of a whole file, or none
// when its library fails; each file states the bitmap's resolution (72 dots per inch when as many
// drawing units as pixels) where its format can hold one. Only the JPEG encoder honours `factor`, a
// compression factor in (0, 1] or none. All may throw std::bad_alloc.

namespace tkv {

using ByteView = std::span<const std::uint8_t>;

/// By its first bytes, as the next ones.
bool isJpeg(ByteView head);
/// Decodes at the full size or the smallest half, quarter or eighth of it that `needed` allows.
std::optional<Bitmap> decodeJpeg(ByteView file, const NeededSize& needed);
/// Written at quality round(100 * factor), without chroma subsampling (4:4:4) from 0.95 on; without
/// a factor at quality 75. Alpha is dropped: what is transparent turns black.
std::optional<Bytes> encodeJpeg(const Bitmap& bitmap, std::optional<float> factor = {});

bool isJpeg2000(ByteView head);
/// A JP2 file or a raw codestream, half as many pixels again a side as `needed` asks for: reduced
/// pictures of this format overshoot at edges, which the drawing's downscaling then averages away.
std::optional<Bitmap> decodeJpeg2000(ByteView file, const NeededSize& needed);
/// Lossless JP2; with an alpha channel only when some pixel is not opaque.
std::optional<Bytes> encodeJpeg2000(const Bitmap& bitmap, std::optional<float> factor = {});

bool isReadByPixbuf(ByteView head);
/// What the system's GdkPixbuf loads of PNG, GIF, BMP, TIFF, WebP, AVIF, HEIF, TGA and PNM; the
/// first frame of an animation.
std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed);
/// With alpha.
std::optional<Bytes> encodePng(const Bitmap& bitmap, std::optional<float> factor = {});
/// A solid colour, not premultiplied, at 72 dots per inch.
std::optional<Bytes> encodePlainPng(PixelSize size, std::uint32_t straight);
/// With alpha.
std::optional<Bytes> encodeTiff(const Bitmap& bitmap, std::optional<float> factor = {});
/// 24 bits per pixel; what is transparent turns black.
std::optional<Bytes> encodeBmp(const Bitmap& bitmap, std::optional<float> factor = {});

/// Paletted: exact up to 256 colours, quantised and dithered beyond; pixels below half opacity
/// share one transparent index.
std::optional<Bytes> encodeGif(const Bitmap& bitmap, std::optional<float> factor = {});

/// The limits of decoding: pixels a side as stored, and the bytes held at the peak by the file, the
/// library and the bitmaps.
inline constexpr int kLargestSide = 32768;
inline constexpr std::int64_t kMostBytes = std::int64_t{960} << 20U;

/// The largest picture file: with what is made of it, it must be within that.
inline constexpr std::int64_t kLargestFile = kMostBytes / 2;

constexpr std::int64_t pixelsOf(PixelSize size) {
    return std::int64_t{size.width} * size.height;
}

/// Whether a picture of this size, for which that many bytes are held, is within those limits.
constexpr bool canHold(PixelSize full, std::int64_t bytes) {
    return full.width >= 1 && full.height >= 1 && full.width <= kLargestSide &&
           full.height <= kLargestSide && bytes <= kMostBytes;
}

}  // namespace tkv
