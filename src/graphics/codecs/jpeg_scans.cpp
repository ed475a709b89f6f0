#include "graphics/codecs/jpeg_scans.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <optional>
#include <utility>

namespace tkv {

namespace {

constexpr unsigned kEndOfImage = 0xD9;
constexpr unsigned kStartOfScan = 0xDA;
constexpr unsigned kQuantizers = 0xDB;

/// The byte range of a marker segment.
struct Segment {
    std::size_t begin;
    std::size_t end;
    unsigned marker;
};

/// The next marker segment at or after `at`, whose end may lie past that of the file; none when
/// only entropy-coded data follows.
std::optional<Segment> nextSegment(ByteView file, std::size_t at) {
    while (at + 1 < file.size()) {
        if (file[at] != 0xFF) {
            const void* next = std::memchr(file.data() + at, 0xFF, file.size() - at);
            if (next == nullptr) return std::nullopt;
            at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(next) - file.data());
            continue;
        }
        const unsigned marker = file[at + 1];
        if (marker == kEndOfImage) return std::nullopt;  // Another picture may follow.
        const bool bare = marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8);
        if (bare || marker == 0xFF) {  // A marker without a segment, or a fill byte.
            at += bare ? 2 : 1;
            continue;
        }
        if (file.size() - at < 4) return Segment{at, file.size() + 1, marker};
        return Segment{at, at + 2 + (std::size_t{file[at + 2]} << 8U | file[at + 3]), marker};
    }
    return std::nullopt;
}

/// One scan: its header, and its entropy-coded data up to the next segment or the file's end.
struct Scan {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::vector<std::size_t> components;  // By index.
    std::size_t first = 0;                // Spectral selection, in zigzag order.
    std::size_t last = 0;
    unsigned bitsBefore = 0;  // Successive approximation's Ah; 0 in a first scan.
};

/// None when the header is invalid or names other components.
std::optional<Scan> scanAt(ByteView file, const Segment& segment,
                           const std::vector<JpegComponent>& components) {
    constexpr std::size_t kBefore = 4;  // The marker and the length field.
    const std::size_t length = segment.end - segment.begin;
    if (length <= kBefore) return std::nullopt;
    const ByteView header = file.subspan(segment.begin + kBefore, length - kBefore);
    if (header.size() != 4 + std::size_t{2} * header[0]) return std::nullopt;
    Scan scan;
    scan.begin = segment.begin;
    for (std::size_t at = 1; at + 3 < header.size(); at += 2) {
        const auto named = std::ranges::find(components, header[at], &JpegComponent::id);
        if (named == components.end()) return std::nullopt;
        scan.components.push_back(static_cast<std::size_t>(named - components.begin()));
    }
    const ByteView band = header.last(3);
    scan.first = band[0];
    scan.last = band[1];
    scan.bitsBefore = band[2] >> 4U;
    if (scan.first > scan.last || scan.last > 63) return std::nullopt;
    return scan;
}

/// All scans in order; none when one is malformed or the quantiser tables change between them.
std::optional<std::vector<Scan>> scansOf(ByteView file,
                                         const std::vector<JpegComponent>& components) {
    std::vector<Scan> scans;
    std::optional<Segment> segment = nextSegment(file, 0);
    while (segment) {
        const std::optional<Segment> next = nextSegment(file, segment->end);
        // The quantiser steps are those of the first scan.
        if (segment->marker == kQuantizers && !scans.empty()) return std::nullopt;
        if (segment->marker == kStartOfScan) {
            std::optional<Scan> scan = scanAt(file, *segment, components);
            if (!scan) return std::nullopt;
            scan->end = next ? next->begin : file.size();
            scans.push_back(*std::move(scan));
        }
        segment = next;
    }
    return scans;
}

/// The natural-order index (8 * row + column) of each coefficient in zigzag order.
constexpr std::array<std::size_t, 64> zigzag() {
    std::array<std::size_t, 64> order{};
    std::size_t next = 0;
    for (std::size_t sum = 0; sum < 15; ++sum) {
        for (std::size_t i = 0; i <= sum; ++i) {
            const std::size_t row = sum % 2 == 0 ? sum - i : i;
            if (row < 8 && sum - row < 8) order[next++] = row * 8 + (sum - row);
        }
    }
    return order;
}

/// The largest absolute value of a DCT basis function, averaged down to `samples` along a side of a
/// block.
double gain(std::size_t frequency, int samples) {
    const double scale = frequency == 0 ? std::numbers::sqrt2 / 4 : 0.5;
    const int each = 8 / samples;
    double most = 0;
    for (int sample = 0; sample < samples; ++sample) {
        double sum = 0;
        for (int i = sample * each; i < (sample + 1) * each; ++i)
            sum += std::cos((2 * i + 1) * static_cast<double>(frequency) * std::numbers::pi / 16);
        most = std::max(most, std::abs(sum) * scale / each);
    }
    return most < 1e-9 ? 0 : most;
}

/// A number of steps, or of levels per step, far beyond any tolerance.
constexpr double kUnbounded = 1e9;

