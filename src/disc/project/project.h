#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "disc/project/labels.h"
#include "disc/project/standard.h"

// What a person asks for, on the command line or in a project file. Nothing in it has been compared
// with the films yet.

namespace tkv::disc {

/// Films that one disc can hold.
inline constexpr std::size_t kMostFilms = 99;

/// Seconds. A film that says it is longer counts as this long, which no disc holds; what is damaged
/// may name any time at all.
inline constexpr double kLongestFilm = 100 * 3600;

/// The kinds of blank discs, single and dual layer.
enum class DiscSize { dvd5, dvd9 };

/// A point where a chapter begins.
struct Chapter {
    double seconds = 0;  ///< from the film's first frame
    std::string name;    ///< empty: the menu numbers it
    bool operator==(const Chapter&) const = default;
};

/// Where the chapters of films come from that are not given any by hand.
struct ChapterRule {
    enum class Source {
        marks,  ///< the film's own; a film without has no chapter menu
        every,  ///< one each `seconds`
        none,   ///< no chapter menus
    };
    Source source = Source::marks;
    double seconds = 0;
    bool operator==(const ChapterRule&) const = default;
};

/// A file of subtitles.
struct SubtitleRequest {
    std::string path;                     ///< absolute
    std::optional<std::string> language;  ///< two letters; else what its name tells
    std::optional<bool> isForced;         ///< the same
    bool operator==(const SubtitleRequest&) const = default;
};

/// Rows and columns that are cut off a picture as it is shown, upright.
struct Edges {
    int left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const Edges&) const = default;
};

/// What somebody wants to be otherwise than it is in a film. Times are the film's own, in seconds
/// from its first frame.
struct FilmChoices {
    double start = 0;             ///< what comes before is left out
    std::optional<double> end{};  ///< the same of what comes behind
    /// Two letters of languages, or numbers from 1.
    std::optional<std::vector<std::string>> audio{};
    double audioDelay = 0;  ///< seconds by which the sound comes later; below 0: earlier
    bool cutsBars = false;  ///< are black bars to be found and cut off?
    Edges edges{};          ///< else what is cut off
    double aspect = 0;      ///< width to height of the whole picture; 0: its own
    /// Are whole pictures to be made of fields, or are they whole, whatever the film tells?
    std::optional<bool> deinterlace{};
    std::string place{};  ///< where that stands: "film.toml:12"
    bool operator==(const FilmChoices&) const = default;
};

/// Seconds for which a picture of a film of such may be shown.
inline constexpr double kLeastSlideSeconds = 1.5, kMostSlideSeconds = 600;

/// Pictures that make a film, one after another.
struct SlideRequest {
    std::vector<std::string> paths;  ///< absolute; pictures, or folders of them
    double seconds = 6;              ///< each
    bool moves = false;              ///< does each fill the frame, and move slowly?
    std::vector<std::string> music;  ///< absolute paths; under the whole film
    bool fitsMusic = false;          ///< do they share its length, instead of `seconds`?
    bool showsTitles = false;        ///< are their own titles drawn onto them?
    bool operator==(const SlideRequest&) const = default;
};

struct FilmRequest {
    /// Absolute; a film, the first VOB of a title, or a folder: a DVD's, or one with films. Of
    /// slides the folder that they are called by.
    std::string path;
    std::optional<std::string> caption;
    std::vector<double> excerpts;  ///< seconds at which the thumbnail's pictures begin, the first
    std::optional<std::vector<Chapter>> chapters;
    bool isListed = false;  ///< on the command line, where a shell may have listed a folder
    std::optional<std::vector<SubtitleRequest>> subtitles{};  ///< instead of those found
    /// Two letters of the subtitles that are shown from the start, or kNone; else as Project's.
    std::optional<std::string> shown{};
    /// Of a DVD's titles, from 1, the only one that is meant; 0: as Project's.
    int title = 0;
    std::optional<SlideRequest> slides{};  ///< of which it is made, instead of a file
    std::vector<std::string> parts{};  ///< absolute; files that make it together, `path` the first
    FilmChoices choices{};
    std::string folder{};  ///< absolute; the one that was named instead of all that is in it
    bool operator==(const FilmRequest&) const = default;

    /// Whether it says more than one film could be given.
    bool isOfOne() const {
        return caption || chapters || subtitles || !excerpts.empty() || title > 0 ||
               choices.start > 0 || choices.end;
    }
};

/// Instead of a language: subtitles that are found stand on the disc, and are shown on demand.
inline constexpr std::string_view kAuto = "auto";

/// Instead of a path: a background or music that is not wanted. Instead of a language: no
/// subtitles.
inline constexpr std::string_view kNone = "none";

struct Project {
    std::vector<FilmRequest> films;
    std::optional<std::string> title;
    std::optional<std::string> background;  ///< absolute path of a picture, or kNone
    std::optional<std::string> music;       ///< the same of the menus' sound
    std::optional<Standard> standard;       ///< by default what most films suggest
    DiscSize size = DiscSize::dvd5;
    ChapterRule chapters;
    /// Two letters of the subtitles that are shown from the start, kAuto or kNone.
    std::string subtitles{kAuto};
    bool hasAllTitles = true;     ///< of DVDs, or else only their longest?
    bool evenVolume = false;      ///< are the films made equally loud?
    bool keepsPitch = true;       ///< of the sound of films that play faster?
    bool playsFirstFilm = false;  ///< before the menu comes
    bool hasMenu = true;
    bool dimsBackground = true;  ///< as far as the menus' texts need it
    Labels labels;
    /// Absolute paths of folders whose names say nothing of the films in them.
    std::vector<std::string> plainFolders{};
    bool joinsClips = false;  ///< are pieces of one recording one film?
    bool operator==(const Project&) const = default;
};

}  // namespace tkv::disc
