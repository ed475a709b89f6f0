#pragma once

#include <array>
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

/// What it gets at least where it has no use for more, or where the disc would be too large.
inline constexpr int kLowestVideoRate = 1000;

/// The same of the menus' pictures.
inline constexpr int kBestMenuRate = 6000;
inline constexpr int kLeastMenuRate = 2500;

/// Of the sound of menus, and of a film's stereo track.
inline constexpr int kStereoRate = 192;

/// Bytes of a blank disc.
constexpr std::int64_t capacityOf(DiscSize size) {
    return size == DiscSize::dvd5 ? 4'700'372'992 : 8'547'991'552;
}

/// The quantisers with which a look at a film tells how hard it is: their steps are a third of, as
/// wide as, and twice as wide as those of films on a disc that is full.
inline constexpr std::array kLookQuantisers{3, 6, 12};

/// How hard a film is: what its picture takes with each of these quantisers, in kb/s, above 0 and
/// falling. All 0 when nobody has looked.
using Hardness = std::array<double, kLookQuantisers.size()>;

/// What a disc is to hold.
struct DiscLoad {
    struct Film {
        double seconds = 0;
        int soundRate = 0;       ///< all that is not the picture: sound and subtitles
        std::int64_t bytes = 0;  ///< when they are known already; else 0
        Hardness hardness{};
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

/// Shares out a disc: all films of unknown size get the rates at which they have the same
/// quantiser, and so look equally good, within the least and best rates and what their sound
/// allows. One at which nobody has looked counts for as hard as the others are on average; are all
/// of that kind, they get the same rate. Menus give way before films do.
Rates shareRates(const DiscLoad& load, DiscSize size);

/// The bytes of `seconds` of film at a rate of picture and sound, with all that goes around them.
std::int64_t filmBytes(double seconds, int rate);

}  // namespace tkv::disc
