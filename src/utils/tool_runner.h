#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "system/pipeline.h"

namespace tkv {

/// Runs the command or pipeline that the words make and returns what its last command wrote to
/// standard output and standard error, as UTF-8.
///
/// `words`: the word "|" separates the commands; each begins with the path of its program; $PATH is
/// not searched. A word's leading tilde is expanded unless the word is a URL.
///
/// None, with nothing started, for no words, an empty command or a program that is not there; none
/// also when the output is empty, a blank, a line feed or both, or is not UTF-8. `limits`: as
/// runPipeline takes them; none means unlimited.
std::optional<std::string> taskArrayPipes(const std::vector<std::string>& words,
                                          const PipelineLimits* limits = nullptr);

/// The host application's temporary folder.
std::string tmpFolder();

/// The environment in which `taskArrayPipes` runs programs, by name: this process's own, with UTF-8
/// as the character type and the host application's font setup.
std::map<std::string, std::string> toolEnvironment();

}  // namespace tkv
