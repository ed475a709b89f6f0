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

enum class Group {
    ours,  ///< this process's, which a terminal's keys reach
    /// One of its own, with the child's number, that it shares with what it starts itself. Where
    /// the system can do that, the child, but not what it has started, is killed when the thread
    /// that started it ends, however that ends.
    own,
};

/// Starts the command, the path of a program and its arguments, with an empty signal mask, and the
/// default action of SIGPIPE and SIGXFSZ, which this process ignores. `folder`: its working
/// directory; empty: this one. Returns 0, or errno of the failure.
int startProgram(const std::vector<std::string>& command, char* const* environment,
                 const Streams& streams, Group group, pid_t& child, const std::string& folder = {});

}  // namespace tkv
