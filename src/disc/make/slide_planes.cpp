#include "disc/make/slide_planes.h"

#include <algorithm>
#include <cmath>

#include "graphics/pixels.h"

namespace tkv::disc {

namespace {

constexpr int kLevel = 64;  // parts of a level
constexpr int kShift = 14;  // of weights, whose sum is 1 << kShift
constexpr int kOne = 1 << kShift;
constexpr int kHalf = kOne / 2;
constexpr int kVector = 8;  // taps that are summed at once
constexpr std::array<int, 3> kBlack{16 * kLevel, 128 * kLevel, 128 * kLevel};

constexpr std::size_t asIndex(int value) {
    return static_cast<std::size_t>(value);
}

// Of red, green and blue in 0 to 255, what a plane gets beside its black.
using Mixture = std::array<double, 3>;
constexpr double kLight = 219.0 / 255 * kLevel, kColor = 224.0 / 255 * kLevel;
constexpr std::array<Mixture, 3> kMixtures{
    Mixture{0.299 * kLight, 0.587 * kLight, 0.114 * kLight},
    Mixture{-0.299 / 1.772 * kColor, -0.587 / 1.772 * kColor, 0.5 * kColor},
    Mixture{0.5 * kColor, -0.587 / 1.402 * kColor, -0.114 / 1.402 * kColor}};

double mixtureOf(std::uint32_t pixel, const Mixture& mixture) {
    return redOf(pixel) * mixture[0] + greenOf(pixel) * mixture[1] + blueOf(pixel) * mixture[2];
}

// Sets each level of a plane to what `valueOf` makes of the pixel; of four where the plane has half
// the resolution, to their mean.
template <typename ValueOf>
void fillPlane(Plane& plane, const Bitmap& picture, const ValueOf& valueOf) {
    const int step = picture.width() / plane.size.width;
    for (int y = 0; y < plane.size.height; ++y) {
        std::int16_t* const to = plane.row(y);
        for (int x = 0; x < plane.size.width; ++x) {
            double sum = 0;
            for (int below = 0; below < step; ++below) {
                for (int beside = 0; beside < step; ++beside)
                    sum +=
                        valueOf(picture.row(step * y + below)[step * x + beside], step * y + below);
            }
            to[x] = static_cast<std::int16_t>(std::lround(sum / (step * step)));
        }
    }
}

// Of a field's rows, how wide the kernel is: what is finer than they are would flicker, but with
// all of it gone pictures would be soft.
constexpr double kFieldPart = 0.75;

// A cubic that interpolates, two pixels to each side.
double kernelAt(double distance) {
    const double x = std::abs(distance);
    if (x < 1) return (1.5 * x - 2.5) * x * x + 1;
    return x < 2 ? ((2.5 - 0.5 * x) * x - 4) * x + 2 : 0;
}

// Along one axis: of each pixel made the first one read, and the weights of all.
struct Taps {
    int count = 0;
    std::vector<int> firsts;
    std::vector<std::int16_t> weights;

