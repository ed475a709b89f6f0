#include <vector>

#include "made.h"

// TIFF files of up to four directories, chained in any order, of entries of any tag, type and
// count. All strips or tiles are the same bytes.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

constexpr std::uint64_t kCompression = 259, kJbig = 34661;
constexpr std::uint64_t kTags[] = {
    256,   257,   258, kCompression, 262, 273, 277, 278,   279,   284,   317,  322,
    323,   324,   325, 330,          338, 339, 266, 34675, 320,   301,   333,  340,
    347,   512,   513, 514,          515, 519, 520, 521,   529,   530,   532,  700,
    33723, 34377, 254, 292,          270, 274, 282, 34665, 34853, 42112, 65000};
constexpr std::uint64_t kCompressions[] = {
    1,     5,     8,     7,     32773, 2,     3,     4,     6,     32946, kJbig, 32766, 32771,
    32809, 32895, 32908, 32909, 34676, 34677, 34712, 34887, 34925, 50000, 50001, 0};

}  // namespace

Bytes tkv::fuzz::fileFrom(ByteView input) {
    Input recipe(input.data(), input.size());
    const bool isLittle = !recipe.flag();
    Bytes file;
    const auto number = [&](std::uint64_t value, std::size_t bytes) {
        put(file, value, bytes, isLittle);
    };
    put(file, isLittle ? "II"sv : "MM"sv);
    number(42, 2);
    number(8, 4);
    std::vector<std::size_t> directories;
    for (std::size_t left = 1 + recipe.below(4); left > 0 && file.size() < kMostMade; --left) {
        directories.push_back(file.size());
        const std::size_t back = oneOf(recipe, directories), next = recipe.below(3);
        const std::uint64_t compression = oneOf(recipe, kCompressions);
        // A header of JBIG (ITU-T T.82): layers and planes, two sides, the lines of a stripe.
        Bytes data{0, 0, 1, 0};
        for (int i = 0; i < 3; ++i)
            put(data, power(recipe, 31), 4);
        put(data, 0x08000000, 4);
        if (compression != kJbig) data.clear();
        put(data, payload(recipe));
        const std::size_t entries = recipe.below(16), width = power(recipe, 15),
                          height = power(recipe, 15);
        // Behind what the recipe states, since readers take the first of a tag.
        const std::uint64_t usual[][3] = {
            {256, 4, width},       {257, 4, height}, {258, 3, 8}, {kCompression, 3, compression},
            {262, 3, 1},           {273, 4, 0},      {277, 3, 1}, {278, 4, height},
            {279, 4, data.size()},
        };
        const std::size_t all = entries + std::size(usual);
        // The data follow the entries, then the lists of values that are too long for an entry.
        const std::size_t dataAt = file.size() + 6 + 12 * all;
        std::size_t end = dataAt + data.size();
        std::vector<std::pair<std::uint64_t, std::size_t>> lists;
        number(all, 2);
        for (std::size_t i = 0; i < entries; ++i) {
            const std::uint64_t tag = oneOf(recipe, kTags), types = recipe.byte();
            const std::uint64_t count = power(recipe, 20);
            const std::uint64_t values[] = {power(recipe, 31), dataAt, data.size(), back};
            const std::uint64_t type = types % 16, choice = types / 16;
            const std::uint64_t value = tag == kCompression ? compression : values[choice % 4];
            const bool isList = choice >= 4 && count < 1U << 16U;
            number(tag, 2);
            number(type, 2);
            number(count, 4);
            if (type == 3 && !isList) {
                number(value, 2);
                number(0, 2);
            } else {
                number(isList ? end : value, 4);
            }
            if (isList) lists.emplace_back(value, count);
            if (isList) end += 4 * count;
        }
        for (const auto& [tag, type, value] : usual) {
            number(tag, 2);
            number(type, 2);
            number(1, 4);
            number(tag == 273 ? dataAt : value, type == 3 ? 2 : 4);
            if (type == 3) number(0, 2);
        }
        number(next == 0 ? 0 : next == 1 ? back : end, 4);
        put(file, data);
        for (const auto& [value, count] : lists) {
            for (std::uint64_t i = 0; i < count; ++i)
                number(value, 4);
        }
    }
    return file;
}
