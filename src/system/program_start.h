#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

#include "system/pipe.h"

namespace tkv {

/// That many pipes; none when there are too many open files.
std::vector<Pipe> makePipes(std::size_t count);

/// A null-terminated argv or envp array of pointers into the words, which must outlive it
/// unchanged.
std::vector<char*> argvOf(const std::vector<std::string>& words);

/// Descriptors for a program's standard streams; with -1 it inherits that of this process.
struct Streams {
    int input = -1;
    int output = -1;
    int errors = -1;
};

enum class Lookup { asItStands, inPath };

/// Starts the command, its program and arguments, with an empty signal mask, and the default action
/// of signals that this process ignores. `folder`: its working directory; empty: this one. Returns
/// 0, or errno of the failure.
int startProgram(const std::vector<std::string>& command, char* const* environment,
                 const Streams& streams, Lookup lookup, pid_t& child,
                 const std::string& folder = {});

}  // namespace tkv
