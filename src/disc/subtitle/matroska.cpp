#include "disc/subtitle/matroska.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <utility>

namespace tkv::disc {

namespace {

// Of a packet: more than a unit of subtitles has.
constexpr std::uint64_t kMostInElement = 1 << 20;

enum Element : std::uint64_t {
    kSegment = 0x18538067,
    kTracks = 0x1654AE6B,
    kTrack = 0xAE,
    kCodecHeader = 0x63A2,
    kCluster = 0x1F43B675,
    kTimestamp = 0xE7,
    kBlockGroup = 0xA0,
    kBlock = 0xA1,
    kDuration = 0x9B,
    kSimpleBlock = 0xA3,
};

// A number whose first byte's leading zeros tell how many bytes follow. Names keep the bit behind
// them.
std::optional<std::uint64_t> numberIn(std::istream& file, bool isName) {
    const int first = file.get();
    if (first <= 0) return {};
    const int more = std::countl_zero(static_cast<std::uint8_t>(first));
    auto value = static_cast<std::uint64_t>(isName ? first : first & (0x7F >> more));
    for (int i = 0; i < more; ++i)
        value = value << 8U | static_cast<std::uint64_t>(file.get() & 0xFF);
    return file ? std::optional(value) : std::nullopt;
}

using Named = std::pair<std::uint64_t, std::vector<std::uint8_t>>;

// The next element of those that are wanted; none at the end, and where the file is damaged.
std::optional<Named> elementIn(std::istream& file) {
    constexpr std::array<Element, 5> kFolders{kSegment, kTracks, kTrack, kCluster, kBlockGroup};
    constexpr std::array<Element, 5> kWanted{kCodecHeader, kTimestamp, kBlock, kSimpleBlock,
                                             kDuration};
    for (;;) {
        const auto name = numberIn(file, true);
        const auto size = name ? numberIn(file, false) : std::nullopt;
        if (!size) return {};
        if (std::ranges::count(kFolders, *name) != 0) continue;
        if (std::ranges::count(kWanted, *name) == 0) {
            file.ignore(static_cast<std::streamsize>(*size));
            continue;
        }
        if (*size > kMostInElement) return {};
        std::vector<std::uint8_t> bytes(*size);
        if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(*size)))
            return {};
        return Named{*name, std::move(bytes)};
    }
}

}  // namespace

void readMatroska(std::istream& file, const std::function<void(ByteSpan header)>& onHeader,
                  const std::function<void(const MatroskaPacket& packet)>& onPacket) {
    constexpr double kTicks = 1000;  // unless the file says otherwise, as ffmpeg's never do
    double cluster = 0;
    MatroskaPacket packet;  // whose duration may follow
    bool isOpen = false;
    const auto finish = [&] {
        if (isOpen) onPacket(packet);
        isOpen = false;
    };
    while (auto element = elementIn(file)) {
        const std::uint64_t name = element->first;
        const std::vector<std::uint8_t>& bytes = element->second;
        ByteReader reader(bytes);
        const auto value = [&] { return reader.number(std::min<std::size_t>(bytes.size(), 4)); };
        if (name == kCodecHeader) onHeader(bytes);
        if (name == kTimestamp) cluster = value() / kTicks;
        if (name == kDuration && isOpen) packet.duration = value() / kTicks;
        if (name != kBlock && name != kSimpleBlock) continue;
        finish();
        reader.skip(1);  // the track's number
        const auto ticks = static_cast<std::int16_t>(reader.number(2));
        reader.skip(1);
        packet = {cluster + ticks / kTicks, 0, {reader.rest().begin(), reader.rest().end()}};
        isOpen = true;
    }
    finish();
}

}  // namespace tkv::disc
