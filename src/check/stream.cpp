// SPDX-License-Identifier: GPL-2.0-or-later
#include "check/stream.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

namespace tkv::check {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPack = 2048;
constexpr std::size_t kRead = 1024 * kPack;

// The clock of a stream runs with 27 MHz, stamps count 300 of its ticks.
constexpr std::int64_t kTick = 300;
constexpr std::int64_t kSecond = 27'000'000;

// A player reads 10.08 Mb/s. Who multiplexes may round each pack's time down to a tick.
constexpr std::int64_t kMostRate = 25'200;  // in units of 50 bytes a second
constexpr std::int64_t kShortestStep =
    static_cast<std::int64_t>(kPack) * kSecond / (kMostRate * 50) - kTick;

// What a player keeps of a picture's stream, and the pack in which the next picture begins.
constexpr std::int64_t kVideoBuffer = 232 << 10;
constexpr std::int64_t kMostKept = kVideoBuffer + static_cast<std::int64_t>(kPack);

// Between the first picture and the first sound, at most.
constexpr std::int64_t kMostApart = kSecond / 20;

// After a picture or sound is due, at most. The times of packs are those of the slowest player: all
// read ahead, so that what comes less than a picture later does not show.
constexpr std::int64_t kMostLate = kSecond / 25;

// A picture lasts no longer than three fields of PAL do.
constexpr std::int64_t kLongestPicture = kSecond * 3 / 50;

// Where a navigation pack has its second table, and where that says which VOB it is of and in which
// sector it stands.
constexpr std::size_t kSecondTable = 0x400;
constexpr std::size_t kSector = kSecondTable + 11;
constexpr std::size_t kVob = kSecondTable + 31;

using Bytes = std::span<const std::uint8_t, kPack>;

std::int64_t numberAt(Bytes bytes, std::size_t at, std::size_t length) {
    std::int64_t number = 0;
    for (std::size_t i = 0; i < length; ++i)
        number = number << 8U | bytes[at + i];
    return number;
}

// 33 bits in groups of 3, 15 and 15, each of which a 1 follows.
std::int64_t stampAt(Bytes bytes, std::size_t at) {
    const auto bits = static_cast<std::uint64_t>(numberAt(bytes, at, 5));
    return static_cast<std::int64_t>((bits >> 3U & 0x1C0000000U) | (bits >> 2U & 0x3FFF8000U) |
                                     (bits >> 1U & 0x7FFFU)) *
           kTick;
}

struct Pack {
    std::int64_t time = 0;  // when it arrives
    int rate = 0;
    enum class Kind { navigation, video, sound, other } kind = Kind::other;
    int stream = 0;         // of sound
    std::int64_t size = 0;  // without headers
    std::optional<std::int64_t> shown, decoded;
};

// None for what is no pack.
std::optional<Pack> packOf(Bytes bytes) {
    if (numberAt(bytes, 0, 4) != 0x1BA) return {};
    Pack pack;
    // As a stamp, but with two bits before the first group, and nine bits of ticks behind.
    const auto bits = static_cast<std::uint64_t>(numberAt(bytes, 4, 6));
    pack.time = static_cast<std::int64_t>((bits >> 13U & 0x1C0000000U) |
                                          (bits >> 12U & 0x3FFF8000U) | (bits >> 11U & 0x7FFFU)) *
                    kTick +
                static_cast<std::int64_t>(bits >> 1U & 0x1FFU);
    pack.rate = static_cast<int>(numberAt(bytes, 10, 3) >> 2U);
    std::size_t packet = 14 + (bytes[13] & 7U);
    if (numberAt(bytes, packet, 4) == 0x1BB) {
        if (numberAt(bytes, kSecondTable, 4) == 0x1BF) pack.kind = Pack::Kind::navigation;
        packet += 6 + static_cast<std::size_t>(numberAt(bytes, packet + 4, 2));
        if (packet + 6 + 3 + 256 > kPack) return pack;
    }
    const auto code = static_cast<int>(numberAt(bytes, packet, 4));
    if (code != 0x1E0 && code != 0x1BD && (code & 0x1F8) != 0x1C0) return pack;
    const std::size_t flags = bytes[packet + 7];
    const std::size_t data = packet + 9 + bytes[packet + 8];
    if (code == 0x1E0) {
        pack.kind = Pack::Kind::video;
    } else {
        pack.stream = code == 0x1BD ? bytes[data] : code;
        if (pack.stream >= 0x80) pack.kind = Pack::Kind::sound;  // Below that are subpictures.
    }
    pack.size = numberAt(bytes, packet + 4, 2) + static_cast<std::int64_t>(packet + 6) -
                static_cast<std::int64_t>(data);
    if ((flags & 0x80U) != 0) pack.shown = pack.decoded = stampAt(bytes, packet + 9);
    if ((flags & 0x40U) != 0) pack.decoded = stampAt(bytes, packet + 14);
    return pack;
}

std::int64_t picturesIn(std::string_view data) {
    constexpr std::string_view kPicture("\0\0\1\0", 4);
    std::int64_t pictures = 0;
    for (std::size_t at = 0; (at = data.find(kPicture, at)) != std::string_view::npos; ++at)
        ++pictures;
    return pictures;
}

std::string milliseconds(std::int64_t time) {
    return fmt::format("{:.0f} ms", static_cast<double>(time) * 1000 / kSecond);
}

// What a player knows of one VOB while it comes in.
class Timing {
  public:
    void take(const Pack& pack, Bytes bytes) {
        if (!begin_) begin_ = pack.time;
        const bool isTooFast =
            pack.rate > kMostRate || (last_ && pack.time - *last_ < kShortestStep);
        last_ = pack.time;
        if (isTooFast) fail("it comes faster than a player reads");
        if (pack.kind == Pack::Kind::video) takeVideo(pack, bytes);
        if (pack.kind == Pack::Kind::sound && pack.shown) {
            noteLate("the sound", pack.time - *pack.shown);
            firstSounds_.try_emplace(pack.stream, *pack.shown);
        }
    }

