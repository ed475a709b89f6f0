#pragma once

#include "graphics/codecs/codecs.h"

// The sizes that still pictures have in the streams of video codecs, whatever the file around them
// says: decoders allocate by these.

namespace tkv {

struct CodedStream {
    PixelSize largest{};  ///< 0 x 0 where none is stated
    /// How often at most a decoder goes over the picture: for each frame or slice.
    int passes = 0;
    /// It consists of units that end where the data do, and of no more than pictures have.
    bool isWhole = true;
};

/// Of a stream in HEVC (ITU-T H.265): `configuration` is a HEVCDecoderConfigurationRecord, `data`
/// NAL units after lengths of four bytes each (ISO/IEC 14496-15).
CodedStream hevcStream(ByteView configuration, ByteView data);

/// Of one in AV1: `configuration` is an AV1CodecConfigurationRecord, `data` OBUs.
CodedStream av1Stream(ByteView configuration, ByteView data);

}  // namespace tkv
