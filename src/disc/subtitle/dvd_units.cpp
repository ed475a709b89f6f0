#include "disc/subtitle/dvd_units.h"

#include <charconv>
#include <limits>
#include <string_view>

#include "disc/subtitle/matroska.h"
#include "disc/subtitle/vobsub.h"

namespace tkv::disc {

namespace {

// What the control sequences of a unit have said so far.
struct UnitState {
    bool isShown = false, isForced = false;
    unsigned colors = 0, contrasts = 0;  // four bits for each value, the first one's last
    int left = 0, right = -1, top = 0, bottom = -1;
    std::array<unsigned, 2> fields{};

    int width() const { return right - left + 1; }
    int height() const { return bottom - top + 1; }
};

// Reads runs of pixels, whose codes have one to four groups of four bits.
class RunReader {
  public:
    explicit RunReader(ByteSpan bytes) : bytes_(bytes) {}

    void row(std::span<std::uint8_t> pixels) {
        while (!pixels.empty()) {
            unsigned code = 0;
            for (unsigned least : {4U, 0x10U, 0x40U, 0U}) {
                code = code << 4U | bits();
                if (code >= least) break;
            }
            const std::size_t told = code >> 2U;
            const std::size_t length = told == 0 ? pixels.size() : std::min(told, pixels.size());
            std::ranges::fill(pixels.first(length), static_cast<std::uint8_t>(code & 3U));
            pixels = pixels.subspan(length);
        }
        place_ += place_ % 2;  // Rows begin with a byte.
    }

  private:
    unsigned bits() {
        const std::size_t byte = place_ / 2;
        const unsigned both = byte < bytes_.size() ? bytes_[byte] : 0U;
        return (place_++ % 2 == 0 ? both >> 4U : both) & 0xFU;
    }

    ByteSpan bytes_;
    std::size_t place_ = 0;
};

using Colors = std::array<std::uint32_t, kSubpictureColors>;

class UnitDecoder {
  public:
    UnitDecoder(const std::optional<UnitPalette>& palette, double until, const BitmapReceiver& tell)
        : palette_(palette), until_(until), tell_(tell) {}

    // Lines of text, as an .idx begins with.
    void takeHeader(ByteSpan header) {
        std::string_view text(reinterpret_cast<const char*>(header.data()), header.size());
        const auto behind = [&](std::string_view word) {
            const std::size_t place = text.find(word);
            return place == std::string_view::npos ? std::string_view()
                                                   : text.substr(place + word.size());
        };
        const auto number = [](std::string_view& rest, auto value, int base) {
            rest.remove_prefix(std::min(rest.find_first_not_of(", x"), rest.size()));
            const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), value, base);
            rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
            return value;
        };
        std::string_view size = behind("size:"), colors = behind("palette:");
        canvas_.width = number(size, 0, 10);
        canvas_.height = number(size, 0, 10);
        if (colors.empty()) return;
        for (std::uint32_t& color : palette_.emplace())
            color = number(colors, 0U, 16) & 0xFFFFFFU;
    }

    void takeUnit(const MatroskaPacket& packet) {
        constexpr double kTicks = 90'000.0 / 1024;
        const double time = packet.seconds;
        const ByteSpan unit = packet.bytes;
        if (end_ && *end_ <= time) finish();
        UnitState state;
        ByteReader begin(unit);
        begin.skip(2);
        for (std::size_t place = begin.number(2); place + 4 < unit.size();) {
            ByteReader reader(unit.subspan(place));
            const double when = time + reader.number(2) / kTicks;
            const std::size_t next = reader.number(2);
            const bool wasShown = state.isShown;
            obey(reader, state);
            if (state.isShown) {
                show(when, unit, state);
            } else if (wasShown) {
                // The unit counts in ticks that have passed, the packet maybe to the millisecond.
                const double exact = time + packet.duration;
                end_ = exact > when && exact < when + 1 / kTicks ? exact : when;
            }
            if (next <= place) break;
            place = next;
        }
    }

    // Nothing is shown behind the last unit's end.
    void finish() {
        if (!end_ || *end_ >= until_) return;
        BitmapCue none;
        none.begin = *end_;
        none.canvas = canvas_;
        end_.reset();
        tell_(none);
    }