    const std::int16_t* of(int i) const { return weights.data() + asIndex(i) * asIndex(count); }
};

// How one side is scaled.
struct Scaling {
    double from;   // where the first pixel made begins
    double step;   // pixels read for one made
    double shift;  // of a pixel made, by which it lies before its middle
    double part;   // of a step, to which the kernel is as wide
};

// The kernel has as many taps as it is wide, or a few more: a multiple of `atOnce`.
Taps tapsOf(const Scaling& scaling, int pixels, int made, int atOnce) {
    const auto& [from, step, shift, wide] = scaling;
    const double scale = std::max(1.0, step * wide);
    const int needed = static_cast<int>(std::ceil(4 * scale));
    Taps taps;
    taps.count = (needed + atOnce - 1) / atOnce * atOnce;
    taps.firsts.reserve(asIndex(made));
    taps.weights.resize(asIndex(made) * asIndex(taps.count));
    std::vector<double> parts(asIndex(taps.count));
    for (int i = 0; i < made; ++i) {
        const double center = from + (i + 0.5 - shift) * step - 0.5;
        const int begin = static_cast<int>(std::floor(center - taps.count / 2.0)) + 1;
        // What lies beyond an edge is its pixel's, and all reads stay within.
        const int first = std::clamp(begin, 0, pixels - taps.count);
        double sum = 0;
        for (int tap = 0; tap < taps.count; ++tap)
            sum += parts[asIndex(tap)] = kernelAt((begin + tap - center) / scale);
        std::int16_t* const weights = &taps.weights[asIndex(i) * asIndex(taps.count)];
        // Their running sum is rounded, so that they come to one.
        double part = 0;
        int before = 0;
        const double factor = kOne / sum;
        constexpr double kLifted = kOne + 0.5;  // rounds by a cut, above zero
        for (int tap = 0; tap < taps.count; ++tap) {
            part += parts[asIndex(tap)];
            const int now = static_cast<int>(part * factor + kLifted) - kOne;
            const int at = std::clamp(begin + tap, 0, pixels - 1) - first;
            weights[at] = static_cast<std::int16_t>(weights[at] + now - before);
            before = now;
        }
        taps.firsts.push_back(first);
    }
    return taps;
}

// Sums rows, `kTaps` of them, which a compiler then does with vectors.
template <int kTaps>
void mixRows(const Plane& from, int first, const std::int16_t* weights, int begin, int end,
             std::int16_t* mixed) {
    const std::int16_t* const rows = from.row(first);
    const int stride = from.size.width;
    for (int x = begin; x < end; ++x) {
        int sum = kHalf;
        for (int tap = 0; tap < kTaps; ++tap)
            sum += rows[x + tap * stride] * weights[tap];
        mixed[x] = static_cast<std::int16_t>(sum >> kShift);
    }
}

// For the numbers of rows that there are: from those of a picture that is enlarged to those of a
// field that is shrunk as far as stages are.
constexpr int kFewestRows = 4;
constexpr std::array kMixRows{mixRows<4>, mixRows<5>, mixRows<6>, mixRows<7>,
                              mixRows<8>, mixRows<9>, mixRows<10>};

// Sums pixels beside each other, `kTaps` of them; 0: any number.
template <int kTaps>
void mixColumns(const std::int16_t* mixed, const Taps& columns, std::int16_t* made) {
    const int taps = kTaps > 0 ? kTaps : columns.count;
    const std::int16_t* weights = columns.weights.data();
    for (const int first : columns.firsts) {
        const std::int16_t* const from = mixed + first;
        int sum = 0;
        // As a loop it becomes a vector's product.
#pragma GCC unroll 1
        for (int tap = 0; tap < taps; ++tap)
            sum += from[tap] * weights[tap];
        *made++ = static_cast<std::int16_t>((sum + kHalf) >> kShift);
        weights += taps;
    }
}

// How a plane is sampled.
struct Sampling {
    Taps columns, rows;
};

// `right`: of a colour made, by which it lies left of the middle of its pixels.
Sampling samplingOf(const PixelRect& part, double right, RowSet rows, PixelSize from,
                    PixelSize to) {
    // A field's rows are half as far above or below the middle of two as they are apart.
    const bool isField = rows.step == 2;
    const double above = isField ? 0.25 - 0.5 * rows.first : 0;
    return {tapsOf({part.left, part.width / to.width, right, 1}, from.width, to.width, kVector),
            tapsOf({part.top, part.height / to.height, above, isField ? kFieldPart : 1},
                   from.height, to.height, 1)};
}

void resample(const Plane& from, const Sampling& sampling, Plane& to) {
    const auto& [columns, rows] = sampling;
    const auto mixThese = kMixRows.at(asIndex(rows.count - kFewestRows));
    const auto mixAcross = columns.count == kVector ? mixColumns<kVector> : mixColumns<0>;
    const int begin = columns.firsts.front();
    const int end = std::min(columns.firsts.back() + columns.count, from.size.width);
    std::vector<std::int16_t> mixed(asIndex(from.size.width + columns.count));
    for (int y = 0; y < to.size.height; ++y) {
        mixThese(from, rows.firsts[asIndex(y)], rows.of(y), begin, end, mixed.data());
        mixAcross(mixed.data(), columns, to.row(y));
    }
}

// Blurs the rows and turns the plane on its side.
Plane blurredAcross(const Plane& plane, const std::vector<double>& weights) {
    const int reach = static_cast<int>(weights.size()) - 1;
    Plane turned({plane.size.height, plane.size.width});
    for (int y = 0; y < plane.size.height; ++y) {
        const std::int16_t* const row = plane.row(y);
        for (int x = 0; x < plane.size.width; ++x) {
            double sum = 0;
            for (int at = -reach; at <= reach; ++at)
                sum += row[std::clamp(x + at, 0, plane.size.width - 1)] *
                       weights[asIndex(std::abs(at))];
            turned.row(x)[y] = static_cast<std::int16_t>(std::lround(sum));
        }
    }
    return turned;
}

void blur(Plane& plane, double sigma) {
    std::vector<double> weights;
    double sum = 0;
    for (int at = 0; at <= 3 * sigma; ++at) {
        weights.push_back(std::exp(-0.5 * at * at / (sigma * sigma)));
        sum += weights.back() * (at == 0 ? 1 : 2);
    }
    for (double& weight : weights)
        weight /= sum;
    plane = blurredAcross(blurredAcross(plane, weights), weights);
}

// What is added before parts of a level are cut off: other parts beside and below each other, as
// evenly as they can be, so that no eye joins them to an edge.
constexpr int kPattern = 64, kWidest = 2048;

std::vector<std::vector<std::int16_t>> patternOf() {
    std::vector<std::vector<std::int16_t>> pattern(kPattern, std::vector<std::int16_t>(kWidest));
    for (int y = 0; y < kPattern; ++y) {
        for (int x = 0; x < kWidest; ++x) {
            // Steps of the two roots of a cubic, which never come near the same place twice.
            const double place = 0.7548776662 * x + 0.5698402910 * y;
            pattern[asIndex(y)][asIndex(x)] =
                static_cast<std::int16_t>((place - std::floor(place)) * kLevel);
        }
    }
    return pattern;
}

std::uint8_t cutLevel(int level) {
    return static_cast<std::uint8_t>(std::clamp(level >> 6, 1, 254));
}

}  // namespace

Planes emptyPlanes(PixelSize size) {
    const PixelSize half{size.width / 2, size.height / 2};
    return {Plane(size), Plane(half), Plane(half)};
}

Planes planesOf(const Bitmap& picture) {
    Planes planes = emptyPlanes(picture.size());
    for (std::size_t i = 0; i < planes.size(); ++i) {
        fillPlane(planes[i], picture, [&](std::uint32_t pixel, int) {
            return kBlack[i] + mixtureOf(pixel, kMixtures[i]);
        });
    }
    return planes;
}

void put(const Planes& picture, int left, int top, Planes& onto) {
    for (std::size_t i = 0; i < onto.size(); ++i) {
        const int step = i == 0 ? 1 : 2;
        for (int y = 0; y < picture[i].size.height; ++y)
            std::copy_n(picture[i].row(y), picture[i].size.width,
                        onto[i].row(top / step + y) + left / step);
    }
}

void resample(const Planes& from, const PixelRect& part, ColorSite site, RowSet rows, Planes& to) {
    resample(from[0], samplingOf(part, 0, rows, from[0].size, to[0].size), to[0]);
    const PixelRect half{part.left / 2, part.top / 2, part.width / 2, part.height / 2};
    const double right = site == ColorSite::left ? 0.25 : 0;
    const Sampling colors = samplingOf(half, right, rows, from[1].size, to[1].size);
    resample(from[1], colors, to[1]);
    resample(from[2], colors, to[2]);
}

void blur(Planes& picture, double sigma) {
    blur(picture[0], sigma);
    blur(picture[1], sigma / 2);
    blur(picture[2], sigma / 2);
}

void weaken(Planes& picture, double light, double color) {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const double part = i == 0 ? light : color;
        for (std::int16_t& level : picture[i].levels)
            level = static_cast<std::int16_t>(kBlack[i] + std::lround((level - kBlack[i]) * part));
    }
}

