#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "graphics/codecs/codecs.h"

// The segments and scans of a JPEG file (ITU-T T.81, annex B and G), without decoding any.

namespace tkv {

/// The file up to a marker segment that is truncated: libjpeg would fail on that, and lose the
/// scans before it.
ByteView wholeJpegSegments(ByteView file);

/// The file without the APP1 and APP2 segments beyond the thousandth, which libjpeg would append to
/// a linked list that it walks for each; empty when it has no more. Encoders write some hundred of
/// them at most, for a depth map or another picture.
Bytes withoutSurplusMetadata(ByteView file);

/// How a component of a progressive file is decoded.
struct JpegComponent {
    unsigned id = 0;
    /// Samples a side of a scaled block: 1, 2, 4 or 8; each is the mean of those that the full
    /// inverse DCT would give in its place.
    int samples = 8;
    /// Quantiser steps in natural order; 0 when not known.
    std::array<unsigned, 64> steps{};
    /// Levels of red, green and blue for each level of this component; of CMYK any three.
    std::array<double, 3> levels{};
};

/// A progressive file without those scans whose loss changes no pixel by more than two levels at
/// the components' sizes, and none that a kept one refines; empty when each is needed.
Bytes withoutSparedScans(ByteView file, const std::vector<JpegComponent>& components);

}  // namespace tkv
