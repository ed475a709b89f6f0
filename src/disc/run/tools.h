#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "system/processes.h"

// The programs that make the pieces of a disc. Their exit statuses alone do not tell whether they
// did: who starts one looks at what it made, too.

namespace tkv::disc {

/// Throws DiscError, with the package to install, when one of the programs is not to be found.
void requirePrograms(const std::vector<std::string>& names);

/// What is said of a program that fails.
struct Failure {
    std::string about;   ///< as Fault has it
    std::string task;    ///< "beach.mp4 could not be encoded"; the cause comes behind it
    std::string advice;  ///< a sentence behind that; may be empty
};

/// Starts the programs of one run. May be used from several threads.
class Tools {
  public:
    /// What they write to their standard error streams goes here, too, behind what is there.
    static constexpr const char* kLog = "programs.log";

    /// `folder`: their working directory, and that of the log; empty: that of this process, without
    /// a log. `stop`: must outlive it.
    Tools(std::string folder, ProgramStop& stop) : folder_(std::move(folder)), stop_(stop) {}

    /// Runs a program and returns the lines of its standard error stream. Throws DiscError when it
    /// did not end with status 0 or one of its lines begins with "ERR": that of `failure`, with the
    /// program's last line for the cause; NoFilm when ffmpeg or ffprobe was given a text, a picture
    /// or a playlist; Interrupted when the run is to stop.
    std::string run(Program program, const Failure& failure) const;
    std::string run(const std::vector<std::string>& command, const Failure& failure) const;

    /// Runs ffmpeg with "-progress pipe:1" among its arguments, and returns the number of frames
    /// that it has written to its first output. `onSeconds` is told how much of it is written.
    /// `input`: the end of a pipe from which it reads "pipe:0"; nothing by default. `onError`: is
    /// told each line of its standard error stream. Throws as run.
    int encode(const std::vector<std::string>& command, const Failure& failure,
               const std::function<void(double seconds)>& onSeconds = {},
               Descriptor input = Descriptor(-1),
               std::function<void(std::string_view line)> onError = {}) const;

    ProgramStop& stop() const { return stop_; }

  private:
    void log(const std::vector<std::string>& command, const std::string& lines) const;

    std::string folder_;
    mutable std::mutex mutex_;
    ProgramStop& stop_;
};

/// The cause that the last of a program's lines tells, as the end of a sentence: without the names
/// of files and parts of the program before it.
std::string lastWords(std::string_view lines);

}  // namespace tkv::disc
