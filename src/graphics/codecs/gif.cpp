#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

constexpr std::size_t kMostColors = 256;
constexpr int kLargestGifSide = 65535;

using ColorMap = std::unique_ptr<ColorMapObject, Releaser<GifFreeMapObject>>;

/// Closing ends the file, and writes what is left of it.
struct CloseGif {
    void operator()(GifFileType* gif) const { EGifCloseFile(gif, nullptr); }
};
using Gif = std::unique_ptr<GifFileType, CloseGif>;

/// A picture in few colours: an index a pixel, rows from the top down.
struct Indexed {
    std::vector<std::uint32_t> palette;
    std::vector<GifPixelType> indices;
    int transparent = NO_TRANSPARENT_COLOR;
};

std::span<const std::uint32_t> rowOf(const Bitmap& bitmap, int y) {
    return {bitmap.row(y), static_cast<std::size_t>(bitmap.width())};
}

bool isTransparent(std::uint32_t pixel) {
    return alphaOf(pixel) < 128;
}

/// The three colour planes that giflib works on, rows from the top down.
struct Planes {
    explicit Planes(const Bitmap& bitmap) {
        for (int y = 0; y < bitmap.height(); ++y) {
            for (const std::uint32_t pixel : rowOf(bitmap, y)) {
                const std::uint32_t color = isTransparent(pixel) ? 0 : straight(pixel);
                red.push_back(static_cast<GifByteType>(redOf(color)));
                green.push_back(static_cast<GifByteType>(greenOf(color)));
                blue.push_back(static_cast<GifByteType>(blueOf(color)));
                transparency |= isTransparent(pixel);
            }
        }
    }

    std::vector<GifByteType> red, green, blue;
    bool transparency = false;
};

/// The mean colour of the pixels of each index. giflib takes colours for their upper five bits, so
/// that its own palette has no white.
std::vector<std::uint32_t> meanColors(const Planes& planes,
                                      const std::vector<GifPixelType>& indices,
                                      std::size_t colors) {
    std::vector<std::array<std::uint64_t, 4>> sums(colors);
    for (std::size_t i = 0; i < indices.size(); ++i) {
        auto& [count, red, green, blue] = sums[indices[i]];
        count += 1;
        red += planes.red[i];
        green += planes.green[i];
        blue += planes.blue[i];
    }
    std::vector<std::uint32_t> palette;
    for (const auto& [count, red, green, blue] : sums) {
        const auto mean = [n = std::max<std::uint64_t>(count, 1)](std::uint64_t sum) {
            return static_cast<unsigned>((sum + n / 2) / n);
        };
        palette.push_back(pixelOf(255, mean(red), mean(green), mean(blue)));
    }
    return palette;
}

std::optional<Indexed> indexed(const Bitmap& bitmap) {
    Planes planes(bitmap);
    Indexed picture;
    picture.indices.resize(planes.red.size());
    std::array<GifColorType, kMostColors> unused{};
    int colors = static_cast<int>(planes.transparency ? kMostColors - 1 : kMostColors);
    if (GifQuantizeBuffer(static_cast<unsigned>(bitmap.width()),
                          static_cast<unsigned>(bitmap.height()), &colors, planes.red.data(),
                          planes.green.data(), planes.blue.data(), picture.indices.data(),
                          unused.data()) != GIF_OK) {
        return std::nullopt;
    }
    picture.palette = meanColors(planes, picture.indices, static_cast<std::size_t>(colors));
    if (!planes.transparency) return picture;

    picture.transparent = colors;
    picture.palette.push_back(0);
    auto index = picture.indices.begin();
    for (int y = 0; y < bitmap.height(); ++y) {
        for (const std::uint32_t pixel : rowOf(bitmap, y)) {
            if (isTransparent(pixel)) *index = static_cast<GifPixelType>(picture.transparent);
            ++index;
        }
    }
    return picture;
}

bool write(GifFileType* gif, PixelSize size, Indexed& picture) {
    // A file's palette has a power of two of entries, at least two.
    const int bits = GifBitSize(static_cast<int>(picture.palette.size()));
    const ColorMap map(GifMakeMapObject(1 << bits, nullptr));
    if (!map) return false;
    std::ranges::transform(picture.palette, map->Colors, [](std::uint32_t color) {
        return GifColorType{static_cast<GifByteType>(redOf(color)),
                            static_cast<GifByteType>(greenOf(color)),
                            static_cast<GifByteType>(blueOf(color))};
    });

    GraphicsControlBlock control{};
    control.TransparentColor = picture.transparent;
    std::array<GifByteType, 4> extension{};
    EGifGCBToExtension(&control, extension.data());
    const bool transparency = picture.transparent != NO_TRANSPARENT_COLOR;
    EGifSetGifVersion(gif, transparency);
    if (EGifPutScreenDesc(gif, size.width, size.height, bits, 0, map.get()) != GIF_OK ||
        (transparency && EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, extension.size(),
                                          extension.data()) != GIF_OK) ||
        EGifPutImageDesc(gif, 0, 0, size.width, size.height, false, nullptr) != GIF_OK) {
        return false;
    }
    for (int y = 0; y < size.height; ++y) {
        GifPixelType* row = picture.indices.data() +
                            static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width);
        if (EGifPutLine(gif, row, size.width) != GIF_OK) return false;
    }
    return true;
}

int append(GifFileType* gif, const GifByteType* data, int length) {
    auto* file = static_cast<Bytes*>(gif->UserData);
    try {
        file->insert(file->end(), data, data + length);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return length;
}

}  // namespace

std::optional<Bytes> encodeGif(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    if (std::max(bitmap.width(), bitmap.height()) > kLargestGifSide) return std::nullopt;
    std::optional<Indexed> picture = indexed(bitmap);
    Bytes file;
    Gif gif(EGifOpen(&file, append, nullptr));
    if (!picture || !gif || !write(gif.get(), bitmap.size(), *picture)) return std::nullopt;
    if (EGifCloseFile(gif.release(), nullptr) != GIF_OK) return std::nullopt;
    return file;
}

}  // namespace tkv
