#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "system/descriptor.h"

namespace tkv {

/// Opens /dev/null in place of closed standard streams, so that no file opened later gets their
/// descriptors. To be called first.
void openStandardStreams();

/// This process's environment variables, by name.
std::map<std::string, std::string> environmentVariables();

/// Terminates programs together: those that are run with it.
class ProgramStop {
  public:
    ProgramStop() = default;
    ProgramStop(ProgramStop&&) = delete;

    /// Terminates all that are running, and what they have started, at the first call by SIGTERM,
    /// then by SIGKILL, and keeps others from being started. Async-signal-safe.
    void stop();

    /// Has all that are running wait, or go on: SIGSTOP or SIGCONT. Async-signal-safe.
    void signalAll(int signal) const;

    bool isStopped() const { return stopped_; }

    /// Seconds that its programs may need to end once they are asked to. While a disc is burnt, the
    /// drive has to be brought to rest; killed before that, it stays locked.
    unsigned patience() const { return patience_; }
    void setPatience(unsigned seconds) { patience_ = seconds; }

    static constexpr unsigned kPatience = 2;

    /// Registers a child process during its lifetime. If all slots are taken, the child is not
    /// stopped.
    class Slot {
      public:
        Slot(ProgramStop& stop, pid_t child);
        ~Slot();
        Slot(Slot&&) = delete;

      private:
        std::atomic<pid_t>* slot_ = nullptr;
    };

  private:
    static_assert(std::atomic<pid_t>::is_always_lock_free);
    static_assert(std::atomic<unsigned>::is_always_lock_free);

    std::atomic<bool> stopped_ = false;
    std::atomic<unsigned> patience_ = kPatience;
    std::array<std::atomic<pid_t>, 64> running_{};  // 0 is a free slot
};

/// A program to start, and the redirection of its streams.
struct Program {
    std::vector<std::string> command;  ///< the path of a program, and its arguments
    std::string folder;  ///< its working directory, where relative paths begin; empty: this one
    std::string input;   ///< a file; empty: /dev/null
    std::string output;  ///< a file, created or truncated; empty: its lines go to the callback
    /// Callbacks for each line of standard output and of standard error, as soon as it is written,
    /// without its line end; carriage returns end lines too. Called in the waiting thread.
    std::function<void(std::string_view line)> onOutput, onError;
    /// Callback for standard output as it comes, instead of its lines. Once it returns false the
    /// rest is not wanted: the program has nobody left to write to.
    std::function<bool(std::string_view bytes)> onBytes;
    /// Bytes of standard output after which the program is killed.
    std::size_t mostOutput = std::numeric_limits<std::size_t>::max();
    std::vector<std::string> hiddenVariables;  ///< of this environment, not handed on
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
        tooMuch,     ///< it wrote more than it may
        stopped,     ///< by its ProgramStop
    };
    How how = How::exited;
    int status = 0;  ///< the exit status, the signal's number, or errno of the failure
};

/// Runs a program and waits until it has ended. Any number may run at once, in threads.
ProgramEnd runProgram(Program program, ProgramStop& stop);

}  // namespace tkv
