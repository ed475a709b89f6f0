#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Cameras write long recordings into several files, since many cards' file system holds none above
// 4 GB.

namespace tkv::disc {

/// A piece of a recording, as cameras name it.
struct ClipName {
    std::string recording;  ///< what all of its pieces have in common
    int number = 0;         ///< of the piece; rises by one from piece to piece
    bool isSure = false;    ///< Is nothing else called so? Else it may be a number of any kind.
};

/// What a file's name says: "GX020123.MP4" and "GP010123.MP4" are pieces, "holiday_002.mov" may be;
/// none for all others.
std::optional<ClipName> clipNamed(std::string_view path);

/// Puts pieces behind each other among those places of a list that hold such: by name alone, all
/// first pieces would come first.
void orderByRecording(std::vector<std::string>& paths);

}  // namespace tkv::disc
