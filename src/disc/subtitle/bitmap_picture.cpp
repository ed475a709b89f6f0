#include "disc/subtitle/bitmap_picture.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <map>
#include <utility>

namespace tkv::disc {

namespace {

// Where a canvas lies in the raster.
struct Scale {
    double x, y;       // columns and rows of the raster for one of the canvas
    double left, top;  // of the canvas, in the raster
};

// The canvas is the film's frame as it was before it was cropped to its picture: in the same
// middle, and nowhere smaller.
Scale scaleOf(const BitmapCue& cue, const SubtitleFrame& frame) {
    const PixelSize canvas = cue.canvas;
    const double pixel = cue.aspect > 0 ? cue.aspect * canvas.height / canvas.width : 1;
    const double shape = frame.aspect * frame.raster.height / frame.raster.width / pixel;
    const double x = std::max(1.0 * (frame.raster.width - 2 * frame.barX) / canvas.width,
                              (frame.raster.height - 2 * frame.barY) / shape / canvas.height);
    const double y = x * shape;
    return {x, y, (frame.raster.width - x * canvas.width) / 2,
            (frame.raster.height - y * canvas.height) / 2};
}

float channel(std::uint32_t color, unsigned shift) {
    return static_cast<float>(color >> shift & 0xFFU) / 255;
}

// Adds a part of a pixel.
void add(SubtitlePixel& sum, std::uint32_t color, float weight) {
    const float alpha = weight * channel(color, 24);
    sum.red += alpha * channel(color, 16);
    sum.green += alpha * channel(color, 8);
    sum.blue += alpha * channel(color, 0);
    sum.alpha += alpha;
}

// Pixels of the canvas between two edges of the raster's, in the canvas' columns or rows.
struct Range {
    int first, last;
    double from, until;

    Range(double begin, double end, int most)
        : first(std::clamp(static_cast<int>(std::floor(begin)), 0, most)),
          last(std::clamp(static_cast<int>(std::ceil(end)), 0, most)),
          from(begin),
          until(end) {}

