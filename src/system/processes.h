#pragma once

#include <map>
#include <string>
#include <vector>

namespace tkv {

/// Leads those of the standard streams that are closed to /dev/null, so that no file that is opened
/// later is taken for one of them. To be called first.
void openStandardStreams();

/// This process's environment variables, by name.
std::map<std::string, std::string> environmentVariables();

/// Runs programs side by side, each reading what the one before writes, and answers all that the
/// last one writes to its standard output and its standard error stream. The first one's standard
/// input and the standard error streams of all but the last are those of this process.
///
/// `commands`: one at least; each the path of a program, taken as it stands, and its arguments.
/// `environment`: all that the programs get, as "NAME=value".
///
/// A program that cannot be started leaves a gap: the one before writes to nobody, the one behind
/// reads nothing. Returns when nobody can write to the output any more, not even a process that a
/// program has left behind. Programs that run on are not waited for; the next call takes leave of
/// those that have ended by then. How they exited does not matter.
std::string runPipeline(const std::vector<std::vector<std::string>>& commands,
                        const std::vector<std::string>& environment);

}  // namespace tkv
