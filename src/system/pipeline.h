#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace tkv {

/// What is granted to programs that may misbehave.
struct PipelineLimits {
    std::size_t bytes;               ///< of the answer
    std::chrono::milliseconds time;  ///< until the answer is whole
};

/// Runs programs side by side, each reading what the one before writes, and answers all that the
/// last one writes to its standard output and its standard error stream. The first one's standard
/// input and the standard error streams of all but the last are those of this process.
///
/// `commands`: one at least; each the path of a program, taken as it stands, and its arguments.
/// `environment`: all that the programs get, as "NAME=value".
/// `limits`: none when null. With them the first program reads /dev/null, and when one is reached
/// the programs are killed and what was read so far is the answer, but for a cut UTF-8 character.
///
/// A program that cannot be started leaves a gap: the one before writes to nobody, the one behind
/// reads nothing. Returns when nobody can write to the output any more, not even a process that a
/// program has left behind. Programs that run on are not waited for; the next call takes leave of
/// those that have ended by then. How they exited does not matter.
std::string runPipeline(const std::vector<std::vector<std::string>>& commands,
                        const std::vector<std::string>& environment,
                        const PipelineLimits* limits = nullptr);

}  // namespace tkv