  private:
    // The commands of one control sequence.
    static void obey(ByteReader& reader, UnitState& state) {
        while (!reader.isAtEnd()) {
            const unsigned command = reader.number(1);
            switch (command) {
                case kForcedStart:
                case kStart:
                    state.isShown = true;
                    state.isForced = command == kForcedStart;
                    break;
                case kStop:
                    state.isShown = false;
                    break;
                case kSetColors:
                    state.colors = reader.number(2);
                    break;
                case kSetContrasts:
                    state.contrasts = reader.number(2);
                    break;
                case kSetArea: {
                    const unsigned columns = reader.number(3), rows = reader.number(3);
                    state.left = static_cast<int>(columns >> 12U);
                    state.right = static_cast<int>(columns & 0xFFFU);
                    state.top = static_cast<int>(rows >> 12U);
                    state.bottom = static_cast<int>(rows & 0xFFFU);
                    break;
                }
                case kSetFields:
                    state.fields = {reader.number(2), reader.number(2)};
                    break;
                case kSetParts:  // Colours of parts of it, by lines; subtitles do without.
                    reader.skip(reader.number(2) - 2);
                    break;
                default:
                    return;
            }
        }
    }

    void show(double when, ByteSpan unit, const UnitState& state) {
        if (when >= until_ || state.width() <= 0 || state.height() <= 0) return;
        end_.reset();
        BitmapCue cue;
        cue.begin = when;
        cue.canvas = canvas_;
        cue.isForced = state.isForced;
        cue.isTooMuch = !allowance_.take(when, 1.0 * state.width() * state.height());
        if (!cue.isTooMuch) cue.bitmaps.push_back(bitmapOf(unit, state));
        tell_(cue);
    }

    SubtitleBitmap bitmapOf(ByteSpan unit, const UnitState& state) const {
        const auto width = static_cast<std::size_t>(state.width());
        const auto height = static_cast<std::size_t>(state.height());
        std::vector<std::uint8_t> values(width * height);
        for (std::size_t field = 0; field < 2; ++field) {
            RunReader runs(unit.subspan(std::min<std::size_t>(state.fields[field], unit.size())));
            for (std::size_t row = field; row < height; row += 2)
                runs.row(std::span(values).subspan(row * width, width));
        }
        const Colors colors = colorsOf(state, values, width);
        SubtitleBitmap bitmap{state.left, state.top, {state.width(), state.height()}, {}};
        bitmap.pixels.reserve(values.size());
        for (const std::uint8_t value : values)
            bitmap.pixels.push_back(colors[value]);
        return bitmap;
    }

    Colors colorsOf(const UnitState& state, std::span<const std::uint8_t> values,
                    std::size_t width) const {
        const auto bitsOf = [](unsigned numbers, std::size_t value) {
            return numbers >> 4 * value & 0xFU;
        };
        Colors colors{};
        if (!palette_) colors = guessed(state.contrasts, values, width);
        for (std::size_t i = 0; i < colors.size(); ++i) {
            if (palette_) colors[i] = (*palette_)[bitsOf(state.colors, i)];
            colors[i] |= bitsOf(state.contrasts, i) * 0x11U << 24U;
        }
        return colors;
    }

    // An outline is what stands beside what is not there.
    static Colors guessed(unsigned contrasts, std::span<const std::uint8_t> values,
                          std::size_t width) {
        const auto isThere = [&](std::uint8_t value) {
            return (contrasts >> 4U * value & 0xFU) != 0;
        };
        std::array<int, kSubpictureColors> edges{}, counts{};
        for (std::size_t i = 1; i < values.size(); ++i) {
            if (!isThere(values[i])) continue;
            ++counts[values[i]];
            if (i % width != 0 && !isThere(values[i - 1])) ++edges[values[i]];
        }
        const auto outline = std::ranges::max_element(edges) - edges.begin();
        counts[static_cast<std::size_t>(outline)] = 0;
        const auto letter = std::ranges::max_element(counts) - counts.begin();
        Colors colors;
        colors.fill(0x808080);
        colors[static_cast<std::size_t>(outline)] = 0;
        colors[static_cast<std::size_t>(letter)] = 0xFFFFFF;
        return colors;
    }

    PixelSize canvas_;
    std::optional<UnitPalette> palette_;
    std::optional<double> end_;  // of what is shown, still to be told
    PixelAllowance allowance_;
    double until_;
    const BitmapReceiver& tell_;
};

}  // namespace

void readDvdUnits(std::istream& file, const std::optional<UnitPalette>& palette, double until,
                  const BitmapReceiver& take) {
    UnitDecoder decoder(palette, until, take);
    readMatroska(
        file, [&](ByteSpan header) { decoder.takeHeader(header); },
        [&](const MatroskaPacket& packet) { decoder.takeUnit(packet); });
    decoder.finish();
}

}  // namespace tkv::disc
