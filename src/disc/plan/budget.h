#pragma once

#include <cstdint>
#include <vector>

#include "disc/project/project.h"

// How the bytes of a disc are shared out. Rates are in kb/s (thousands of bits a second).

namespace tkv::disc {

/// What films may take at most with their sound, so that their packs stay below a player's limit.
inline constexpr int kTopRate = 9800;

/// What a film's picture gets where there is room for everything, and what it must not fall below.
inline constexpr int kBestVideoRate = 8000;
inline constexpr int kLeastVideoRate = 1500;

/// The same of the menus' pictures.
inline constexpr int kBestMenuRate = 6000;
inline constexpr int kLeastMenuRate = 2500;

/// Of the sound of menus, and of a film's stereo track.
inline constexpr int kStereoRate = 192;

/// Bytes of a blank disc.
constexpr std::int64_t capacityOf(DiscSize size) {
    return size == DiscSize::dvd5 ? 4'700'372'992 : 8'547'991'552;
}

/// What a disc is to hold.
struct DiscLoad {
    struct Film {
        double seconds = 0;
        int soundRate = 0;       ///< all tracks together
        std::int64_t bytes = 0;  ///< when they are known already; else 0
    };
    std::vector<Film> films;
    double menuSeconds = 0;  ///< of all pages together
};

struct Rates {
    int menu = 0;
    std::vector<int> video;  ///< of each film; 0 of those whose bytes are known
    std::int64_t bytes = 0;  ///< of the disc that comes of it
    /// Bytes that are missing though every rate is the least; 0 when the disc fits.
    std::int64_t missing = 0;
};

/// Shares out a disc: all films of unknown size get the same video rate, as far as their sound and
/// the best rate allow; menus give way before films do.
Rates shareRates(const DiscLoad& load, DiscSize size);

/// The bytes of `seconds` of film at a rate of picture and sound, with all that goes around them.
std::int64_t filmBytes(double seconds, int rate);

}  // namespace tkv::disc
