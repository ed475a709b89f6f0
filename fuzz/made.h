#pragma once

#include <zlib.h>

#include <algorithm>
#include <map>

#include "fuzzing.h"

// What the makers share. The input of a target with a maker is a recipe, from which it builds a
// file: each few bytes choose a part, its size, how often it comes and what it refers to. Changed
// bytes of the recipe then change the structure of the file; lengths and checksums stay right.

namespace tkv::fuzz {

using namespace std::string_view_literals;

/// A made file grows little further once it is as large; recipes have some hundred bytes.
inline constexpr std::size_t kMostMade = std::size_t{2} << 20U;

template <typename Range>
void put(Bytes& to, const Range& bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

/// Big-endian unless told otherwise.
inline void put(Bytes& to, std::uint64_t number, std::size_t bytes, bool isLittle = false) {
    for (std::size_t i = 0; i < bytes; ++i)
        to.push_back(static_cast<std::uint8_t>(number >> (8 * (isLittle ? i : bytes - 1 - i))));
}

/// Up to kMostMade.
inline void fill(Bytes& to, std::uint64_t size, std::uint8_t value = 0) {
    to.resize(to.size() + std::min(kMostMade, static_cast<std::size_t>(size)), value);
}

template <typename Table>
auto oneOf(Input& recipe, const Table& table) {
    return table[recipe.below(std::size(table))];
}

/// A power of two up to 2^most, or one less than that, or 0.
inline std::uint64_t power(Input& recipe, unsigned most) {
    const unsigned byte = recipe.byte();
    return (std::uint64_t{1} << (byte & 0x7FU) % (most + 1)) - (byte >> 7U);
}

/// What unpacks to that many zeros (RFC 1950).
inline const Bytes& deflated(std::size_t size) {
    static std::map<std::size_t, Bytes> made;
    Bytes& packed = made[size];
    if (!packed.empty()) return packed;
    uLongf length = compressBound(static_cast<uLong>(size));
    packed.resize(length);
    const Bytes zeros(size);
    require(compress2(packed.data(), &length, zeros.data(), static_cast<uLong>(size), 9) == Z_OK,
            "zeros can be compressed");
    packed.resize(length);
    return packed;
}

/// Up to three numbers, as headers have them, then a repeated byte; or what is compressed.
inline Bytes payload(Input& recipe) {
    const std::size_t numbers = recipe.below(8);
    if (numbers > 3) return deflated(power(recipe, 22));
    Bytes bytes;
    for (std::size_t i = 0; i < 2 * numbers; ++i)
        put(bytes, power(recipe, 31), 4);
    const std::uint64_t size = power(recipe, 18);
    fill(bytes, size, recipe.byte());
    return bytes;
}

}  // namespace tkv::fuzz
