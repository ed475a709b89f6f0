#include "disc/plan/budget.h"

#include <algorithm>

namespace tkv::disc {

namespace {

// Packs, their headers and navigation take their share: measured as 1.2 % and 44 kb/s.
constexpr double kOverheadShare = 1.015;
constexpr int kOverheadRate = 50;

// The tables of the disc and the file systems of its image.
constexpr std::int64_t kReserve = 2 << 20;

constexpr double kBytesOfKilobit = 1000.0 / 8.0;

int filmRate(const DiscLoad::Film& film, int wanted) {
    return std::min({wanted, kBestVideoRate, kTopRate - film.soundRate});
}

// The disc when every film gets the rate that is wanted, or as much as it may.
std::int64_t discBytes(const DiscLoad& load, int videoRate, int menuRate) {
    std::int64_t bytes = kReserve + filmBytes(load.menuSeconds, menuRate + kStereoRate);
    for (const DiscLoad::Film& film : load.films) {
        bytes += film.bytes > 0
                     ? film.bytes
                     : filmBytes(film.seconds, filmRate(film, videoRate) + film.soundRate);
    }
    return bytes;
}

// The highest rate from `least` to `best` at which the disc still fits; `least` when none does.
template <typename Bytes>
int highestRate(int least, int best, std::int64_t capacity, Bytes bytesAt) {
    while (least < best) {
        const int middle = (least + best + 1) / 2;
        if (bytesAt(middle) <= capacity) {
            least = middle;
        } else {
            best = middle - 1;
        }
    }
    return least;
}

}  // namespace

std::int64_t filmBytes(double seconds, int rate) {
    return static_cast<std::int64_t>(seconds * kBytesOfKilobit *
                                     (rate * kOverheadShare + kOverheadRate));
}

Rates shareRates(const DiscLoad& load, DiscSize size) {
    const std::int64_t capacity = capacityOf(size);
    Rates rates;
    rates.menu = highestRate(kLeastMenuRate, kBestMenuRate, capacity,
                             [&](int rate) { return discBytes(load, kBestVideoRate, rate); });
    const int video = highestRate(kLeastVideoRate, kBestVideoRate, capacity,
                                  [&](int rate) { return discBytes(load, rate, rates.menu); });
    for (const DiscLoad::Film& film : load.films)
        rates.video.push_back(film.bytes > 0 ? 0 : filmRate(film, video));
    rates.bytes = discBytes(load, video, rates.menu);
    rates.missing = std::max<std::int64_t>(0, rates.bytes - capacity);
    return rates;
}

}  // namespace tkv::disc
