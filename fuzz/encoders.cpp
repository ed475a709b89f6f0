#include <set>

#include "fuzzing.h"
#include "graphics/formats.h"
#include "graphics/pixels.h"

// Any pixels through each encoder and back: the size is kept, and lossless formats round-trip.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

struct Encoding {
    const char* extension;
    bool isLossless;
};
constexpr Encoding kEncodings[] = {{"png", true},  {"tif", true},  {"bmp", true}, {"jp2", true},
                                   {"gif", false}, {"jpg", false}, {"", false}};

/// Its pixels repeat the input's last bytes; half of all are opaque, some have few colours.
Bitmap bitmapOf(Input& input) {
    const PixelSize size{1 + static_cast<int>(input.below(70)),
                         1 + static_cast<int>(input.below(40))};
    const std::size_t rowBytes = 4 * (static_cast<std::size_t>(size.width) + input.below(3));
    const bool isOpaque = input.flag();
    const unsigned mask = input.flag() ? 0xC0C0C0C0U : 0xFFFFFFFFU;
    const std::string bytes = input.rest() + '\x80';
    Bitmap bitmap = Bitmap::create(size, rowBytes).value();
    std::size_t at = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            std::uint32_t word = isOpaque ? 0xFFU : 0;
            for (int i = isOpaque ? 1 : 0; i < 4; ++i)
                word = word << 8U | static_cast<std::uint8_t>(bytes[at++ % bytes.size()]);
            bitmap.row(y)[x] = premultiplied(isOpaque ? word | 0xFF000000U : word & mask);
        }
    }
    return bitmap;
}

bool hasFewColors(const Bitmap& bitmap) {
    std::set<std::uint32_t> colors;
    for (int y = 0; y < bitmap.height(); ++y)
        colors.insert(bitmap.row(y), bitmap.row(y) + bitmap.width());
    return !colors.empty() && colors.size() <= 256 && alphaOf(*colors.begin()) == 255;
}

/// What is transparent turns black where a format keeps no alpha.
std::uint32_t kept(std::uint32_t pixel, bool keepsAlpha) {
    return keepsAlpha ? pixel : pixel | 0xFF000000U;
}

void requireEqual(const Bitmap& bitmap, const Bitmap& decoded, bool keepsAlpha) {
    for (int y = 0; y < bitmap.height(); ++y) {
        for (int x = 0; x < bitmap.width(); ++x)
            require(decoded.row(y)[x] == kept(bitmap.row(y)[x], keepsAlpha), "a pixel stays");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto factor = static_cast<float>(input.between(0.001, 1));
    const Bitmap bitmap = bitmapOf(input);
    for (const auto& [extension, isLossless] : kEncodings) {
        const auto file = encodePicture(bitmap, extension, factor);
        require(file.has_value(), "a small picture is encoded");
        const auto decoded = decodePicture(scratchFile("picture", file->data(), file->size()));
        require(decoded && decoded->size() == bitmap.size(), "what is encoded is decoded");
        requireSound(*decoded);
        const bool isExact =
            isLossless || (extension == std::string_view("gif") && hasFewColors(bitmap));
        const bool hasAlpha = std::string_view(extension) != "bmp";
        if (isExact) requireEqual(bitmap, *decoded, hasAlpha);
    }
    return 0;
}
