#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace tkv {

/// Limits for programs that may misbehave.
struct PipelineLimits {
    std::size_t bytes;               ///< of the output
    std::chrono::milliseconds time;  ///< until the output has ended
};

/// Runs programs concurrently, each one's output piped to the next one's input, and returns all
/// that the last one writes to its standard output and standard error. The first one's standard
/// input and the standard error of all but the last are inherited from this process.
///
/// `commands`: one at least; each the path of a program, without a search in $PATH, and its
/// arguments. `environment`: the programs' whole environment, as "NAME=value".
/// `limits`: none when null. With them the first program reads /dev/null, and when one is reached
/// the programs, and what they have started, are killed and what was read so far is returned,
/// without a truncated UTF-8 character.
///
/// A program that cannot be started leaves a gap: the one before it gets a broken pipe, the one
/// after it an end of file. Returns when every writer has closed the output, background processes
/// that a program has left included. Programs that still run are not waited for; the next call
/// reaps those that have exited by then. Exit statuses do not matter.
std::string runPipeline(const std::vector<std::vector<std::string>>& commands,
                        const std::vector<std::string>& environment,
                        const PipelineLimits* limits = nullptr);

}  // namespace tkv
