#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "disc/run/fault.h"

// What ffmpeg and ffprobe are allowed to read of a file that others have made. By itself ffprobe
// takes a playlist for a film, whatever its name, and reads what it names: other files of this
// machine.

namespace tkv::disc {

/// The command of ffmpeg or ffprobe, each of its inputs that is a file ("file:…") or a list of VOBs
/// ("concat:…") limited to files of the formats that hold films or sound themselves.
std::vector<std::string> guardedCommand(const std::vector<std::string>& command);

/// What a file is that a reader does not take.
struct ForeignFormat {
    std::string words;  ///< "it is a text"
    NoFilm::Kind kind = NoFilm::Kind::other;
};

/// What one of the reader's lines says about the format of a file; none when it says nothing.
std::optional<ForeignFormat> foreignFormat(std::string_view line);

}  // namespace tkv::disc