Overlay overlayOf(const Bitmap& colors, std::span<const double> shade) {
    Overlay overlay{emptyPlanes(colors.size()), emptyPlanes(colors.size())};
    const auto bare = [](std::uint32_t pixel) { return 1 - alphaOf(pixel) / 255.0; };
    const auto coverAt = [&](std::uint32_t pixel, int y) {
        return 1 - bare(pixel) * (1 - shade[asIndex(y)]);
    };
    for (std::size_t i = 0; i < overlay.added.size(); ++i) {
        fillPlane(overlay.cover[i], colors,
                  [&](std::uint32_t pixel, int y) { return coverAt(pixel, y) * kOne; });
        fillPlane(overlay.added[i], colors, [&](std::uint32_t pixel, int y) {
            return kBlack[i] * coverAt(pixel, y) + mixtureOf(pixel, kMixtures[i]);
        });
    }
    return overlay;
}

void cover(Planes& picture, const Overlay& overlay, RowSet rows) {
    for (std::size_t i = 0; i < picture.size(); ++i) {
        for (int y = 0; y < picture[i].size.height; ++y) {
            std::int16_t* const levels = picture[i].row(y);
            const int row = rows.first + rows.step * y;
            const std::int16_t* const covers = overlay.cover[i].row(row);
            const std::int16_t* const added = overlay.added[i].row(row);
            for (int x = 0; x < picture[i].size.width; ++x) {
                const int bare = (levels[x] * (kOne - covers[x]) + kHalf) >> kShift;
                levels[x] = static_cast<std::int16_t>(bare + added[x]);
            }
        }
    }
}

