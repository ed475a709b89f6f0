#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "system/pipe.h"

namespace tkv {

/// So many pipes; none when there are too many open files.
std::vector<Pipe> makePipes(std::size_t count);

/// An argv or envp array of the words, which must outlive it and are not to be changed.
std::vector<char*> argvOf(const std::vector<std::string>& words);

/// What a program gets as its streams; -1 leaves one as this process has it.
struct Streams {
    int input = -1;
    int output = -1;
    int errors = -1;
};

enum class Lookup { asItStands, inPath };

/// Starts the command, its program and arguments, with no signal blocked and those that this
/// process ignores as a program expects them. `folder`: where it runs; empty: here. Returns 0, or
/// errno of why that was not possible.
int startProgram(const std::vector<std::string>& command, char* const* environment,
                 const Streams& streams, Lookup lookup, pid_t& child,
                 const std::string& folder = {});

}  // namespace tkv
