#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "disc/subtitle/picture.h"

// Subtitles as files of the format VobSub: an index of times (.idx), and the units that a player
// shows (.sub), in packs of a program stream. ffmpeg puts them into a film as they are.

namespace tkv::disc {

/// Bytes that a unit may have, so that a player holds it.
inline constexpr std::size_t kMostUnitBytes = 53'220;

/// Commands of a unit's control sequences.
enum SubpictureCommand : std::uint8_t {
    kForcedStart = 0,
    kStart = 1,
    kStop = 2,
    kSetColors = 3,
    kSetContrasts = 4,
    kSetArea = 5,
    kSetFields = 6,
    kSetParts = 7,
    kNoMore = 0xFF,
};

/// What a player shows for a while.
struct SubpictureUnit {
    double begin = 0, end = 0;                              ///< seconds of the disc's film
    std::vector<std::uint8_t> bytes;                        ///< its colours are still to be set
    std::array<std::uint32_t, kSubpictureColors> colors{};  ///< RRGGBB
};

/// A picture as a unit; none when it takes more bytes than a player holds. `isForced`: is it shown
/// where subtitles are switched off, too?
std::optional<SubpictureUnit> unitOf(const SubtitlePicture& picture, double begin, double end,
                                     bool isForced);

/// One track.
struct SubpictureTrack {
    std::string language;  ///< two letters
    std::vector<SubpictureUnit> units;
};

struct VobSub {
    std::string index;                ///< of the .idx
    std::vector<std::uint8_t> packs;  ///< of the .sub
    std::string palette;              ///< sixteen lines RRGGBB, all colours of all tracks
};

/// The files of some tracks, whose units share sixteen colours. Units come in the order of time.
VobSub vobSubOf(std::vector<SubpictureTrack> tracks);

}  // namespace tkv::disc
