#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "graphics/codecs/codecs.h"

// The segments and scans of a JPEG file (ITU-T T.81, annex B and G), without decoding any.

namespace tkv {

/// The file up to a marker segment that its end cuts short: libjpeg would take that for a fault,
/// and give up the scans before it.
ByteView wholeJpegSegments(ByteView file);

/// The file without the APP1 and APP2 segments beyond the thousandth, which libjpeg would keep in a
/// list that it walks for each; empty when it has no more. Encoders write some hundred of them at
/// most, for a depth map or another picture.
Bytes withoutSurplusMetadata(ByteView file);

/// How a component of a progressive file is decoded.
struct JpegComponent {
    unsigned id = 0;
    /// Samples a side that are made of a block of eight: 1, 2, 4 or 8; each is the mean of those
    /// that the whole block would give in its place.
    int samples = 8;
    /// Quantiser steps, row by row; 0 when not known.
    std::array<unsigned, 64> steps{};
    /// Levels of red, green and blue for each level of this component; of four inks any three.
    std::array<double, 3> levels{};
};

/// A progressive file without those scans whose loss changes no pixel by more than two levels at
/// the components' sizes, and none that a later one builds upon; empty when each is needed.
Bytes withoutSparedScans(ByteView file, const std::vector<JpegComponent>& components);

}  // namespace tkv
