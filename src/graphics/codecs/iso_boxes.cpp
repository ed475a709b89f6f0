#include "graphics/codecs/iso_boxes.h"

namespace tkv {

std::vector<IsoBox> boxesIn(ByteView bytes, std::size_t& end) {
    std::vector<IsoBox> boxes;
    BoxReader reader(bytes);
    end = 0;
    while (reader.rest().size() >= 8 && boxes.size() <= kMostBoxes) {
        std::uint64_t length = reader.number(4), head = 8;
        const BoxType type = reader.type();
        if (length == 1) {
            length = reader.number(8);
            head = 16;
        }
        if (length == 0) length = head + reader.rest().size();  // To the end.
        if (!reader.isSound() || length < head || length - head > reader.rest().size()) break;
        boxes.push_back({type, reader.take(static_cast<std::size_t>(length - head))});
        end = bytes.size() - reader.rest().size();
    }
    return boxes;
}

std::vector<IsoBox> boxesIn(ByteView bytes) {
    std::size_t end = 0;
    std::vector<IsoBox> boxes = boxesIn(bytes, end);
    if (end != bytes.size() || boxes.size() > kMostBoxes) boxes.clear();
    return boxes;
}

}  // namespace tkv
