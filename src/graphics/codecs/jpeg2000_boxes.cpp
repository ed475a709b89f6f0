#include "graphics/codecs/jpeg2000_boxes.h"

#include <algorithm>
#include <string_view>

namespace tkv {

namespace {

std::uint32_t readWord(const std::uint8_t* at) {
    return std::uint32_t{at[0]} << 24U | std::uint32_t{at[1]} << 16U | std::uint32_t{at[2]} << 8U |
           at[3];
}

/// Calls `visit` with the type and content of each box in these bytes; truncation may cut the last.
template <typename Visit>
void forEachBox(ByteView boxes, const Visit& visit) {
    while (boxes.size() >= 8) {
        const std::string_view type(reinterpret_cast<const char*>(&boxes[4]), 4);
        std::uint64_t length = readWord(boxes.data());
        std::size_t head = 8;
        if (length == 1 && boxes.size() >= 16) {
            length = std::uint64_t{readWord(&boxes[8])} << 32U | readWord(&boxes[12]);
            head = 16;
        }
        if (length == 0 || length > boxes.size()) length = boxes.size();  // To the end.
        const auto size = static_cast<std::size_t>(length);
        if (size < head) return;
        visit(type, boxes.subspan(head, size - head));
        boxes = boxes.subspan(size);
    }
}

}  // namespace

unsigned paletteColors(ByteView file) {
    unsigned most = 0;
    const auto note = [&](std::string_view type, ByteView content) {
        if (type == "pclr" && content.size() >= 3) most = std::max<unsigned>(most, content[2]);
    };
    forEachBox(file, [&](std::string_view type, ByteView content) {
        note(type, content);  // The library accepts misplaced ones too.
        if (type == "jp2h") forEachBox(content, note);
    });
    return most;
}

void stateResolution(Bytes& file, Resolution dots) {
    constexpr std::string_view kStart("\0\0\0\x1Ares \0\0\0\x12resd", 16);
    Bytes box(kStart.begin(), kStart.end());
    // Pixels per metre, vertical first, as fractions (dots / 254) and decimal exponents (both 4).
    for (const int count : {dots.down, dots.across}) {
        for (const int byte : {count >> 8, count & 0xFF, 0, 254})
            box.push_back(static_cast<std::uint8_t>(byte));
    }
    box.insert(box.end(), {4, 4});
    std::ptrdiff_t start = 0, end = 0;
    forEachBox(file, [&](std::string_view type, ByteView content) {
        if (type != "jp2h") return;
        end = content.data() + content.size() - file.data();
        start = end - static_cast<std::ptrdiff_t>(content.size() + 8);
    });
    if (end == 0) return;
    const auto grown =
        static_cast<std::uint32_t>(end - start) + static_cast<std::uint32_t>(box.size());
    for (std::size_t i = 0; i < 4; ++i) {
        file[static_cast<std::size_t>(start) + i] =
            static_cast<std::uint8_t>(grown >> (24 - 8 * i));
    }
    file.insert(file.begin() + end, box.begin(), box.end());
}

}  // namespace tkv
