#include "disc/subtitle/pgs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "disc/subtitle/bytes.h"

namespace tkv::disc {

namespace {

// More than any film has.
constexpr int kMostSide = 4096;

// Bytes of all pictures that a player holds at once, four times as many as discs may have.
constexpr std::size_t kMostHeld = 16 << 20;

enum Segment : std::uint8_t {
    kPalette = 0x14,
    kObject = 0x15,
    kComposition = 0x16,
    kEnd = 0x80,
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

class PgsDecoder {
  public:
    PgsDecoder(double until, const BitmapReceiver& tell) : until_(until), tell_(tell) {}

    void decode(std::istream& file) {
        constexpr double kTicks = 90'000;
        std::vector<std::uint8_t> bytes;
        const auto read = [&](std::size_t count) {
            bytes.resize(count);
            file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
            return static_cast<std::size_t>(file.gcount()) == count;
        };
        while (read(13)) {
            ByteReader reader(bytes);
            if (reader.number(2) != 0x5047) break;  // "PG"
            const double time = reader.number(4) / kTicks;
            reader.skip(4);
            const unsigned kind = reader.number(1);
            if (!read(reader.number(2))) break;
            take(kind, bytes, time);
        }
    }

  private:
    void take(unsigned kind, ByteSpan bytes, double time) {
        switch (kind) {
            case kPalette:
                takePalette(ByteReader(bytes));
                return;
            case kObject:
                takeObject(ByteReader(bytes));
                return;
            case kComposition:
                takeComposition(ByteReader(bytes), time);
                return;
            case kEnd:
                show();
                return;
            default:
                return;
        }
    }

    void takePalette(ByteReader reader) {
        auto& palette = palettes_[reader.number(1)];
        reader.skip(1);
        while (reader.rest().size() >= 5) {
            const unsigned number = reader.number(1);
            const int y = reader.small(1), cr = reader.small(1), cb = reader.small(1);
            palette[number] = colorOf(y, cr, cb, reader.number(1));
        }
    }

    // One may come in several parts.
    void takeObject(ByteReader reader) {
        constexpr unsigned kFirst = 0x80;
        Object& object = objects_[reader.number(2)];
        reader.skip(1);
        if ((reader.number(1) & kFirst) != 0) {
            reader.skip(3);
            object.size.width = reader.small(2);
            object.size.height = reader.small(2);
            held_ -= object.runs.size();
            object.runs.clear();
        }
        if (held_ + reader.rest().size() > kMostHeld) return;
        held_ += reader.rest().size();
        object.runs.insert(object.runs.end(), reader.rest().begin(), reader.rest().end());
    }

    void takeComposition(ByteReader reader, double time) {
        constexpr unsigned kGoesOn = 0, kCropped = 0x80, kForced = 0x40;
        cue_ = {};
        cue_.begin = time;
        cue_.canvas.width = reader.small(2);
        cue_.canvas.height = reader.small(2);
        reader.skip(3);
        if (reader.number(1) != kGoesOn) {
            objects_.clear();
            held_ = 0;
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
            cue_.isForced = cue_.isForced || (flags & kForced) != 0;
            placed_.push_back(placed);
        }
    }

    void show() {
        if (cue_.canvas.width <= 0 || cue_.canvas.width > kMostSide || cue_.canvas.height <= 0 ||
            cue_.canvas.height > kMostSide || cue_.begin >= until_)
            return;
        for (const Placed& placed : placed_) {
            const auto object = objects_.find(placed.object);
            if (object == objects_.end()) continue;
            const PixelSize size = object->second.size;
            if (size.width <= 0 || size.height <= 0 || placed.x + size.width > cue_.canvas.width ||
                placed.y + size.height > cue_.canvas.height)
                continue;
            if (!allowance_.take(cue_.begin, 1.0 * size.width * size.height)) {
                cue_.isTooMuch = true;
                continue;
            }
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
        ByteReader reader(object.runs);
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
    std::size_t held_ = 0;  // bytes of all objects
    unsigned palette_ = 0;
    std::vector<Placed> placed_;
    BitmapCue cue_;
    PixelAllowance allowance_;
    double until_;
    const BitmapReceiver& tell_;
};

}  // namespace

void readPgs(std::istream& file, double until, const BitmapReceiver& take) {
    PgsDecoder(until, take).decode(file);
}

}  // namespace tkv::disc
