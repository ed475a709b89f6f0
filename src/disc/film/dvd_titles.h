#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "system/processes.h"

// What the tables of a DVD tell of its films, and ffprobe does not know.

namespace tkv::disc {

/// For whom subtitles are.
enum class SubtitleKind {
    normal,
    hearing,     ///< for those who hear badly: they tell of sounds, too
    commentary,  ///< of what somebody says about the film
    forced,      ///< for those who understand the film's sound: signs, and what is said in others
};

/// A stream of sound or subtitles.
struct DvdStream {
    int id = 0;                   ///< as a program stream numbers it, and ffprobe: 0x80, 0x20
    std::string language = "xx";  ///< two letters of ISO 639-1; "xx" when unknown
    SubtitleKind kind = SubtitleKind::normal;
    int letterboxed = 0;  ///< of subtitles: the stream for displays that show a film between bars
    bool operator==(const DvdStream&) const = default;
};

/// Sectors of a title set's VOBs.
struct SectorRange {
    std::int64_t first = 0;
    std::int64_t end = 0;  ///< behind the last
    bool operator==(const SectorRange&) const = default;
};

/// Sixteen colours: Y, Cr and Cb, eight bits each.
using DvdPalette = std::array<std::uint32_t, 16>;

/// A part of a title in which time goes on; the next one begins anew.
struct TitleRun {
    double seconds = 0;       ///< of the title, when it begins
    std::int64_t sector = 0;  ///< of all that the title plays
    bool operator==(const TitleRun&) const = default;
};

/// A title: what is shown as one film.
struct DvdTitle {
    int number = 0;    ///< on the disc, from 1
    int titleSet = 0;  ///< whose VOBs it is in
    double seconds = 0;
    std::vector<SectorRange> cells;           ///< what it plays, in order; neighbours are joined
    std::vector<TitleRun> runs;               ///< the first is all of most titles
    std::vector<double> chapters;             ///< seconds, rising; the first is at 0
    std::vector<DvdStream> sound, subtitles;  ///< in the order of the disc
    DvdPalette palette{};                     ///< of the subtitles
    bool isInterleaved = false;  ///< do other angles lie between the sectors of its cells?
};

/// Bytes of a sector.
inline constexpr std::int64_t kSectorBytes = 2048;

/// The titles of a DVD's folder, in their order; none where its tables are missing or damaged, or
/// the program that reads them is. Takes some hundredths of a second. Throws Interrupted.
std::vector<DvdTitle> dvdTitlesIn(const std::string& folder, ProgramStop& stop);

/// The titles that an answer of that program tells of, without those that make no sense.
std::vector<DvdTitle> dvdTitlesFrom(const std::string& json);

}  // namespace tkv::disc
