#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "system/processes.h"

// The programs that make the pieces of a disc. Their exit statuses alone do not tell whether they
// did: who starts one looks at what it made, too.

namespace tkv::disc {

/// Throws DiscError, with the package to install, when one of the programs is not to be found.
void requirePrograms(const std::vector<std::string>& names);

/// Runs a program and answers the lines of its standard error stream. Throws DiscError, which
/// begins with `task` ("beach.mp4 could not be encoded") and ends with the program's last words,
/// when it did not end with status 0 or one of its lines begins with "ERR"; Interrupted when the
/// run is to stop.
std::string runTool(Program program, std::string_view task);

/// Runs ffmpeg with words that end on "-progress pipe:1", and answers the frames that it has
/// written to its first output. `onSeconds` is told how much of it is written. `input`: the end of
/// a pipe from which it reads "pipe:0"; nothing by default. Throws as runTool.
int runEncoder(const std::vector<std::string>& command, std::string_view task,
               const std::function<void(double seconds)>& onSeconds = {},
               Descriptor input = Descriptor(-1));

/// What a text file holds; empty when it cannot be read.
std::string readText(const std::string& path);

/// Writes a text file; throws DiscError when it could not be written whole.
void writeText(const std::string& path, std::string_view text);

/// The cause that the last of a program's lines tells, as the end of a sentence: without the names
/// of files and parts of the program before it.
std::string lastWords(std::string_view lines);

}  // namespace tkv::disc
