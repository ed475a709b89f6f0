#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "graphics/codecs/codecs.h"

// What the targets share. Each target is a file with the one function below, which libFuzzer calls
// with inputs of its own invention, and the replay with those in files.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tkv::fuzz {

/// Aborts with a line that says what did not hold: the input is a crash then.
void require(bool holds, std::string_view what);

/// Requires that what is done while it lives takes no longer: processor time of all threads, which
/// other load does not change.
class TimeLimit {
  public:
    explicit TimeLimit(double seconds) : seconds_(seconds) {}
    ~TimeLimit();
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

  private:
    std::clock_t began_ = std::clock();
    double seconds_;
};

/// The file that an input stands for: itself, or what the target's maker makes of it.
Bytes fileFrom(ByteView input);

/// A folder of this process alone, made by the first call, and removed when the process ends. From
/// then on it is also the home folder, so that even the Trash is in it, and the lines of the log go
/// nowhere.
const std::string& scratchFolder();

/// Writes a file in that folder, and returns its path.
std::string scratchFile(std::string_view name, const std::uint8_t* data, std::size_t size);

/// Requires a valid bitmap: sides and nominal size above 0, premultiplied (no colour above its
/// alpha). Reads every pixel.
void requireSound(const Bitmap& bitmap);

/// Consumes values from the front of an input; at its end they are all 0 or empty.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), end_(data + size) {}

    bool isAtEnd() const { return data_ == end_; }
    std::uint8_t byte() { return isAtEnd() ? std::uint8_t{0} : *data_++; }
    bool flag() { return (byte() & 1U) != 0; }
    /// One of 0 to count - 1; `count`: 1 to 256.
    std::size_t below(std::size_t count) { return byte() % count; }
    /// One of 65,536 values from `least` to `most`.
    double between(double least, double most);
    /// The bytes up to the next NUL, which is consumed too, or to the end.
    std::string word();
    std::string rest();

  private:
    const std::uint8_t* data_;
    const std::uint8_t* end_;
};

}  // namespace tkv::fuzz
