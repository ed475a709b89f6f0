#include "graphics/resample.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "graphics/pixels.h"

namespace tkv {

namespace {

// Fixed-point arithmetic: weights have 14 fractional bits, the levels between the passes 6, so that
// twice the highest level still fits into 16 bits. All processors make the same pixels.
constexpr int kWeightBits = 14;
constexpr int kLevelBits = 6;
constexpr int kOne = 1 << kWeightBits;
constexpr int kFirstShift = kWeightBits - kLevelBits;
constexpr int kLastShift = kWeightBits + kLevelBits;

/// Half of what a shift cuts: with that added it rounds.
constexpr int half(int shift) {
    return 1 << (shift - 1);
}

/// The filter kernel along one axis.
class Kernel {
  public:
    /// `step`: source pixels per output pixel; `averaged`: of the bitmap.
    Kernel(double step, int averaged) : scale_(step <= kNearlyAll ? 1 : step) {
        if (step <= 1) return;
        // What a mean of n samples, n to the pixel, takes of patterns 3 output pixels wide, this
        // slope adds, whatever the step. Edges ring with steeper ones than the steepest.
        constexpr double kPlain = -0.5, kSteepest = -0.75, kPerMean = 2.0 / 3;
        const double mean = 1 - 1.0 / averaged / averaged;
        a_ = std::max(kSteepest, kPlain - kPerMean * mean / (scale_ * scale_));
    }

    double reach() const { return (a_ == 0 ? 1 : 2) * scale_; }

    double at(double distance) const {
        const double x = std::abs(distance) / scale_;
        if (a_ == 0) return std::max(0.0, 1 - x);
        if (x < 1) return ((a_ + 2) * x - (a_ + 3)) * x * x + 1;
        return x < 2 ? (((x - 5) * x + 8) * x - 4) * a_ : 0;
    }

  private:
    /// While nearly all pixels are kept, four taps do: loops are decoded at nearly their size, and
    /// drawn most often.
    static constexpr double kNearlyAll = 1.25;

    double scale_;
    double a_ = 0;  ///< The slope of the cubic at one output pixel; 0 for linear interpolation.
};

/// Along one axis, the filter taps of each output pixel: the source pixels and their weights.
class Axis {
  public:
    /// Taps are summed in groups of so many, but for two.
    static constexpr int kAtOnce = 4;

