#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tkv::disc {

using ByteSpan = std::span<const std::uint8_t>;

/// Reads numbers with the most significant byte first; 0 behind the end.
class ByteReader {
  public:
    explicit ByteReader(ByteSpan bytes) : bytes_(bytes) {}

    unsigned number(std::size_t count) {
        unsigned value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8U | (i < bytes_.size() ? bytes_[i] : 0U);
        skip(count);
        return value;
    }

    /// One of two bytes at most.
    int small(std::size_t count) { return static_cast<int>(number(count) & 0xFFFFU); }
    void skip(std::size_t count) { bytes_ = bytes_.subspan(std::min(count, bytes_.size())); }
    ByteSpan rest() const { return bytes_; }
    bool isAtEnd() const { return bytes_.empty(); }

  private:
    ByteSpan bytes_;
};

}  // namespace tkv::disc