    // How much of a pixel lies there, as a part of the whole range.
    double part(int pixel) const {
        return (std::min(until, pixel + 1.0) - std::max(from, 1.0 * pixel)) / (until - from);
    }
};

// The mean of what a pixel of the raster covers, `x` and `y`: its edges in the bitmap.
SubtitlePixel meanOf(const SubtitleBitmap& bitmap, const Range& x, const Range& y) {
    SubtitlePixel mean;
    for (int row = y.first; row < y.last; ++row) {
        const std::uint32_t* const pixels =
            &bitmap.pixels[static_cast<std::size_t>(row) *
                           static_cast<std::size_t>(bitmap.size.width)];
        const double part = y.part(row);
        for (int column = x.first; column < x.last; ++column) {
            if (pixels[column] >> 24U != 0)
                add(mean, pixels[column], static_cast<float>(part * x.part(column)));
        }
    }
    return mean;
}

int squaredDifference(std::uint32_t a, std::uint32_t b) {
    int sum = 0;
    for (const unsigned shift : {0U, 8U, 16U}) {
        const int difference =
            static_cast<int>(a >> shift & 0xFFU) - static_cast<int>(b >> shift & 0xFFU);
        sum += difference * difference;
    }
    return sum;
}

int brightness(std::uint32_t color) {
    return static_cast<int>(2 * (color >> 16U & 0xFFU) + 5 * (color >> 8U & 0xFFU) +
                            (color & 0xFFU));
}

// What tells how much a colour is missed beside others.
double missed(const std::pair<const std::uint32_t, double>& color,
              std::initializer_list<std::uint32_t> others) {
    int least = std::numeric_limits<int>::max();
    for (const std::uint32_t other : others)
        least = std::min(least, squaredDifference(color.first, other));
    return color.second * least;
}

// The darker one for the outline.
SubtitleColors colorsOf(const BitmapCue& cue) {
    constexpr std::uint32_t kMostlyOpaque = 0xC0;
    std::map<std::uint32_t, double> weights;
    for (const SubtitleBitmap& bitmap : cue.bitmaps) {
        double* weight = nullptr;
        std::uint32_t last = 0;
        for (const std::uint32_t pixel : bitmap.pixels) {
            if (pixel >> 24U < kMostlyOpaque) continue;
            if (weight == nullptr || pixel != last) weight = &weights[pixel & 0xFFFFFFU];
            last = pixel;
            ++*weight;
        }
    }
    if (weights.empty()) return {0, 0, 0x808080, 0xFFFFFF};
    const auto heaviest = [&](const auto& weightOf) {
        return std::ranges::max_element(weights, {}, weightOf)->first;
    };
    const std::uint32_t first = heaviest([](const auto& each) { return each.second; });
    const std::uint32_t second = heaviest(
        [&](const auto& each) { return each.second * squaredDifference(each.first, first); });
    const bool isDark = brightness(first) < brightness(second);
    const std::uint32_t outline = isDark ? first : second, letter = isDark ? second : first;
    const std::uint32_t between = colorBetween(outline, letter);
    const std::uint32_t third = heaviest([&](const auto& each) {
        return missed(each, {first, second, between});
    });
    double all = 0;
    for (const auto& [color, weight] : weights)
        all += weight;
    // Where somebody else speaks in another colour; not the shades at the letters' edges.
    constexpr double kLeastPart = 0.05;
    constexpr int kOther = 3 * 64 * 64;
    const bool isOther =
        weights[third] > kLeastPart * all && missed({third, 1}, {first, second, between}) > kOther;
    return {0, outline, isOther ? third : between, letter};
}

}  // namespace

SubtitlePicture pictureOf(const BitmapCue& cue, const SubtitleFrame& frame) {
    if (cue.bitmaps.empty()) return {};
    const Scale scale = scaleOf(cue, frame);
    int left = std::numeric_limits<int>::max(), top = left, right = 0, bottom = 0;
    for (const SubtitleBitmap& bitmap : cue.bitmaps) {
        left = std::min(left, static_cast<int>(scale.left + bitmap.x * scale.x));
        top = std::min(top, static_cast<int>(scale.top + bitmap.y * scale.y));
        right = std::max(
            right,
            static_cast<int>(std::ceil(scale.left + (bitmap.x + bitmap.size.width) * scale.x)));
        bottom = std::max(
            bottom,
            static_cast<int>(std::ceil(scale.top + (bitmap.y + bitmap.size.height) * scale.y)));
    }
    left = std::max(left, 0) & ~1;
    top = std::max(top, 0) & ~1;
    right = std::min((right + 1) & ~1, frame.raster.width);
    bottom = std::min((bottom + 1) & ~1, frame.raster.height);
    if (right <= left || bottom <= top) return {};

    std::vector<SubtitlePixel> pixels;
    pixels.reserve(static_cast<std::size_t>(right - left) * static_cast<std::size_t>(bottom - top));
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            SubtitlePixel& pixel = pixels.emplace_back();
            for (const SubtitleBitmap& bitmap : cue.bitmaps) {
                const auto column = [&](int at) { return (at - scale.left) / scale.x - bitmap.x; };
                const auto row = [&](int at) { return (at - scale.top) / scale.y - bitmap.y; };
                const Range columns(column(x), column(x + 1), bitmap.size.width);
                const Range rows(row(y), row(y + 1), bitmap.size.height);
                if (columns.first >= columns.last || rows.first >= rows.last) continue;
                const SubtitlePixel mean = meanOf(bitmap, columns, rows);
                if (mean.alpha > pixel.alpha) pixel = mean;
            }
        }
    }
    return quantised({left, top, right - left, bottom - top, {}, colorsOf(cue)}, pixels);
}

}  // namespace tkv::disc
