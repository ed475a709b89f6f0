#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/codecs/palette.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

constexpr std::size_t kMostColors = 256;
constexpr int kLargestGifSide = 65535;

using ColorMap = std::unique_ptr<ColorMapObject, Releaser<GifFreeMapObject>>;

/// Closing writes the trailer and flushes the file.
struct CloseGif {
    void operator()(GifFileType* gif) const { EGifCloseFile(gif, nullptr); }
};
using Gif = std::unique_ptr<GifFileType, CloseGif>;

/// A paletted picture: one index per pixel, rows top-down.
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

/// The colours of the opaque pixels, without alpha.
std::vector<std::uint32_t> opaqueColors(const Bitmap& bitmap) {
    std::vector<std::uint32_t> colors;
    for (int y = 0; y < bitmap.height(); ++y) {
        for (const std::uint32_t pixel : rowOf(bitmap, y)) {
            if (!isTransparent(pixel)) colors.push_back(straight(pixel) & 0xFFFFFFU);
        }
    }
    return colors;
}

/// Floyd-Steinberg error diffusion with serpentine scanning. Without it the gradients of
/// photographs show banding; at full strength it would make grain of colours that the palette
/// nearly has.
class Diffusion {
  public:
    Diffusion(std::span<const std::uint32_t> palette, int width)
        : palette_(palette),
          nearest_(palette),
          here_(static_cast<std::size_t>(width) + 2),
          below_(static_cast<std::size_t>(width) + 2) {}

    void startRow() {
        std::swap(here_, below_);
        std::ranges::fill(below_, Channels{});
    }

    /// The palette index for a pixel of the row; `next` is the scan direction, 1 or -1.
    std::size_t indexFor(std::uint32_t color, std::size_t x, int next);

  private:
    std::span<const std::uint32_t> palette_;
    NearestColor nearest_;
    // The diffused error in 1/256, with one more element at both ends.
    std::vector<Channels> here_, below_;
};

std::size_t Diffusion::indexFor(std::uint32_t color, std::size_t x, int next) {
    constexpr int kHandedOn = 14;  // Sixteenths of the error.
    const std::size_t at = x + 1;
    Channels wanted = channelsOf(color);
    for (std::size_t i = 0; i < wanted.size(); ++i)
        wanted[i] = std::clamp(wanted[i] + ((here_[at][i] + 128) >> 8), 0, 255);
    const std::size_t index = nearest_.indexOf(wanted);
    const Channels shown = channelsOf(palette_[index]);
    const std::size_t ahead = next > 0 ? at + 1 : at - 1;
    const std::size_t behind = next > 0 ? at - 1 : at + 1;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const int short16th = (wanted[i] - shown[i]) * kHandedOn;
        here_[ahead][i] += 7 * short16th;
        below_[behind][i] += 3 * short16th;
        below_[at][i] += 5 * short16th;
        below_[ahead][i] += short16th;
    }
    return index;
}

Indexed indexed(const Bitmap& bitmap) {
    Indexed picture;
    std::vector<std::uint32_t> colors = opaqueColors(bitmap);
    const std::size_t width = rowOf(bitmap, 0).size();
    const std::size_t pixels = width * static_cast<std::size_t>(bitmap.height());
    const bool transparency = colors.size() < pixels;
    if (!colors.empty())
        picture.palette = choosePalette(colors, kMostColors - (transparency ? 1 : 0));
    if (transparency) picture.transparent = static_cast<int>(picture.palette.size());

    picture.indices.resize(pixels, static_cast<GifPixelType>(picture.transparent));
    Diffusion diffusion(picture.palette, bitmap.width());
    for (int y = 0; y < bitmap.height(); ++y) {
        const auto row = rowOf(bitmap, y);
        GifPixelType* indices = picture.indices.data() + static_cast<std::size_t>(y) * width;
        diffusion.startRow();
        for (std::size_t i = 0; i < width; ++i) {
            const std::size_t x = y % 2 == 0 ? i : width - 1 - i;
            if (isTransparent(row[x])) continue;
            indices[x] = static_cast<GifPixelType>(
                diffusion.indexFor(straight(row[x]), x, y % 2 == 0 ? 1 : -1));
        }
    }
    if (transparency) picture.palette.push_back(0);
    return picture;
}

bool write(GifFileType* gif, PixelSize size, Indexed& picture) {
    // A file's palette has a power of two entries, at least two.
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
    Indexed picture = indexed(bitmap);
    Bytes file;
    Gif gif(EGifOpen(&file, append, nullptr));
    if (!gif || !write(gif.get(), bitmap.size(), picture)) return std::nullopt;
    if (EGifCloseFile(gif.release(), nullptr) != GIF_OK) return std::nullopt;
    return file;
}

}  // namespace tkv