    // At the VOB's end: what comes too late or too early.
    std::string finish() const {
        for (const auto& [stream, shown] : firstSounds_) {
            if (!firstPicture_ || std::abs(shown - *firstPicture_) <= kMostApart) continue;
            throw std::runtime_error(fmt::format("the sound begins {} {} the picture",
                                                 milliseconds(std::abs(shown - *firstPicture_)),
                                                 shown < *firstPicture_ ? "before" : "after"));
        }
        if (late_ <= kMostLate) return early_;
        return fmt::format("{:.1f} s after its begin, {} comes {} too late", lateAt_, lateWhat_,
                           milliseconds(late_));
    }

  private:
    // Pictures leave the buffer when they are decoded. Each begins in a pack that says when that
    // is; what follows up to the next such pack belongs to it.
    void takeVideo(const Pack& pack, Bytes bytes) {
        if (pack.decoded) {
            if (picture_) pictures_.push_back({*picture_, received_});
            picture_ = pack.decoded;
            if (!firstPicture_) firstPicture_ = pack.shown;
            std::ranges::copy(bytes, pictureBegin_.begin());
        }
        received_ += pack.size;
        if (picture_ && pack.time > *picture_) noteLate("a picture", pack.time - lastDecoded());
        while (!pictures_.empty() && pictures_.front().decoded <= pack.time) {
            decoded_ = pictures_.front().end;
            pictures_.pop_front();
        }
        if (received_ - decoded_ > kMostKept && early_.empty())
            early_ = fmt::format("{:.1f} s after its begin, pictures come too early to be kept",
                                 seconds());
    }

    double seconds() const { return static_cast<double>(*last_ - *begin_) / kSecond; }

    [[noreturn]] void fail(std::string_view what) const {
        throw std::runtime_error(fmt::format("{:.1f} s after its begin, {}", seconds(), what));
    }

    void noteLate(std::string_view what, std::int64_t time) {
        if (time <= late_) return;
        late_ = time;
        lateWhat_ = what;
        lateAt_ = seconds();
    }

    // Where several small pictures begin in one pack, only the first one has a stamp.
    std::int64_t lastDecoded() const {
        const auto* const data = reinterpret_cast<const char*>(pictureBegin_.data());
        return *picture_ +
               std::max<std::int64_t>(picturesIn({data, kPack}) - 1, 0) * kLongestPicture;
    }

    struct Picture {
        std::int64_t decoded, end;  // when, and the bytes that have been received until its end
    };

    std::optional<std::int64_t> begin_, last_, firstPicture_, picture_;
    std::array<std::uint8_t, kPack> pictureBegin_{};
    std::deque<Picture> pictures_;
    std::int64_t received_ = 0, decoded_ = 0;
    std::map<int, std::int64_t> firstSounds_;
    std::int64_t late_ = 0;  // the worst
    std::string_view lateWhat_;
    double lateAt_ = 0;
    std::string early_;
};

class Stream {
  public:
    explicit Stream(bool isTimed) : isTimed_(isTimed) {}

    void take(Bytes bytes) {
        const std::optional<Pack> pack = packOf(bytes);
        if (!pack) fail("is damaged");
        if (pack->kind == Pack::Kind::navigation) {
            if (numberAt(bytes, kSector, 4) != sector_)
                fail("stands in another place than it says");
            const auto vob = numberAt(bytes, kVob, 2);
            if (vob != vob_) finish();
            vob_ = vob;
        }
        ++sector_;
        if (isTimed_) timing_.take(*pack, bytes);
    }

    void finish() {
        const std::string stutter = timing_.finish();
        if (stutter_.empty()) stutter_ = stutter;
        timing_ = {};
    }

    // The first place at which it may.
    const std::string& stutter() const { return stutter_; }

  private:
    [[noreturn]] void fail(std::string_view what) const {
        throw std::runtime_error(fmt::format("sector {} {}", sector_, what));
    }

    bool isTimed_;
    std::int64_t sector_ = 0, vob_ = 0;
    Timing timing_;
    std::string stutter_;
};

void takeFile(Stream& stream, const std::string& path, std::vector<std::uint8_t>& buffer) {
    std::ifstream file(path, std::ios::binary);
    do {
        file.read(reinterpret_cast<char*>(buffer.data()),
                  static_cast<std::streamsize>(buffer.size()));
        const auto length = static_cast<std::size_t>(file.gcount());
        if (file.bad() || length % kPack != 0) throw std::runtime_error("ends within a pack");
        for (std::size_t at = 0; at < length; at += kPack)
            stream.take(std::span(buffer).subspan(at).first<kPack>());
    } while (file);
    if (!file.eof()) throw std::runtime_error("cannot be read");
}

}  // namespace

std::string checkStream(const std::vector<std::string>& files, bool isTimed) {
    Stream stream(isTimed);
    std::vector<std::uint8_t> buffer(kRead);
    std::string name;
    try {
        for (const std::string& path : files) {
            name = fs::path(path).filename();
            takeFile(stream, path, buffer);
        }
        stream.finish();
        return stream.stutter().empty() ? "" : fmt::format("{}: {}", name, stream.stutter());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(fmt::format("{}: {}", name, error.what()));
    }
}

}  // namespace tkv::check
