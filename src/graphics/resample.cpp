#include "graphics/resample.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tkv {

namespace {

/// The filter kernel: the triangle of linear interpolation, two pixels wide, convolved with a
/// narrow and a wide box.
class Kernel {
  public:
    /// `step`: source pixels per output pixel.
    explicit Kernel(double step) {
        // Without downscaling the boxes vanish, so that nothing is blurred.
        const double growth = std::sqrt(std::max(0.0, step * step - 1));
        if (growth < 0.01) return;
        narrow_ = growth;
        wide_ = 1.5 * growth;
    }

    double reach() const { return 1 + (narrow_ + wide_) / 2; }

    double at(double distance) const {
        if (narrow_ == 0) return std::max(0.0, 1 - std::abs(distance));
        const double outer = (wide_ + narrow_) / 2;
        const double inner = (wide_ - narrow_) / 2;
        return (integral(distance + outer) - integral(distance + inner) -
                integral(distance - inner) + integral(distance - outer)) /
               (narrow_ * wide_);
    }

  private:
    /// The second integral of the triangle.
    static double integral(double x) {
        const auto cube = [](double value) { return std::abs(value * value * value); };
        return (cube(x + 1) - 2 * cube(x) + cube(x - 1)) / 12;
    }

    double narrow_ = 0;
    double wide_ = 0;
};

/// Along one axis, the filter taps of each output pixel: the source pixels and their weights.
class Axis {
  public:
    /// Taps are summed in unrolled groups of this many.
    static constexpr int kAtOnce = 4;

    /// `from`, `length`: the shown part of a side of `pixels` pixels; `answer`: the output's
    /// pixels.
    Axis(double from, double length, int pixels, int answer)
        : step_(length / answer), kernel_(step_), pixels_(pixels) {
        taps_ = kAtOnce * static_cast<int>(std::ceil(2 * kernel_.reach() / kAtOnce));
        first_.reserve(static_cast<std::size_t>(answer));
        weights_.resize(static_cast<std::size_t>(answer) * static_cast<std::size_t>(taps_));
        for (int i = 0; i < answer; ++i)
            weigh(from + (i + 0.5) * step_ - 0.5, &weights_[offset(i)]);
        begin_ = first_.front();
        end_ = std::min(first_.back() + taps_, pixels);
    }

    /// The first tap of output pixel `i`.
    int first(int i) const { return first_[static_cast<std::size_t>(i)]; }
    const std::vector<int>& firsts() const { return first_; }
    /// The number of taps, a multiple of kAtOnce; padding taps, and all past the last pixel, weigh
    /// 0.
    int taps() const { return taps_; }
    const float* weights(int i) const { return &weights_[offset(i)]; }

    /// The half-open range of all source pixels that are needed.
    int begin() const { return begin_; }
    int end() const { return end_; }

  private:
    std::size_t offset(int i) const {
        return static_cast<std::size_t>(i) * static_cast<std::size_t>(taps_);
    }

    /// Sets the weights around `center`, normalised to a sum of 1.
    void weigh(double center, float* weights) {
        const auto begin = static_cast<int>(std::floor(center - kernel_.reach())) + 1;
        const auto end = static_cast<int>(std::ceil(center + kernel_.reach()));
        const auto within = [this](int at) { return std::clamp(at, 0, pixels_ - 1); };
        const int first = within(begin);
        float sum = 0;
        for (int at = begin; at < end; ++at) {
            const auto weight = static_cast<float>(kernel_.at(at - center));
            weights[within(at) - first] += weight;
            sum += weight;
        }
        std::transform(weights, weights + taps_, weights,
                       [sum](float weight) { return weight / sum; });
        first_.push_back(first);
    }

    double step_;
    Kernel kernel_;
    int pixels_;
    int taps_ = 0;
    std::vector<int> first_;
    std::vector<float> weights_;
    int begin_ = 0;
    int end_ = 0;
};

constexpr std::size_t channels(int pixels) {
    return std::size_t{4} * static_cast<std::size_t>(pixels);
}

/// The vertical pass: one output row, still as wide as the source's needed columns.
void mixRows(const Bitmap& source, const Axis& columns, const Axis& rows, int y,
             std::vector<float>& mixed) {
    const std::size_t length = channels(columns.end() - columns.begin());
    for (int tap = 0; tap < rows.taps(); tap += Axis::kAtOnce) {
        const auto row = [&](int i) {
            const int at = std::min(rows.first(y) + tap + i, source.height() - 1);
            return reinterpret_cast<const std::uint8_t*>(source.row(at) + columns.begin());
        };
        const std::uint8_t *const a = row(0), *const b = row(1), *const c = row(2),
                                  *const d = row(3);
        const float* const weights = rows.weights(y) + tap;
        const float p = weights[0], q = weights[1], r = weights[2], s = weights[3];
        const float before = tap == 0 ? 0.0F : 1.0F;
        float* const to = mixed.data();
        for (std::size_t i = 0; i < length; ++i) {
            to[i] = to[i] * before + p * static_cast<float>(a[i]) + q * static_cast<float>(b[i]) +
                    r * static_cast<float>(c[i]) + s * static_cast<float>(d[i]);
        }
    }
}

/// The four channels of a pixel, a SIMD vector.
using Channels [[gnu::vector_size(16)]] = float;

/// The horizontal pass: that row at the output's width, plus a half so that truncation rounds.
void mixColumns(const std::vector<float>& row, const Axis& columns, std::vector<float>& mixed) {
    const float* weights = columns.weights(0);
    float* to = mixed.data();
    const int taps = columns.taps();
    for (const int first : columns.firsts()) {
        const float* from = row.data() + channels(first - columns.begin());
        Channels sum{0.5F, 0.5F, 0.5F, 0.5F};
        for (int tap = 0; tap < taps; tap += Axis::kAtOnce, from += 16, weights += 4) {
            Channels pixels[Axis::kAtOnce];
            std::memcpy(pixels, from, sizeof pixels);
            sum += (pixels[0] * weights[0] + pixels[1] * weights[1]) +
                   (pixels[2] * weights[2] + pixels[3] * weights[3]);
        }
        std::memcpy(to, &sum, sizeof sum);
        to += 4;
    }
}

void cut(const std::vector<float>& channels, std::uint32_t* pixels) {
    auto* const to = reinterpret_cast<std::uint8_t*>(pixels);
    const float* const from = channels.data();
    for (std::size_t i = 0, end = channels.size(); i < end; ++i)
        to[i] = static_cast<std::uint8_t>(static_cast<int>(from[i]));
}

}  // namespace

std::optional<Bitmap> resampled(const Bitmap& source, const PixelRect& part, PixelSize size) {
    std::optional<Bitmap> answer = Bitmap::create(size);
    if (!answer) return std::nullopt;
    const Axis columns(part.left, part.width, source.width(), size.width);
    const Axis rows(part.top, part.height, source.height(), size.height);
    // Taps past the last pixel are read too, with a weight of 0.
    std::vector<float> high(channels(columns.end() - columns.begin() + columns.taps()));
    std::vector<float> mixed(channels(size.width));
    for (int y = 0; y < size.height; ++y) {
        mixRows(source, columns, rows, y, high);
        mixColumns(high, columns, mixed);
        cut(mixed, answer->row(y));
    }
    return answer;
}

}  // namespace tkv
