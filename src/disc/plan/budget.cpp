#include "disc/plan/budget.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tkv::disc {

namespace {

// Packs, their headers and navigation take their share: measured as 1.2 % and 44 kb/s.
constexpr double kOverheadShare = 1.015;
constexpr int kOverheadRate = 50;

// The tables of the disc and the file systems of its image.
constexpr std::int64_t kReserve = 2 << 20;

constexpr double kBytesOfKilobit = 1000.0 / 8.0;

int bestRate(const DiscLoad::Film& film) {
    return std::min(kBestVideoRate, kTopRate - film.soundRate);
}

bool isLookedAt(const DiscLoad::Film& film) {
    return film.hardness.front() > 0;
}

// What a picture of that hardness takes with a quantiser: a line in logarithms between those of the
// look, and beyond them.
double rateWith(double quantiser, const Hardness& hardness) {
    // So flat is the line of a film that has next to nothing in it.
    constexpr double kLeastFall = 0.2;
    const std::size_t i = quantiser < kLookQuantisers[1] ? 0 : 1;
    const double fall =
        std::max(kLeastFall, std::log(hardness[i] / hardness[i + 1]) /
                                 std::log(1.0 * kLookQuantisers[i + 1] / kLookQuantisers[i]));
    return hardness[1] * std::pow(quantiser / kLookQuantisers[1], -fall);
}

// What a film must not fall below. With its finest quantiser the encoder has no use for more, and
// others do; a tenth is for what the look has missed.
int leastRate(const DiscLoad::Film& film) {
    constexpr double kFinestQuantiser = 2;
    if (!isLookedAt(film)) return kLeastVideoRate;
    const double useful = 1.1 * rateWith(kFinestQuantiser, film.hardness);
    return static_cast<int>(std::clamp<double>(useful, kLowestVideoRate, kLeastVideoRate));
}

// The hardness of films at which nobody has looked: the mean, by their logarithms, of the others.
Hardness middleHardness(const DiscLoad& load) {
    Hardness logarithms{};
    double count = 0;
    for (const DiscLoad::Film& film : load.films) {
        if (!isLookedAt(film)) continue;
        for (std::size_t i = 0; i < logarithms.size(); ++i)
            logarithms[i] += std::log(film.hardness[i]);
        ++count;
    }
    Hardness middle{4000, 2000, 1000};
    for (std::size_t i = 0; i < middle.size() && count > 0; ++i)
        middle[i] = std::exp(logarithms[i] / count);
    return middle;
}

// The rates of the films' pictures with a quantiser, or what they may have that is next to it; the
// best with 0.
std::vector<int> videoRates(const DiscLoad& load, const Hardness& middle, double quantiser) {
    std::vector<int> rates;
    rates.reserve(load.films.size());
    for (const DiscLoad::Film& film : load.films) {
        const double wanted = rateWith(quantiser, isLookedAt(film) ? film.hardness : middle);
        const int best = bestRate(film);
        const int rate = wanted < best ? std::max(static_cast<int>(wanted), leastRate(film)) : best;
        rates.push_back(film.bytes > 0 ? 0 : std::min(rate, best));
    }
    return rates;
}

// The disc when its films get these rates.
std::int64_t discBytes(const DiscLoad& load, const std::vector<int>& videoRates, int menuRate) {
    std::int64_t bytes = kReserve + filmBytes(load.menuSeconds, menuRate + kStereoRate);
    for (std::size_t i = 0; i < load.films.size(); ++i) {
        const DiscLoad::Film& film = load.films[i];
        bytes +=
            film.bytes > 0 ? film.bytes : filmBytes(film.seconds, videoRates[i] + film.soundRate);
    }
    return bytes;
}

// The highest rate of the menus at which the disc still fits; the least when none does.
int menuRate(const DiscLoad& load, const std::vector<int>& videoRates, std::int64_t capacity) {
    int least = kLeastMenuRate, best = kBestMenuRate;
    while (least < best) {
        const int middle = (least + best + 1) / 2;
        if (discBytes(load, videoRates, middle) <= capacity) {
            least = middle;
        } else {
            best = middle - 1;
        }
    }
    return least;
}

// The films' rates with the lowest quantiser at which the disc still fits; the least when none
// does.
std::vector<int> equalQuality(const DiscLoad& load, const Hardness& middle, int menuRate,
                              std::int64_t capacity) {
    const auto ratesAt = [&](double logarithm) {
        return videoRates(load, middle, std::exp(logarithm));
    };
    // Every film has its best rate at one end, and the least at the other.
    double fine = -50, coarse = 50;
    for (int i = 0; i < 60; ++i) {
        const double between = (fine + coarse) / 2;
        const bool fits = discBytes(load, ratesAt(between), menuRate) <= capacity;
        (fits ? coarse : fine) = between;
    }
    return ratesAt(coarse);
}

}  // namespace

std::int64_t filmBytes(double seconds, int rate) {
    return static_cast<std::int64_t>(seconds * kBytesOfKilobit *
                                     (rate * kOverheadShare + kOverheadRate));
}

Rates shareRates(const DiscLoad& load, DiscSize size) {
    const std::int64_t capacity = capacityOf(size);
    const Hardness middle = middleHardness(load);
    Rates rates;
    rates.video = videoRates(load, middle, 0);
    rates.menu = menuRate(load, rates.video, capacity);
    rates.bytes = discBytes(load, rates.video, rates.menu);
    if (rates.bytes > capacity) {
        rates.video = equalQuality(load, middle, rates.menu, capacity);
        rates.bytes = discBytes(load, rates.video, rates.menu);
    }
    rates.missing = std::max<std::int64_t>(0, rates.bytes - capacity);
    return rates;
}

}  // namespace tkv::disc
