#include "disc/subtitle/pgs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

namespace tkv::disc {

namespace {

using PgsBytes = std::span<const std::uint8_t>;

// More than any film has.
constexpr int kMostSide = 4096;

// Numbers with the most significant byte first; 0 behind the end.
class Reader {
  public:
    explicit Reader(PgsBytes bytes) : bytes_(bytes) {}

    unsigned number(std::size_t count) {
        unsigned value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8U | (i < bytes_.size() ? bytes_[i] : 0U);
        skip(count);
        return value;
    }

    int small(std::size_t count) { return static_cast<int>(number(count) & 0xFFFFU); }
    void skip(std::size_t count) { bytes_ = bytes_.subspan(std::min(count, bytes_.size())); }
    PgsBytes rest() const { return bytes_; }
    bool isAtEnd() const { return bytes_.empty(); }

  private:
    PgsBytes bytes_;
};

enum Segment : std::uint8_t {
    kPalette = 0x14,
    kObject = 0x15,
    kComposition = 0x16,
    kPgsEnd = 0x80,
};

// Studio levels of BT.709, as high definition has them.
std::uint32_t colorOf(int y, int cr, int cb, unsigned alpha) {
    const double luma = (y - 16) * 255.0 / 219, red = (cr - 128) * 255.0 / 224,
                 blue = (cb - 128) * 255.0 / 224;
    const auto channel = [](double value) {
        return static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0, 255.0)));
    };
    return alpha << 24U | channel(luma + 1.5748 * red) << 16U |
           channel(luma - 0.1873 * blue - 0.4681 * red) << 8U | channel(luma + 1.8556 * blue);
}

// A picture by the numbers of its colours, which are known only when it is shown.
struct Object {
    PixelSize size;
    std::vector<std::uint8_t> runs;
};

struct Placed {
    unsigned object = 0;
    int x = 0, y = 0;
};

class Decoder {
  public:
    explicit Decoder(const std::function<void(const BitmapCue&)>& tell) : tell_(tell) {}

    void decode(PgsBytes bytes) {
        constexpr double kTicks = 90'000;
        Reader reader(bytes);
        while (reader.rest().size() >= 13) {
            if (reader.number(2) != 0x5047) break;  // "PG"
            const double time = reader.number(4) / kTicks;
            reader.skip(4);
            const unsigned kind = reader.number(1);
            const std::size_t length = reader.number(2);
            if (length > reader.rest().size()) break;
            take(kind, reader.rest().first(length), time);
            reader.skip(length);
        }
    }

  private:
    void take(unsigned kind, PgsBytes bytes, double time) {
        switch (kind) {
            case kPalette:
                takePalette(Reader(bytes));
                return;
            case kObject:
                takeObject(Reader(bytes));
                return;
            case kComposition:
                takeComposition(Reader(bytes), time);
                return;
            case kPgsEnd:
                show();
                return;
            default:
                return;
        }
    }

    void takePalette(Reader reader) {
        auto& palette = palettes_[reader.number(1)];
        reader.skip(1);
        while (reader.rest().size() >= 5) {
            const unsigned number = reader.number(1);
            const int y = reader.small(1), cr = reader.small(1), cb = reader.small(1);
            palette[number] = colorOf(y, cr, cb, reader.number(1));
        }
    }

    // One may come in several parts.
    void takeObject(Reader reader) {
        constexpr unsigned kFirst = 0x80;
        Object& object = objects_[reader.number(2)];
        reader.skip(1);
        if ((reader.number(1) & kFirst) != 0) {
            reader.skip(3);
            object.size.width = reader.small(2);
            object.size.height = reader.small(2);
            object.runs.clear();
        }
        object.runs.insert(object.runs.end(), reader.rest().begin(), reader.rest().end());
    }

    void takeComposition(Reader reader, double time) {
        constexpr unsigned kGoesOn = 0, kCropped = 0x80;
        cue_ = {time, {}, {}};
        cue_.canvas.width = reader.small(2);
        cue_.canvas.height = reader.small(2);
        reader.skip(3);
        if (reader.number(1) != kGoesOn) {
            objects_.clear();
            palettes_.clear();
        }
        reader.skip(1);
        palette_ = reader.number(1);
        placed_.clear();
        constexpr unsigned kMostObjects = 2;  // of the format; each may be large
        for (unsigned left = std::min(reader.number(1), kMostObjects);
             left > 0 && !reader.isAtEnd(); --left) {
            Placed placed;
            placed.object = reader.number(2);
            reader.skip(1);
            const unsigned flags = reader.number(1);
            placed.x = reader.small(2);
            placed.y = reader.small(2);
            if ((flags & kCropped) != 0) reader.skip(8);
            placed_.push_back(placed);
        }
    }

    void show() {
        if (cue_.canvas.width <= 0 || cue_.canvas.width > kMostSide || cue_.canvas.height <= 0 ||
            cue_.canvas.height > kMostSide)
            return;
        for (const Placed& placed : placed_) {
            const auto object = objects_.find(placed.object);
            if (object == objects_.end()) continue;
            const PixelSize size = object->second.size;
            if (size.width <= 0 || size.height <= 0 || placed.x + size.width > cue_.canvas.width ||
                placed.y + size.height > cue_.canvas.height)
                continue;
            cue_.bitmaps.push_back({placed.x, placed.y, size, pixelsOf(object->second)});
        }
        tell_(std::exchange(cue_, {}));
        placed_.clear();
    }

    std::vector<std::uint32_t> pixelsOf(const Object& object) {
        const auto& palette = palettes_[palette_];
        const auto width = static_cast<std::size_t>(object.size.width);
        const auto height = static_cast<std::size_t>(object.size.height);
        std::vector<std::uint32_t> pixels(width * height);
        Reader reader(object.runs);
        std::size_t row = 0, column = 0;
        while (!reader.isAtEnd() && row < height) {
            unsigned color = reader.number(1), length = 1;
            if (color == 0) {
                const unsigned flags = reader.number(1);
                if (flags == 0) {
                    ++row;
                    column = 0;
                    continue;
                }
                length = flags & 0x3FU;
                if ((flags & 0x40U) != 0) length = length << 8U | reader.number(1);
                if ((flags & 0x80U) != 0) color = reader.number(1);
            }
            const std::size_t end = std::min(width, column + length);
            std::fill(pixels.begin() + static_cast<std::ptrdiff_t>(row * width + column),
                      pixels.begin() + static_cast<std::ptrdiff_t>(row * width + end),
                      palette[color]);
            column = end;
        }
        return pixels;
    }

    std::map<unsigned, std::array<std::uint32_t, 256>> palettes_;
    std::map<unsigned, Object> objects_;
    unsigned palette_ = 0;
    std::vector<Placed> placed_;
    BitmapCue cue_;
    const std::function<void(const BitmapCue&)>& tell_;
};

}  // namespace

void readPgs(std::span<const std::uint8_t> bytes,
             const std::function<void(const BitmapCue& cue)>& take) {
    Decoder(take).decode(bytes);
}

}  // namespace tkv::disc
