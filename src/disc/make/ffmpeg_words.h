#pragma once

#include <string>
#include <vector>

namespace tkv::disc {

/// The words of a command.
using Words = std::vector<std::string>;

inline void append(Words& words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
}

/// The beginning of every command to make something: it overwrites what is there, asks nothing,
/// complains of errors only, and tells how far it is on the standard output.
inline Words ffmpegStart() {
    return {"ffmpeg", "-nostdin", "-v", "error", "-progress", "pipe:1", "-nostats", "-y"};
}

}  // namespace tkv::disc
