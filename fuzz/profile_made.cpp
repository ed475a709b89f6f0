#include <algorithm>
#include <vector>

#include "made.h"

// ICC profiles of any of the tags that transform colours, whose tables and lists of processing
// elements are as long as they state.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

constexpr std::string_view kSpaces[] = {"RGB ", "GRAY", "CMYK", "Lab "};
constexpr std::string_view kTags[] = {"A2B0", "D2B0", "kTRC", "rTRC", "gTRC", "bTRC", "rXYZ",
                                      "gXYZ", "bXYZ", "A2B1", "A2B2", "D2B1", "D2B3", "B2A0",
                                      "B2D0", "gamt", "wtpt", "chad", "desc"};
constexpr std::string_view kTypes[] = {"mft1", "mft2", "mAB ", "mBA ", "mpet",
                                       "curv", "para", "XYZ ", "sf32", "mluc"};
constexpr std::string_view kElements[] = {"matf", "cvst", "clut", "bACS", "eACS"};
constexpr std::uint64_t kOne = 0x10000, kFloat = 0x3F800000;  ///< 1, fixed and as a float

/// A matrix with `one` on its diagonal.
void putMatrix(Bytes& to, std::size_t inputs, std::size_t outputs, std::uint64_t one) {
    for (std::size_t i = 0; i < inputs * outputs; ++i)
        put(to, i % (inputs + 1) == 0 ? one : 0, 4);
}

/// The bytes of a table of colours, which has that many entries a side.
std::uint64_t tableSize(std::uint64_t side, std::size_t inputs, std::uint64_t entryBytes) {
    for (std::size_t i = 0; i < inputs && entryBytes < kMostMade; ++i)
        entryBytes *= side;
    return entryBytes;
}

/// Of `mpet`.
Bytes elementOf(Input& recipe, std::size_t inputs, std::size_t outputs) {
    const std::string_view type = oneOf(recipe, kElements);
    const std::uint64_t size = power(recipe, 16);
    Bytes bytes;
    put(bytes, type);
    put(bytes, inputs << 16U | outputs, 8);
    if (type == "matf") {
        putMatrix(bytes, inputs, outputs, kFloat);
        fill(bytes, 4 * outputs);
    } else if (type == "clut") {
        fill(bytes, 16, static_cast<std::uint8_t>(size));
        fill(bytes, tableSize(size & 0xFFU, inputs, 4 * outputs), 0x3E);
    } else if (type == "cvst") {
        // All channels have one curve: a sampled segment between two formulas.
        for (std::size_t i = 0; i < inputs; ++i)
            put(bytes, (12 + 8 * inputs) << 32U | (88 + 4 * size), 8);
        put(bytes, "curf\0\0\0\0\0\3\0\0\0\0\0\0"sv);
        put(bytes, kFloat, 4);
        for (const std::string_view segment : {"parf", "samf", "parf"}) {
            put(bytes, segment);
            put(bytes, segment == "samf" ? size : 0, 8);
            if (segment == "samf")
                fill(bytes, 4 * size, 0x3E);
            else
                putMatrix(bytes, 4, 1, kFloat);
        }
    }
    return bytes;
}

