#include "disc/subtitle/vobsub.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <span>

namespace tkv::disc {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kPackBytes = 2048;
constexpr std::size_t kPaletteColors = 16;

void put(Bytes& bytes, std::size_t value, unsigned count) {
    for (unsigned left = count; left-- > 0;)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * left & 0xFF));
}

// Writes runs of pixels as one to four groups of four bits.
class RunWriter {
  public:
    explicit RunWriter(Bytes& bytes) : bytes_(bytes) {}

    void row(std::span<const std::uint8_t> pixels) {
        constexpr std::size_t kLongest = 255;
        while (!pixels.empty()) {
            const auto other = std::ranges::find_if(
                pixels, [&](std::uint8_t pixel) { return pixel != pixels.front(); });
            auto length = static_cast<std::size_t>(other - pixels.begin());
            if (length == pixels.size() && length > 63) {
                code(pixels.front(), 4);  // to the end of the row
            } else {
                length = std::min(length, kLongest);
                const unsigned groups = length < 4 ? 1 : length < 16 ? 2 : length < 64 ? 3 : 4;
                code(length << 2U | pixels.front(), groups);
            }
            pixels = pixels.subspan(length);
        }
        isHalf_ = false;  // Rows begin with a byte.
    }

  private:
    void code(std::size_t value, unsigned groups) {
        while (groups-- > 0) {
            const auto bits = static_cast<std::uint8_t>(value >> 4 * groups & 0xF);
            if (isHalf_) {
                bytes_.back() |= bits;
            } else {
                bytes_.push_back(static_cast<std::uint8_t>(bits << 4U));
            }
            isHalf_ = !isHalf_;
        }
    }

    Bytes& bytes_;
    bool isHalf_ = false;
};

// Where the colours' numbers stand in a unit: behind where its control sequences begin.
constexpr std::size_t kColorsPlace = 6;

