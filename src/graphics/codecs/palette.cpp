#include "graphics/codecs/palette.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tkv {

namespace {

/// A box of median cut: colours that are to become one palette entry.
struct Box {
    explicit Box(std::span<std::uint32_t> all) : colors(all) {
        std::array<double, 3> sums{}, squares{};
        for (const std::uint32_t color : colors) {
            const Channels channels = channelsOf(color);
            for (std::size_t i = 0; i < 3; ++i) {
                sums[i] += channels[i];
                squares[i] += channels[i] * channels[i];
            }
        }
        const auto count = static_cast<double>(colors.size());
        for (std::size_t i = 0; i < 3; ++i) {
            mean[i] = sums[i] / count;
            const double spread = squares[i] - sums[i] * mean[i];
            if (spread > error) {
                error = spread;
                widest = i;
            }
        }
    }

    std::uint32_t color() const {
        const auto level = [&](std::size_t i) {
            return static_cast<unsigned>(std::lround(mean[i]));
        };
        return pixelOf(0, level(0), level(1), level(2));
    }

    std::span<std::uint32_t> colors;
    std::array<double, 3> mean{};
    double error = 0;  ///< Sum of the squared distances from the mean, along the widest channel.
    std::size_t widest = 0;
};

bool hasLessError(const Box& a, const Box& b) {
    return a.error < b.error;
}

/// The colours of the picture if they are no more than `most`, otherwise one more than that.
std::vector<std::uint32_t> distinctColors(std::span<const std::uint32_t> colors, std::size_t most) {
    std::vector<std::uint32_t> found;
    for (const std::uint32_t color : colors) {
        if (!found.empty() && found.back() == color) continue;
        const auto at = std::ranges::lower_bound(found, color);
        if (at != found.end() && *at == color) continue;
        found.insert(at, color);
        if (found.size() > most) break;
    }
    return found;
}

/// Splits the box with the largest error in two, at its mean, until there are enough (median cut by
/// variance instead of population).
std::vector<std::uint32_t> cut(std::span<std::uint32_t> colors, std::size_t most) {
    std::vector<Box> boxes{Box(colors)};
    // Where colours differ at all the error is at least a half; less is rounding error.
    while (boxes.size() < most && boxes.front().error > 0.25) {
        std::ranges::pop_heap(boxes, hasLessError);
        const Box box = boxes.back();
        boxes.pop_back();
        const auto [first, last] = std::pair(box.colors.begin(), box.colors.end());
        const auto middle = std::partition(first, last, [&](std::uint32_t color) {
            return channelsOf(color)[box.widest] <= box.mean[box.widest];
        });
        for (const auto part : {std::span(first, middle), std::span(middle, last)}) {
            boxes.emplace_back(part);
            std::ranges::push_heap(boxes, hasLessError);
        }
    }
    std::vector<std::uint32_t> palette(boxes.size());
    std::ranges::transform(boxes, palette.begin(), &Box::color);
    return palette;
}

/// A subsample of about as many colours as wanted. The stride is skewed, so that those of a picture
/// do not all come from the same columns.
std::vector<std::uint32_t> sample(std::span<const std::uint32_t> colors, std::size_t wanted) {
    const std::size_t step = std::max<std::size_t>(1, colors.size() / wanted);
    std::vector<std::uint32_t> some;
    for (std::size_t i = 0; i * step + i % step < colors.size(); ++i)
        some.push_back(colors[i * step + i % step]);
    return some;
}

}  // namespace

std::vector<std::uint32_t> choosePalette(std::span<const std::uint32_t> colors, std::size_t most) {
    std::vector<std::uint32_t> palette = distinctColors(colors, most);
    if (palette.size() <= most) return palette;
    // Enough for the distribution; more would only take longer.
    std::vector<std::uint32_t> some = sample(colors, 40'000);
    return cut(some, most);
}

NearestColor::NearestColor(std::span<const std::uint32_t> palette) : cells_(kCells) {
    for (const std::uint32_t color : palette) {
        const Channels channels = channelsOf(color);
        for (std::size_t i = 0; i < channels.size(); ++i)
            palette_[i].push_back(static_cast<float>(channels[i]));
    }
}

/// Stores the colours that can be nearest to a point of the cell: all whose distance from its
/// centre is at most that of the nearest one plus twice the cell's radius.
void NearestColor::fill(Cell& cell, const Channels& lowest) {
    constexpr float kHalf = (kCellSide - 1) / 2.0F, kTwiceRadius = 2 * 1.7321F * kHalf;
    std::array<float, 256> distances{};
    const std::size_t colors = palette_[0].size();
    for (std::size_t i = 0; i < lowest.size(); ++i) {
        const float center = static_cast<float>(lowest[i]) + kHalf;
        const float* channel = palette_[i].data();
        for (std::size_t color = 0; color < colors; ++color)
            distances[color] += (channel[color] - center) * (channel[color] - center);
    }
    const float least = std::sqrt(std::ranges::min(std::span(distances).first(colors)));
    const float limit = (least + kTwiceRadius) * (least + kTwiceRadius);
    cell.first = candidates_.size();
    for (std::size_t color = 0; color < colors; ++color) {
        if (distances[color] > limit) continue;
        Candidate candidate{{}, static_cast<int>(color)};
        for (std::size_t i = 0; i < lowest.size(); ++i)
            candidate.channels[i] = static_cast<int>(palette_[i][color]);
        candidates_.push_back(candidate);
    }
    cell.count = candidates_.size() - cell.first;
}

std::size_t NearestColor::indexOf(const Channels& channels) {
    std::size_t at = 0;
    for (const int channel : channels)
        at = at * kCellsASide + static_cast<std::size_t>(channel / kCellSide);
    Cell& cell = cells_[at];
    if (cell.count == 0) {
        Channels lowest = channels;
        for (int& channel : lowest)
            channel -= channel % kCellSide;
        fill(cell, lowest);
    }
    int least = std::numeric_limits<int>::max();
    int found = 0;
    for (const Candidate& candidate : std::span(candidates_).subspan(cell.first, cell.count)) {
        int distance = 0;
        for (std::size_t i = 0; i < channels.size(); ++i) {
            const int apart = channels[i] - candidate.channels[i];
            distance += apart * apart;
        }
        if (distance < least) {
            least = distance;
            found = candidate.index;
        }
    }
    return static_cast<std::size_t>(found);
}

}  // namespace tkv
