#include "utils/tool_runner.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "system/description.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/processes.h"
#include "system/resources.h"
#include "system/unicode.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

using Words = std::vector<std::string>;

constexpr std::array<std::string_view, 4> kNoAnswers = {"", " ", "\n", " \n"};

// None when a command is empty.
std::optional<std::vector<Words>> commandsOf(const Words& words) {
    std::vector<Words> commands(1);
    for (const std::string& word : words) {
        if (word != "|") {
            const bool isUrl = word.find("://") != std::string::npos;
            commands.back().push_back(isUrl ? word : expandTilde(word));
        } else if (commands.back().empty()) {
            return std::nullopt;
        } else {
            commands.emplace_back();
        }
    }
    if (commands.back().empty()) return std::nullopt;
    return commands;
}

// The program of each command is there.
bool arePresent(const std::vector<Words>& commands) {
    for (const Words& command : commands) {
        if (!fileExists(command[0])) {
            logLine("taskArrayPipes      :-( tool !present '{}'", command[0]);
            return false;
        }
        verboseLine("taskArrayPipes      : ma {}",
                    describe(Words(command.begin() + 1, command.end())));
    }
    return true;
}

}  // namespace

std::optional<std::string> taskArrayPipes(const std::vector<std::string>& words,
                                          const PipelineLimits* limits) {
    logLine("taskArrayPipes      - begin");
    if (words.empty() || !fileExists(words[0])) return std::nullopt;
    verboseLine("taskArrayPipes      - 1");
    const auto commands = commandsOf(words);
    if (!commands) return std::nullopt;
    verboseLine("separatedArgsByTasksMa : {}", describeLists(*commands));
    const auto variables = toolEnvironment();
    verboseLine("env post            : {}",
                describe(std::vector<std::pair<std::string, std::string>>(variables.begin(),
                                                                          variables.end())));
    if (!arePresent(*commands)) return std::nullopt;
    Words environment;
    for (const auto& [name, value] : variables)
        environment.push_back(fmt::format("{}={}", name, value));
    std::string output = runPipeline(*commands, environment, limits);
    // There is no need to try ASCII next: every ASCII text is UTF-8 as well.
    if (!isUtf8(output)) return std::nullopt;
    if (std::find(kNoAnswers.begin(), kNoAnswers.end(), output) != kNoAnswers.end()) {
        return std::nullopt;
    }
    return output;
}

std::string tmpFolder() {
    return "/private/tmp/" + hostName();
}

std::map<std::string, std::string> toolEnvironment() {
    std::map<std::string, std::string> variables = environmentVariables();
    variables["LC_CTYPE"] = "en_US.UTF-8";
    variables["FONTCONFIG_FILE"] =
        joinPath(expandTilde("~/Library/Application Support/" + hostName()), "fonts.conf");
    variables["FONTCONFIG_PATH"] = joinPath(tmpFolder(), "app.app") + "/Contents/Resources/fonts";
    return variables;
}

}  // namespace tkv