/// An upper bound of the error in a picture's pixels when scans are left out.
class Losses {
  public:
    explicit Losses(const std::vector<JpegComponent>& components) : components_(&components) {
        for (const JpegComponent& component : components) {
            Weights weights{};
            for (std::size_t i = 0; i < 64; ++i) {
                const std::size_t at = zigzag()[i];
                const double both =
                    gain(at / 8, component.samples) * gain(at % 8, component.samples);
                const double step = component.steps[at] == 0 ? kUnbounded : component.steps[at];
                weights[i] = both == 0 ? 0 : both * step;
            }
            weights_.push_back(weights);
            missing_.emplace_back();
        }
    }

    /// Counts all bits of the scan as lost.
    void add(const Scan& scan) {
        // Without its first scan, a coefficient may be anything.
        const double steps = scan.bitsBefore == 0 ? kUnbounded : (1U << scan.bitsBefore) - 1;
        for (const std::size_t component : scan.components) {
            std::fill(missing_[component].begin() + scan.first,
                      missing_[component].begin() + scan.last + 1, steps);
        }
    }

    /// The largest possible error of a pixel, in levels.
    double worst() const {
        std::array<double, 3> sums{};
        for (std::size_t component = 0; component < components_->size(); ++component) {
            const double levels = levelsOf(component);
            for (std::size_t color = 0; levels > 0 && color < 3; ++color)
                sums[color] += levels * (*components_)[component].levels[color];
        }
        return std::ranges::max(sums);
    }

  private:
    using Weights = std::array<double, 64>;

    /// Samples are rounded to whole levels, so any fraction may become a whole one.
    double levelsOf(std::size_t component) const {
        double sum = 0;
        for (std::size_t i = 0; i < 64; ++i) {
            const double weight = weights_[component][i];
            if (weight > 0 && missing_[component][i] > 0) sum += weight * missing_[component][i];
        }
        return std::ceil(sum);
    }

    const std::vector<JpegComponent>* components_;
    std::vector<Weights> weights_;
    std::vector<Weights> missing_;  // In quantiser steps.
};

/// Which coefficients of each component are coded in a scan that is kept.
class Kept {
  public:
    explicit Kept(std::size_t components) : held_(components) {}

    bool overlaps(const Scan& scan) const {
        return std::ranges::any_of(scan.components, [&](std::size_t component) {
            const auto& held = held_[component];
            return std::any_of(held.begin() + scan.first, held.begin() + scan.last + 1,
                               [](bool is) { return is; });
        });
    }
    void add(const Scan& scan) {
        for (const std::size_t component : scan.components) {
            std::fill(held_[component].begin() + scan.first,
                      held_[component].begin() + scan.last + 1, true);
        }
    }

  private:
    std::vector<std::array<bool, 64>> held_;
};

}  // namespace

ByteView wholeJpegSegments(ByteView file) {
    std::optional<Segment> segment;
    for (std::size_t at = 0; (segment = nextSegment(file, at)); at = segment->end) {
        if (segment->end > file.size()) return file.first(segment->begin);
    }
    return file;
}

Bytes withoutSurplusMetadata(ByteView file) {
    constexpr unsigned kExif = 0xE1, kProfile = 0xE2;
    constexpr int kMost = 1000;
    Bytes lighter;
    int count = 0;
    std::size_t from = 0;
    std::optional<Segment> segment;
    for (std::size_t at = 0; (segment = nextSegment(file, at)); at = segment->end) {
        if (segment->marker == kStartOfScan) break;
        if ((segment->marker != kExif && segment->marker != kProfile) || ++count <= kMost) continue;
        lighter.insert(lighter.end(), file.begin() + static_cast<std::ptrdiff_t>(from),
                       file.begin() + static_cast<std::ptrdiff_t>(segment->begin));
        from = segment->end;
    }
    if (from == 0) return {};
    lighter.insert(lighter.end(), file.begin() + static_cast<std::ptrdiff_t>(from), file.end());
    return lighter;
}

Bytes withoutSparedScans(ByteView file, const std::vector<JpegComponent>& components) {
    constexpr double kLevelsNobodySees = 2;
    const auto scans = scansOf(file, components);
    if (!scans) return {};
    Losses losses(components);
    Kept kept(components.size());
    std::vector<Scan> spared;
    // Backwards: a refinement scan is of no use without those of the higher bits.
    for (auto scan = scans->rbegin(); scan != scans->rend(); ++scan) {
        Losses more = losses;
        more.add(*scan);
        if (kept.overlaps(*scan) || more.worst() > kLevelsNobodySees) {
            kept.add(*scan);
        } else {
            losses = std::move(more);
            spared.push_back(*scan);
        }
    }
    if (spared.empty()) return {};
    Bytes shorter;
    const auto append = [&](ByteView part) {
        shorter.insert(shorter.end(), part.begin(), part.end());
    };
    std::size_t from = 0;
    for (auto scan = spared.rbegin(); scan != spared.rend(); ++scan) {
        append(file.subspan(from, scan->begin - from));
        from = scan->end;
    }
    append(file.subspan(from));
    return shorter;
}

}  // namespace tkv
