#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "graphics/codecs/codecs.h"

// The boxes that files of the ISO base media format (ISO/IEC 14496-12) consist of.

namespace tkv {

/// Of a box, an item or a reference: four letters. Points into the file.
using BoxType = std::string_view;

/// No ordinary file has more boxes side by side.
inline constexpr std::size_t kMostBoxes = 1024;

/// Reads big-endian numbers and texts off the front of bytes.
class BoxReader {
  public:
    explicit BoxReader(ByteView bytes) : rest_(bytes) {}

    /// 0 behind the end.
    std::uint64_t number(std::size_t bytes) {
        std::uint64_t value = 0;
        for (const std::uint8_t byte : take(bytes))
            value = value << 8U | byte;
        return value;
    }
    ByteView take(std::size_t bytes) {
        if (bytes > rest_.size()) {
            isSound_ = false;
            rest_ = {};
            return {};
        }
        const ByteView taken = rest_.first(bytes);
        rest_ = rest_.subspan(bytes);
        return taken;
    }
    BoxType type() {
        const ByteView bytes = take(4);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    /// Up to a zero byte, which is skipped; returns its length.
    std::size_t text() {
        const auto length = static_cast<std::size_t>(std::ranges::find(rest_, 0) - rest_.begin());
        rest_ = rest_.subspan(std::min(length + 1, rest_.size()));
        return length;
    }
    ByteView rest() const { return rest_; }
    /// Whether there was all that was read.
    bool isSound() const { return isSound_; }

  private:
    ByteView rest_;
    bool isSound_ = true;
};

struct IsoBox {
    BoxType type;
    ByteView content;
};

/// The boxes side by side in `bytes`, up to the first that is damaged; `end` is where they end.
std::vector<IsoBox> boxesIn(ByteView bytes, std::size_t& end);

/// The boxes that `bytes` consist of, or none.
std::vector<IsoBox> boxesIn(ByteView bytes);

}  // namespace tkv