// Ticks of 1024/90000 s: as many as have passed, so that what is to go is gone in time.
std::size_t ticksOf(double seconds) {
    return std::min<std::size_t>(static_cast<std::size_t>(seconds * 90'000 / 1024), 0xFFFF);
}

// A pack with the next part of a unit. `time`: of 90 kHz, with the first part.
void putPack(Bytes& packs, std::span<const std::uint8_t>& unit, unsigned stream, std::int64_t time,
             bool isFirst) {
    const std::size_t begin = packs.size();
    packs.insert(packs.end(), {0, 0, 1, 0xBA});
    // The clock, which nobody reads here, and a rate of 10.08 Mb/s.
    packs.insert(packs.end(), {0x44, 0, 4, 0, 4, 1, 0x01, 0x89, 0xC3, 0xF8});
    const std::size_t header = isFirst ? 5 : 0;
    const std::size_t room = kPackBytes - (packs.size() - begin) - 9 - header - 1;
    const std::size_t part = std::min(unit.size(), room);
    // Some bytes that are left are stuffed into the header, more become a packet.
    const std::size_t left = room - part;
    const std::size_t stuffed = left < 6 ? left : 0;
    packs.insert(packs.end(), {0, 0, 1, 0xBD});
    put(packs, 3 + header + stuffed + 1 + part, 2);
    packs.push_back(0x81);
    packs.push_back(isFirst ? 0x80 : 0);
    packs.push_back(static_cast<std::uint8_t>(header + stuffed));
    if (isFirst) {
        packs.push_back(static_cast<std::uint8_t>(0x21 | (time >> 29 & 0x0E)));
        put(packs, static_cast<std::size_t>(time >> 14 & 0xFFFE) | 1, 2);
        put(packs, static_cast<std::size_t>(time << 1 & 0xFFFE) | 1, 2);
    }
    packs.insert(packs.end(), stuffed, 0xFF);
    packs.push_back(static_cast<std::uint8_t>(0x20 + stream));
    packs.insert(packs.end(), unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(part));
    unit = unit.subspan(part);
    if (stuffed == left) return;
    packs.insert(packs.end(), {0, 0, 1, 0xBE});
    put(packs, left - 6, 2);
    packs.insert(packs.end(), left - 6, 0xFF);
}

// The colours that stand for all others: the most frequent ones.
class Palette {
  public:
    explicit Palette(const std::vector<SubpictureTrack>& tracks) {
        std::map<std::uint32_t, int> counts;
        for (const SubpictureTrack& track : tracks) {
            for (const SubpictureUnit& unit : track.units) {
                for (std::size_t i = 1; i < unit.colors.size(); ++i)
                    ++counts[unit.colors[i]];
            }
        }
        for (const auto& [color, count] : counts)
            colors_.push_back(color);
        std::ranges::stable_sort(colors_, std::ranges::greater(),
                                 [&](std::uint32_t color) { return counts[color]; });
        colors_.resize(kPaletteColors);
    }

    std::uint8_t nearest(std::uint32_t color) const {
        const auto difference = [color](std::uint32_t other) {
            int sum = 0;
            for (const unsigned shift : {0U, 8U, 16U}) {
                const int channel = static_cast<int>(color >> shift & 0xFFU) -
                                    static_cast<int>(other >> shift & 0xFFU);
                sum += channel * channel;
            }
            return sum;
        };
        return static_cast<std::uint8_t>(std::ranges::min_element(colors_, {}, difference) -
                                         colors_.begin());
    }

    std::string text(std::string_view separator) const {
        std::string text;
        for (const std::uint32_t color : colors_)
            text += fmt::format("{}{:06x}", text.empty() ? "" : separator, color);
        return text;
    }

  private:
    std::vector<std::uint32_t> colors_;
};

// To the millisecond before, since a player shows a unit with the first frame behind its time.
std::string timeOf(double seconds) {
    const auto ms = static_cast<int>(std::floor(seconds * 1000 + 0.001));
    return fmt::format("{:02}:{:02}:{:02}:{:03}", ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60,
                       ms % 1000);
}

}  // namespace

std::optional<SubpictureUnit> unitOf(const SubtitlePicture& picture, double begin, double end,
                                     bool isForced) {
    constexpr std::size_t kHeader = 4;
    Bytes bytes(kHeader);
    const auto width = static_cast<std::size_t>(picture.width);
    const auto height = static_cast<std::size_t>(picture.height);
    std::array<std::size_t, 2> fields{};
    for (std::size_t field = 0; field < 2; ++field) {
        fields[field] = bytes.size();
        RunWriter writer(bytes);
        for (std::size_t row = field; row < height; row += 2)
            writer.row(std::span(picture.pixels).subspan(row * width, width));
    }
    if (bytes.size() % 2 != 0) bytes.push_back(0);

    const std::size_t control = bytes.size();
    constexpr std::size_t kFirstBytes = 24;
    put(bytes, 0, 2);
    put(bytes, control + kFirstBytes, 2);
    bytes.push_back(isForced ? kForcedStart : kStart);
    bytes.insert(bytes.end(), {kSetColors, 0, 0, kSetContrasts, 0xFF, 0xF0, kSetArea});
    const auto area = [&](int from, int length) {
        put(bytes,
            static_cast<std::size_t>(from) << 12U | static_cast<std::size_t>(from + length - 1), 3);
    };
    area(picture.x, picture.width);
    area(picture.y, picture.height);
    bytes.push_back(kSetFields);
    put(bytes, fields[0], 2);
    put(bytes, fields[1], 2);
    bytes.push_back(kNoMore);
    put(bytes, ticksOf(end - begin), 2);
    put(bytes, control + kFirstBytes, 2);
    bytes.insert(bytes.end(), {kStop, kNoMore});
    if (bytes.size() > kMostUnitBytes) return {};

    const auto set = [&](std::size_t place, std::size_t value) {
        bytes[place] = static_cast<std::uint8_t>(value >> 8U);
        bytes[place + 1] = static_cast<std::uint8_t>(value);
    };
    set(0, bytes.size());
    set(2, control);
    return SubpictureUnit{begin, end, std::move(bytes), picture.colors};
}

VobSub vobSubOf(std::vector<SubpictureTrack> tracks) {
    const Palette palette(tracks);
    VobSub made;
    made.palette = palette.text("\n") + "\n";
    made.index = fmt::format("# VobSub index file, v7 (do not modify this line!)\npalette: {}\n",
                             palette.text(", "));
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const auto stream = static_cast<unsigned>(i);
        made.index += fmt::format("\nid: {}, index: {}\n", tracks[i].language, i);
        for (SubpictureUnit& unit : tracks[i].units) {
            const std::size_t place =
                (std::size_t{unit.bytes[2]} << 8U | unit.bytes[3]) + kColorsPlace;
            const auto number = [&](std::size_t value) {
                return palette.nearest(unit.colors[value]);
            };
            unit.bytes[place] = static_cast<std::uint8_t>(number(3) << 4U | number(2));
            unit.bytes[place + 1] = static_cast<std::uint8_t>(number(1) << 4U);
            made.index += fmt::format("timestamp: {}, filepos: {:09x}\n", timeOf(unit.begin),
                                      made.packs.size());
            std::span<const std::uint8_t> bytes = unit.bytes;
            const auto time = std::llround(unit.begin * 90'000);
            for (bool isFirst = true; !bytes.empty(); isFirst = false)
                putPack(made.packs, bytes, stream, time, isFirst);
        }
    }
    return made;
}

}  // namespace tkv::disc
