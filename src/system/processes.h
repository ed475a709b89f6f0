#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
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

/// Ends programs together: those that are run with it.
class ProgramStop {
  public:
    ProgramStop() = default;
    ProgramStop(ProgramStop&&) = delete;

    /// Ends all that are running, SIGTERM first and, the second time, SIGKILL, and keeps others
    /// from being started. Async-signal-safe.
    void stop();

    bool isStopped() const { return stopped_; }

    /// A running program that can be stopped while this lives. When all places are taken it ends by
    /// itself.
    class Place {
      public:
        Place(ProgramStop& stop, pid_t child);
        ~Place();
        Place(Place&&) = delete;

      private:
        std::atomic<pid_t>* place_ = nullptr;
    };

  private:
    static_assert(std::atomic<pid_t>::is_always_lock_free);

    std::atomic<bool> stopped_ = false;
    std::array<std::atomic<pid_t>, 64> running_{};  // 0 in a free place
};

/// A program that is started by itself, and what becomes of its streams.
struct Program {
    std::vector<std::string> command;  ///< looked up in $PATH unless it has a slash; its arguments
    std::string folder;  ///< where it runs and its files' relative paths begin; empty: here
    std::string input;   ///< a file; empty: nothing is to be read
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
        stopped,     ///< by its ProgramStop
    };
    How how = How::exited;
    int status = 0;  ///< of the exit, or the signal's number, or errno of what did not work
};

/// Runs a program and waits until it has ended. Any number may run at once, in threads.
ProgramEnd runProgram(Program program, ProgramStop& stop);

}  // namespace tkv
