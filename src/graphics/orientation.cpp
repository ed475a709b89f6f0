#include "graphics/orientation.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "graphics/releaser.h"

namespace tkv {

namespace {

constexpr std::array<char, 6> kExifHeader{'E', 'x', 'i', 'f', 0, 0};

/// How an upright pixel's (x, y) maps to the stored one: transposed where the picture lies on its
/// side (swapsSides), then mirrored horizontally or vertically.
struct Turn {
    bool fromRight;
    bool fromBottom;
};

constexpr std::array<Turn, 9> kTurns{{
    {},  // Orientations are numbered from 1.
    {false, false},
    {true, false},
    {true, true},
    {false, true},
    {false, false},
    {false, true},
    {true, true},
    {true, false},
}};

}  // namespace

int exifOrientation(std::span<const std::uint8_t> exif) {
    constexpr std::string_view header(kExifHeader.data(), kExifHeader.size());
    std::string bytes(exif.begin(), exif.end());
    // The library would parse anything else as a whole JPEG file.
    if (bytes.starts_with("II*") || bytes.starts_with("MM")) bytes.insert(0, header);
    if (!bytes.starts_with(header)) return 1;
    const std::unique_ptr<ExifData, Releaser<exif_data_unref>> data(exif_data_new_from_data(
        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size())));
    if (!data) return 1;
    const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return 1;
    const int value = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return value >= 1 && value <= 8 ? value : 1;
}

std::optional<Bitmap> upright(Bitmap bitmap, int orientation) {
    if (orientation <= 1 || orientation > 8) return bitmap;
    const bool swaps = swapsSides(orientation);
    PixelSize size = bitmap.size();
    const Turn turn = kTurns[static_cast<std::size_t>(orientation)];
    Size nominal = bitmap.nominalSize();
    PixelRect extent = bitmap.extent();
    if (turn.fromRight) extent.left = size.width - extent.left - extent.width;
    if (turn.fromBottom) extent.top = size.height - extent.top - extent.height;
    if (swaps) {
        std::swap(size.width, size.height);
        std::swap(nominal.width, nominal.height);
        extent = {extent.top, extent.left, extent.height, extent.width};
    }
    std::optional<Bitmap> turned = Bitmap::create(size);
    if (!turned) return std::nullopt;
    turned->setNominalSize(nominal);
    turned->setExtent(extent);
    turned->setAveraged(bitmap.averaged());

    const std::uint32_t* origin = bitmap.row(turn.fromBottom ? bitmap.height() - 1 : 0) +
                                  (turn.fromRight ? bitmap.width() - 1 : 0);
    const auto rowPixels = static_cast<std::ptrdiff_t>(bitmap.rowBytes() / 4);
    const std::ptrdiff_t right = turn.fromRight ? -1 : 1;
    const std::ptrdiff_t down = turn.fromBottom ? -rowPixels : rowPixels;
    const std::ptrdiff_t across = swaps ? down : right;
    const std::ptrdiff_t along = swaps ? right : down;
    for (int y = 0; y < size.height; ++y) {
        std::uint32_t* target = turned->row(y);
        const std::uint32_t* source = origin + y * along;
        for (int x = 0; x < size.width; ++x)
            target[x] = source[x * across];
    }
    return turned;
}

}  // namespace tkv
