#include "disc/subtitle/dvb_canvas.h"

#include "disc/subtitle/bytes.h"

namespace tkv::disc {

PixelSize dvbCanvas(std::string_view segments) {
    constexpr unsigned kBegin = 0x0F, kDisplay = 0x14;
    ByteReader reader({reinterpret_cast<const std::uint8_t*>(segments.data()), segments.size()});
    while (!reader.isAtEnd()) {
        // Between segments there may be the ends of packets.
        if (reader.number(1) != kBegin) continue;
        const unsigned kind = reader.number(1);
        reader.skip(2);
        const unsigned bytes = reader.number(2);
        if (kind == kDisplay) {
            reader.skip(1);
            const int right = reader.small(2), bottom = reader.small(2);
            return {right + 1, bottom + 1};
        }
        reader.skip(bytes);
    }
    return {720, 576};
}

}  // namespace tkv::disc
