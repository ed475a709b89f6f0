#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "system/pipeline.h"

namespace tkv {

/// Runs the command or pipeline that the words make and answers what its last command printed to
/// both its output streams, as UTF-8.
///
/// `words`: the word "|" separates the commands; each begins with the path of its program, no
/// search path is looked at. A word's leading tilde is expanded unless the word is a URL.
///
/// None, with nothing started, for no words, an empty command or a program that is not there; none
/// also when all that was printed is nothing, a blank, a line feed or both, or is not UTF-8.
/// `limits`: as runPipeline takes them; without, it waits as long and reads as much as it has to.
std::optional<std::string> taskArrayPipes(const std::vector<std::string>& words,
                                          const PipelineLimits* limits = nullptr);

/// The host application's temporary folder.
std::string tmpFolder();

/// The environment in which `taskArrayPipes` runs programs, by name: this process's own, with UTF-8
/// as the character type and the host application's font setup.
std::map<std::string, std::string> toolEnvironment();

}  // namespace tkv
