#pragma once

#include <string>
#include <vector>

namespace tkv::disc {

/// The arguments of a command, its program first.
using Arguments = std::vector<std::string>;

inline void append(Arguments& arguments, const Arguments& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
}

/// The beginning of every command to make something: it overwrites what is there, asks nothing,
/// complains of errors only, and tells how far it is on the standard output.
inline Arguments ffmpegStart() {
    return {"ffmpeg", "-nostdin", "-v", "error", "-progress", "pipe:1", "-nostats", "-y"};
}

}  // namespace tkv::disc