    /// `from`, `length`: the shown part of a side of `pixels` pixels; `answer`: the output's
    /// pixels.
    Axis(double from, double length, int pixels, int answer, int averaged)
        : step_(length / answer), kernel_(step_, averaged), pixels_(pixels) {
        taps_ = static_cast<int>(std::ceil(2 * kernel_.reach()));
        if (taps_ > 2) taps_ = (taps_ + kAtOnce - 1) / kAtOnce * kAtOnce;
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
    /// The number of taps, two or a multiple of kAtOnce; padding taps, and all past the last pixel,
    /// weigh 0.
    int taps() const { return taps_; }
    const std::int16_t* weights(int i) const { return &weights_[offset(i)]; }

    /// The half-open range of all source pixels that are needed.
    int begin() const { return begin_; }
    int end() const { return end_; }

  private:
    std::size_t offset(int i) const {
        return static_cast<std::size_t>(i) * static_cast<std::size_t>(taps_);
    }

    /// Sets the weights around `center`. Their running sum is rounded, not each of them: so they
    /// come to one exactly, however small they are.
    void weigh(double center, std::int16_t* weights) {
        const auto begin = static_cast<int>(std::floor(center - kernel_.reach())) + 1;
        const auto end = static_cast<int>(std::ceil(center + kernel_.reach()));
        const auto within = [this](int at) { return std::clamp(at, 0, pixels_ - 1); };
        const int first = within(begin);
        sums_.clear();
        double sum = 0;
        for (int at = begin; at < end; ++at)
            sums_.push_back(sum += kernel_.at(at - center));
        constexpr double kLifted = kOne + 0.5;
        int before = 0;
        for (int at = begin; at < end; ++at) {
            // Rounded by a cut, above zero.
            const double share = sums_[static_cast<std::size_t>(at - begin)] / sum;
            const int now = static_cast<int>(share * kOne + kLifted) - kOne;
            std::int16_t& weight = weights[within(at) - first];
            weight = static_cast<std::int16_t>(weight + now - before);
            before = now;
        }
        first_.push_back(first);
    }

    double step_;
    Kernel kernel_;
    int pixels_;
    int taps_ = 0;
    std::vector<int> first_;
    std::vector<std::int16_t> weights_;
    std::vector<double> sums_;  ///< Of the weights of one output pixel.
    int begin_ = 0;
    int end_ = 0;
};

constexpr std::size_t channels(int pixels) {
    return std::size_t{4} * static_cast<std::size_t>(pixels);
}

/// The rows and weights from which one output row is mixed.
struct RowTaps {
    std::vector<const std::uint8_t*> rows;
    const std::int16_t* weights = nullptr;
};

/// In blocks that a compiler turns into vectors.
void mixRowsPlainly(const RowTaps& taps, std::size_t from, std::size_t length,
                    std::int16_t* mixed) {
    constexpr std::size_t kBlock = 16;
    for (std::size_t i = from; i < length; i += kBlock) {
        int sums[kBlock] = {};
        const std::size_t count = std::min(kBlock, length - i);
        for (std::size_t tap = 0; tap < taps.rows.size(); ++tap) {
            const std::uint8_t* const row = taps.rows[tap] + i;
            const int weight = taps.weights[tap];
            if (count == kBlock) {
                for (std::size_t at = 0; at < kBlock; ++at)
                    sums[at] += row[at] * weight;
            } else {
                for (std::size_t at = 0; at < count; ++at)
                    sums[at] += row[at] * weight;
            }
        }
        for (std::size_t at = 0; at < count; ++at)
            mixed[i + at] =
                static_cast<std::int16_t>((sums[at] + half(kFirstShift)) >> kFirstShift);
    }
}

#ifdef __SSE2__

/// Two taps of four channels, each pair in one 32-bit lane.
inline void add(__m128i& sum, __m128i levels, __m128i weights) {
    sum = _mm_add_epi32(sum, _mm_madd_epi16(levels, weights));
}

/// The vertical pass: channels of one output row, still as wide as the source's needed columns.
/// `kTaps`: their number, where it is known.
template <std::size_t kTaps = 0>
void mixRows(const RowTaps& taps, std::size_t length, std::int16_t* mixed) {
    const __m128i zero = _mm_setzero_si128();
    const std::uint8_t* const* const rows = taps.rows.data();
    const std::size_t count = kTaps > 0 ? kTaps : taps.rows.size();
    std::size_t i = 0;
    for (; i + 16 <= length; i += 16) {
        __m128i a, b, c, d;
        a = b = c = d = _mm_set1_epi32(half(kFirstShift));
        for (std::size_t tap = 0; tap < count; tap += 2) {
            int pair = 0;
            std::memcpy(&pair, taps.weights + tap, sizeof pair);
            const __m128i weights = _mm_set1_epi32(pair);
            const auto* const upper = reinterpret_cast<const __m128i*>(rows[tap] + i);
            const auto* const lower = reinterpret_cast<const __m128i*>(rows[tap + 1] + i);
            const __m128i above = _mm_loadu_si128(upper), below = _mm_loadu_si128(lower);
            const __m128i left = _mm_unpacklo_epi8(above, below);
            const __m128i right = _mm_unpackhi_epi8(above, below);
            add(a, _mm_unpacklo_epi8(left, zero), weights);
            add(b, _mm_unpackhi_epi8(left, zero), weights);
            add(c, _mm_unpacklo_epi8(right, zero), weights);
            add(d, _mm_unpackhi_epi8(right, zero), weights);
        }
        auto* const to = reinterpret_cast<__m128i*>(mixed + i);
        const auto cut = [](__m128i sum) { return _mm_srai_epi32(sum, kFirstShift); };
        _mm_storeu_si128(to, _mm_packs_epi32(cut(a), cut(b)));
        _mm_storeu_si128(to + 1, _mm_packs_epi32(cut(c), cut(d)));
    }
    mixRowsPlainly(taps, i, length, mixed);
}

/// The weights of the horizontal pass, each for four channels: of two taps, or of four as those of
/// the first and third, and of the second and fourth, which shuffles bring together soonest.
std::vector<std::int16_t> spread(const Axis& columns) {
    std::vector<std::int16_t> all;
    const auto add = [&all](std::int16_t a, std::int16_t b) {
        for (int channel = 0; channel < 4; ++channel)
            all.insert(all.end(), {a, b});
    };
    const std::size_t count = columns.firsts().size() * static_cast<std::size_t>(columns.taps());
    const std::int16_t* const weights = columns.weights(0);
    all.reserve(4 * count);
    if (columns.taps() == 2) {
        for (std::size_t i = 0; i < count; i += 2)
            add(weights[i], weights[i + 1]);
        return all;
    }
    for (std::size_t i = 0; i < count; i += Axis::kAtOnce) {
        add(weights[i], weights[i + 2]);
        add(weights[i + 1], weights[i + 3]);
    }
    return all;
}

/// The horizontal pass: the pixels of one output row.
template <int kTaps = 0>
void mixColumns(const std::int16_t* mixed, const Axis& columns, const std::int16_t* weights,
                std::uint32_t* pixels) {
    const int taps = kTaps > 0 ? kTaps : columns.taps();
    const int* first = columns.firsts().data();
    const auto load = [](const std::int16_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    const auto sumNext = [&] {
        const std::int16_t* from = mixed + channels(*first++ - columns.begin());
        __m128i sum = _mm_set1_epi32(half(kLastShift));
        if (kTaps == 2) {
            const __m128i both = load(from);
            add(sum, _mm_unpacklo_epi16(both, _mm_unpackhi_epi64(both, both)), load(weights));
            weights += 8;
        }
        for (int tap = 0; kTaps != 2 && tap < taps; tap += Axis::kAtOnce) {
            const __m128i two = load(from), more = load(from + 8);
            add(sum, _mm_unpacklo_epi16(two, more), load(weights));
            add(sum, _mm_unpackhi_epi16(two, more), load(weights + 8));
            from += 16;
            weights += 16;
        }
        return _mm_srai_epi32(sum, kLastShift);
    };
    const auto cut = [](__m128i levels) {
        __m128i alpha = _mm_srli_epi32(levels, 24);
        alpha = _mm_or_si128(alpha, _mm_slli_epi32(alpha, 8));
        alpha = _mm_or_si128(alpha, _mm_slli_epi32(alpha, 16));
        return _mm_min_epu8(levels, alpha);
    };
    const std::size_t width = columns.firsts().size();
    std::size_t x = 0;
    for (; x + 4 <= width; x += 4) {
        const __m128i a = sumNext(), b = sumNext(), c = sumNext(), d = sumNext();
        const __m128i levels = _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + x), cut(levels));
    }
    for (; x < width; ++x) {
        const __m128i levels = _mm_packs_epi32(sumNext(), _mm_setzero_si128());
        pixels[x] =
            static_cast<std::uint32_t>(_mm_cvtsi128_si32(cut(_mm_packus_epi16(levels, levels))));
    }
}

#else

template <std::size_t = 0>
void mixRows(const RowTaps& taps, std::size_t length, std::int16_t* mixed) {
    mixRowsPlainly(taps, 0, length, mixed);
}

std::vector<std::int16_t> spread(const Axis& columns) {
    const std::int16_t* const weights = columns.weights(0);
    return {weights, weights + columns.firsts().size() * static_cast<std::size_t>(columns.taps())};
}

template <int = 0>
void mixColumns(const std::int16_t* mixed, const Axis& columns, const std::int16_t* weights,
                std::uint32_t* pixels) {
    for (const int first : columns.firsts()) {
        const std::int16_t* from = mixed + channels(first - columns.begin());
        int sums[4];
        std::fill_n(sums, 4, half(kLastShift));
        for (int tap = 0; tap < columns.taps(); ++tap, ++weights) {
            for (int& sum : sums)
                sum += *from++ * *weights;
        }
        std::uint8_t levels[4];
        std::transform(sums, sums + 4, levels, [](int sum) {
            return static_cast<std::uint8_t>(std::clamp(sum >> kLastShift, 0, 255));
        });
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, levels, sizeof pixel);
        const unsigned alpha = alphaOf(pixel);
        *pixels++ = pixelOf(alpha, std::min(redOf(pixel), alpha), std::min(greenOf(pixel), alpha),
                            std::min(blueOf(pixel), alpha));
    }
}

#endif

/// How one side is scaled.
struct Scaling {
    double from;
    double length;
    int pixels;
    int answer;
    int averaged;
    bool operator==(const Scaling&) const = default;
};

/// The taps of a scaling; those of the latest are kept, for the next frame of a loop.
std::shared_ptr<const Axis> axisOf(const Scaling& scaling) {
    constexpr std::size_t kKept = 8;
    thread_local std::deque<std::pair<Scaling, std::shared_ptr<const Axis>>> latest;
    const auto known =
        std::ranges::find(latest, scaling, [](const auto& kept) { return kept.first; });
    if (known != latest.end()) return known->second;
    auto made = std::make_shared<const Axis>(scaling.from, scaling.length, scaling.pixels,
                                             scaling.answer, scaling.averaged);
    latest.emplace_front(scaling, made);
    if (latest.size() > kKept) latest.pop_back();
    return made;
}

}  // namespace