/// Most have as many channels as the space of the profile.
Bytes tagData(Input& recipe, std::size_t spaceChannels) {
    const std::string_view type = oneOf(recipe, kTypes);
    const std::size_t channels = recipe.byte();
    const std::size_t in = channels < 192 ? spaceChannels : channels % 16;
    const std::size_t out = channels < 192 ? 3 : channels / 16 % 4;
    const std::uint64_t size = power(recipe, 17), side = size & 0xFFU;
    const std::size_t choice = recipe.byte();
    Bytes bytes;
    put(bytes, type);
    put(bytes, 0, 4);
    if (type == "curv") {
        put(bytes, size, 4);
        fill(bytes, 2 * size, 2);
    } else if (type == "para") {
        put(bytes, choice << 16U, 4);
        fill(bytes, 28, 1);
    } else if (type.starts_with("mft")) {
        const std::size_t wide = type == "mft2" ? 2 : 1, curve = wide == 1 ? 256 : 2 + choice * 16;
        put(bytes, in << 24U | out << 16U | side << 8U, 4);
        putMatrix(bytes, 3, 3, kOne);
        if (wide == 2) put(bytes, curve << 16U | curve, 4);
        fill(bytes, wide * curve * in, 1);
        fill(bytes, tableSize(side, in, wide * out), 2);
        fill(bytes, wide * curve * out, 3);
    } else if (type == "mpet") {
        // Up to four different ones in turn.
        Bytes elements;
        std::vector<std::uint64_t> places(1 + choice % 4);
        for (std::uint64_t& place : places) {
            const Bytes element = elementOf(recipe, in, out);
            place = (16 + 8 * size + elements.size()) << 32U | element.size();
            put(elements, element);
        }
        put(bytes, in << 48U | out << 32U | size, 8);
        for (std::uint64_t i = 0; i < size; ++i)
            put(bytes, places[i % places.size()], 8);
        put(bytes, elements);
    } else if (type == "mAB " || type == "mBA ") {
        // Curves, which are all the same, a matrix and a table; any stage can be missing.
        const std::uint64_t entries = power(recipe, 16), curves = std::max(in, out);
        const std::uint64_t matrixAt = 32 + curves * (12 + (2 * entries + 3) / 4 * 4);
        const std::uint64_t stages[] = {32, matrixAt, 32, matrixAt + 48, 32};
        put(bytes, in << 24U | out << 16U, 4);
        for (std::size_t i = 0; i < std::size(stages); ++i)
            put(bytes, (choice >> i & 1U) == 0 ? stages[i] : 0, 4);
        for (std::uint64_t i = 0; i < curves && bytes.size() < kMostMade; ++i) {
            put(bytes, "curv\0\0\0\0"sv);
            put(bytes, entries, 4);
            fill(bytes, (2 * entries + 3) / 4 * 4, 2);
        }
        putMatrix(bytes, 3, 3, kOne);
        fill(bytes, 12);
        fill(bytes, 16, static_cast<std::uint8_t>(side));
        put(bytes, 0x01000000, 4);
        fill(bytes, tableSize(side, in, out), 4);
    } else {
        put(bytes, payload(recipe));
    }
    return bytes;
}

}  // namespace

Bytes tkv::fuzz::fileFrom(ByteView input) {
    Input recipe(input.data(), input.size());
    const std::string_view space = oneOf(recipe, kSpaces);
    const bool isLab = recipe.flag();
    const std::size_t channels = space == "GRAY" ? 1 : space == "CMYK" ? 4 : 3;
    std::vector<std::pair<std::string_view, std::uint64_t>> tags;
    Bytes file, listed, data;
    while (!recipe.isAtEnd() && data.size() < kMostMade) {
        const std::string_view name = oneOf(recipe, kTags);
        const bool isShared = recipe.flag() && !tags.empty();
        const Bytes content = isShared ? Bytes() : tagData(recipe, channels);
        const std::uint64_t place = data.size() << 32U | content.size();
        tags.emplace_back(name, isShared ? oneOf(recipe, tags).second : place);
        put(data, content);
    }
    const std::uint64_t begin = 132 + 12 * tags.size();
    for (const std::uint64_t word :
         {begin + data.size(), std::uint64_t{0}, std::uint64_t{0x04400000}})
        put(file, word, 4);
    put(file, "mntr"sv);
    put(file, space);
    put(file, isLab ? "Lab "sv : "XYZ "sv);
    fill(file, 12);
    put(file, "acsp"sv);
    fill(file, 88);
    put(file, tags.size(), 4);
    for (const auto& [name, place] : tags) {
        put(file, name);
        put(file, place + (begin << 32U), 8);
    }
    put(file, data);
    return file;
}
