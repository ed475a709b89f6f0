#pragma once

#include <cstdint>
#include <vector>

namespace tkv {

/// The colours of a picture as video and newer still formats tell them: numbers of ITU-T H.273.
struct ColorCodes {
    static constexpr int kUnspecified = 2;
    int primaries = kUnspecified;
    int transfer = kUnspecified;
};

/// An ICC profile of these colours; empty where they count as sRGB. The curves of ordinary video,
/// and those that are not known, count as sRGB's, and unknown primaries do. HDR (PQ, HLG) becomes
/// SDR: what is brighter than most of paper white is compressed, highlights keep some drawing.
std::vector<std::uint8_t> profileOfCodes(const ColorCodes& codes);

}  // namespace tkv