std::optional<Bitmap> resampled(const Bitmap& source, const PixelRect& part, PixelSize size) {
    std::optional<Bitmap> answer = Bitmap::create(size);
    if (!answer) return std::nullopt;
    const int averaged = source.averaged();
    const auto across = axisOf({part.left, part.width, source.width(), size.width, averaged});
    const auto down = axisOf({part.top, part.height, source.height(), size.height, averaged});
    const Axis& columns = *across;
    const Axis& rows = *down;
    const std::size_t length = channels(columns.end() - columns.begin());
    // Taps past the last pixel are read too, with a weight of 0.
    std::vector<std::int16_t> mixed(length + channels(columns.taps()));
    RowTaps taps{std::vector<const std::uint8_t*>(static_cast<std::size_t>(rows.taps()))};
    // Unrolled for enlarging, and for loops that are decoded at nearly their size.
    const auto mixThese = rows.taps() == 2 ? mixRows<2> : rows.taps() == 4 ? mixRows<4> : mixRows<>;
    const std::vector<std::int16_t> weights = spread(columns);
    const auto mixAcross = columns.taps() == 2   ? mixColumns<2>
                           : columns.taps() == 4 ? mixColumns<4>
                                                 : mixColumns<>;
    for (int y = 0; y < size.height; ++y) {
        for (int tap = 0; tap < rows.taps(); ++tap) {
            const int at = std::min(rows.first(y) + tap, source.height() - 1);
            taps.rows[static_cast<std::size_t>(tap)] =
                reinterpret_cast<const std::uint8_t*>(source.row(at) + columns.begin());
        }
        taps.weights = rows.weights(y);
        mixThese(taps, length, mixed.data());
        mixAcross(mixed.data(), columns, weights.data(), answer->row(y));
    }
    return answer;
}

}  // namespace tkv
