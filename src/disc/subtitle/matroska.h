#pragma once

#include <functional>
#include <istream>
#include <vector>

#include "disc/subtitle/bytes.h"

namespace tkv::disc {

struct MatroskaPacket {
    double seconds = 0;   ///< when it begins
    double duration = 0;  ///< in seconds; 0 when the file does not tell
    std::vector<std::uint8_t> bytes;
};

/// Tells what stands in a file of the format Matroska that holds one track, as ffmpeg writes it:
/// the codec's own header, where there is one, and the packets. What is damaged ends it.
void readMatroska(std::istream& file, const std::function<void(ByteSpan header)>& onHeader,
                  const std::function<void(const MatroskaPacket& packet)>& onPacket);

}  // namespace tkv::disc
