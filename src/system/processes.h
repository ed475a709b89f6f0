#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "system/descriptor.h"

namespace tkv {

/// Leads those of the standard streams that are closed to /dev/null, so that no file that is opened
/// later is taken for one of them. To be called first.
void openStandardStreams();

/// This process's environment variables, by name.
std::map<std::string, std::string> environmentVariables();

/// A program that is started by itself, and what becomes of its streams.
struct Program {
    std::vector<std::string> command;  ///< looked up in $PATH unless it has a slash; its arguments
    std::string input;                 ///< a file; empty: nothing is to be read
    std::string output;  ///< a file that is created or emptied; empty: its lines are handed on
    /// Is given each line of the standard output and of the standard error stream, as soon as it is
    /// written, without its end; carriage returns end lines too. Called in the thread that waits.
    std::function<void(std::string_view line)> onOutput, onError;
    /// The read end of a pipe, instead of the input file.
    Descriptor stream = Descriptor(-1);
};

/// How a program ended.
struct ProgramEnd {
    enum class How {
        exited,
        killed,      ///< by a signal
        notStarted,  ///< there is no such program, or it may not be run
        noFile,      ///< its input or output could not be opened
        stopped,     ///< by stopPrograms
    };
    How how = How::exited;
    int status = 0;  ///< of the exit, or the signal's number, or errno of what did not work
};

/// Runs a program and waits until it has ended. Any number may run at once, in threads.
ProgramEnd runProgram(Program program);

/// Ends all programs that runProgram waits for, SIGTERM first, and keeps others from being started.
/// Async-signal-safe.
void stopPrograms();

/// Has stopPrograms been called?
bool areProgramsStopped();

}  // namespace tkv
