#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "disc/project/project.h"

// Names, paths and times as people write and read them. Nothing here looks at the disk.

namespace tkv::disc {

/// A caption made of a file's or folder's name: without its extension, blanks for underscores and
/// for dots between words, its first letter upper case. Parts
/// of a DVD are called as the folder that holds them. Valid UTF-8, whatever the name.
std::string readableName(std::string_view path);

/// A valid UTF-8 text with its first letter upper case.
std::string withCapital(const std::string& text);

/// What one film is called: as the person says, else as its own tag does, else by its name.
/// `tag`: its own title; may be empty.
std::string captionOf(const FilmRequest& request, std::string_view tag);

/// What a film is called where a run tells of it: its name, and of a DVD's titles which, or how
/// many parts there are.
std::string shortName(const FilmRequest& request);

/// What a disc image may be called: the text in capital letters without accents, digits and
/// underscores, at most 32 of them, "DVD" when nothing is left.
std::string volumeLabel(std::string_view text);

/// Seconds of "1:02:03.5", "62:03", "90", "5m", "1h30m" or "90s", below kLongestFilm; none for
/// anything else.
std::optional<double> secondsOf(std::string_view text);

/// "0:05", "12:34" or "1:02:03"; tenths and hundredths only where they count.
std::string timeText(double seconds);

/// A path without "." and "..", repeated slashes and one at its end. `folder`: absolute, where a
/// relative path begins.
std::string absolutePath(std::string_view path, std::string_view folder);

/// The part of a DVD that a VOB, IFO or BUP file is, by its name in any letter case.
struct DvdPart {
    int titleSet = 0;  ///< 1 to 99; 0 for VIDEO_TS.VOB, which holds menus of the whole disc
    int number = 0;    ///< 1 to 9: a piece of the title set's films; 0: its menus
    bool isVob = false;
};
std::optional<DvdPart> dvdPartOf(std::string_view path);

}  // namespace tkv::disc
