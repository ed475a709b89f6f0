#include "made.h"

// PNG files of chunks of any type and number, most with a right header and right image data.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

constexpr std::string_view kTypes[] = {"zTXt", "iTXt", "tEXt", "iCCP", "sPLT", "hIST",
                                       "sBIT", "tIME", "eXIf", "PLTE", "tRNS", "gAMA",
                                       "cHRM", "sRGB", "prVt", "IDAT", "IEND"};
/// What precedes a chunk's text: its name, and how that is compressed.
constexpr std::string_view kHeads[] = {"", "a\0\0"sv, "a\0\1\0\0\0"sv, "a\0"sv};

void putChunk(Bytes& file, std::string_view type, const Bytes& content) {
    put(file, content.size(), 4);
    const std::size_t begin = file.size();
    put(file, type);
    put(file, content);
    put(file, crc32(0, &file[begin], static_cast<uInt>(file.size() - begin)), 4);
}

}  // namespace

Bytes tkv::fuzz::fileFrom(ByteView input) {
    Input recipe(input.data(), input.size());
    Bytes file, header;
    put(file, "\x89PNG\r\n\x1a\n"sv);
    const std::uint64_t width = power(recipe, 15), height = power(recipe, 5);
    const std::uint64_t depth = power(recipe, 4), color = recipe.below(8);
    const bool isInterlaced = recipe.flag(), hasData = !recipe.flag();
    put(header, width, 4);
    put(header, height, 4);
    put(header, depth << 32U | color << 24U | (isInterlaced ? 1 : 0), 5);
    putChunk(file, "IHDR", header);
    if (color == 3) putChunk(file, "PLTE", Bytes(768));
    while (!recipe.isAtEnd()) {
        const std::string_view type = oneOf(recipe, kTypes);
        const std::uint64_t count = power(recipe, 10);
        Bytes content;
        put(content, oneOf(recipe, kHeads));
        put(content, payload(recipe));
        for (std::uint64_t i = 0; i < count && file.size() + content.size() < kMostMade; ++i)
            putChunk(file, type, content);
    }
    // Of four samples a pixel, or less than there are.
    const std::uint64_t bytes = (width * depth / 2 + 2) * height;
    if (hasData) putChunk(file, "IDAT", deflated(std::min<std::size_t>(bytes, 1U << 25U)));
    putChunk(file, "IEND", {});
    return file;
}
