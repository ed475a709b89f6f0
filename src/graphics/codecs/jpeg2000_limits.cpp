#include "graphics/codecs/jpeg2000_limits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string_view>

namespace tkv {

std::int64_t tileBytes(ByteView file) {
    constexpr std::string_view kStart("\xFF\x4F\xFF\x51", 4);
    constexpr std::int64_t kBytesEach = 8192, kBytesPerComponent = 1536;
    const auto at = std::search(file.begin(), file.end(), kStart.begin(), kStart.end(),
                                [](std::uint8_t a, char b) { return char(a) == b; });
    const ByteView size = file.subspan(static_cast<std::size_t>(at - file.begin()));
    // The SIZ marker segment: sizes of the reference grid and of its tiles, their offsets, and the
    // number of components.
    if (size.size() < 42) return 0;
    const auto wordAt = [&](std::size_t offset) {
        std::int64_t word = 0;
        for (const std::uint8_t byte : size.subspan(offset, 4))
            word = word << 8 | byte;
        return word;
    };
    const auto count = [&](std::size_t side, std::size_t tile, std::size_t start) {
        const std::int64_t length = wordAt(tile);
        if (length == 0) return std::int64_t{0};
        constexpr std::int64_t kMostTiles = 65536;  // The library rejects more.
        return std::clamp<std::int64_t>((wordAt(side) - wordAt(start) + length - 1) / length, 0,
                                        kMostTiles);
    };
    const std::int64_t components = size[40] << 8U | size[41];
    return count(8, 24, 32) * count(12, 28, 36) * (kBytesEach + components * kBytesPerComponent);
}

std::int64_t structureBytes(const opj_codestream_info_v2_t& info, PixelSize full) {
    constexpr std::int64_t kBlock = 900, kPrecinct = 400;
    constexpr unsigned kStatesPrecincts = 1, kLargestPrecinct = 15;
    const auto parts = [](std::int64_t length, unsigned exponent) {
        return (length >> std::min(exponent, 31U)) + 2;  // The first and the last may be partial.
    };
    const std::int64_t width = std::min<std::int64_t>(full.width, info.tdx);
    const std::int64_t height = std::min<std::int64_t>(full.height, info.tdy);
    std::int64_t bytes = 0;
    for (const opj_tccp_info_t& coding :
         std::span(info.m_default_tile_info.tccp_info, info.nbcomps)) {
        const bool isStated = (coding.csty & kStatesPrecincts) != 0;
        for (unsigned i = 0; i < std::min(coding.numresolutions, 33U); ++i) {
            const unsigned halvings = coding.numresolutions - 1 - i;
            const std::int64_t across = width >> halvings, down = height >> halvings;
            const unsigned precinctAcross = isStated ? coding.prcw[i] : kLargestPrecinct;
            const unsigned precinctDown = isStated ? coding.prch[i] : kLargestPrecinct;
            // All resolutions but the lowest have three subbands of half the sides.
            const unsigned half = i > 0 ? 1 : 0;
            const auto exponent = [half](unsigned block, unsigned precinct) {
                return std::min(block, precinct > half ? precinct - half : 0);
            };
            const std::int64_t precincts =
                parts(across, precinctAcross) * parts(down, precinctDown);
            const std::int64_t blocks =
                parts(across >> half, exponent(coding.cblkw, precinctAcross)) *
                parts(down >> half, exponent(coding.cblkh, precinctDown));
            bytes += (half > 0 ? 3 : 1) * (blocks * kBlock + precincts * kPrecinct);
        }
    }
    return bytes;
}

bool canBeLenient() {
    constexpr std::array kSince{2, 5, 3};
    std::array<int, 3> version{};
    const std::string_view text = opj_version();
    const char* at = text.data();
    for (int& number : version) {
        at = std::from_chars(at, text.data() + text.size(), number).ptr;
        if (at != text.data() + text.size()) ++at;
    }
    return version >= kSince;
}

}  // namespace tkv