std::size_t frameBytes(PixelSize size) {
    return asIndex(size.width) * asIndex(size.height) * 3 / 2;
}

void writeFrame(const Planes& picture, const Planes& other, const Turning& turning, RowSet rows,
                std::span<std::uint8_t> frame) {
    static const auto pattern = patternOf();
    const int turned = static_cast<int>(std::lround(turning.part * kOne));
    const int lit = static_cast<int>(std::lround(turning.light * kOne));
    std::uint8_t* plane = frame.data();
    for (std::size_t i = 0; i < picture.size(); ++i) {
        const auto [width, height] = picture[i].size;
        const int black = kBlack[i];
        for (int y = 0; y < height; ++y) {
            const int row = rows.first + rows.step * y;
            const std::int16_t* const added = pattern[asIndex(row % kPattern)].data();
            const std::int16_t* const from = picture[i].row(y);
            const std::int16_t* const next = other[i].row(y);
            std::uint8_t* const to = plane + asIndex(row) * asIndex(width);
            if (turned == 0 && lit == kOne) {
                for (int x = 0; x < width; ++x)
                    to[x] = cutLevel(from[x] + added[x]);
                continue;
            }
            for (int x = 0; x < width; ++x) {
                const int mixed = from[x] + (((next[x] - from[x]) * turned + kHalf) >> kShift);
                to[x] = cutLevel(black + (((mixed - black) * lit + kHalf) >> kShift) + added[x]);
            }
        }
        plane += asIndex(width) * asIndex(height * rows.step);
    }
}

}  // namespace tkv::disc
