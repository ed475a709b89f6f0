#include "utils/tool_runner.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/description.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/processes.h"
#include "platform/resources.h"
#include "platform/unicode.h"
#include "platform/verbose.h"
#include "utils/existence.h"

#ifdef __APPLE__
extern char** environ;
#endif

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
        if (isVerbose()) {
            logLine("taskArrayPipes      : ma {}",
                    describe(Words(command.begin() + 1, command.end())));
        }
    }
    return true;
}

}  // namespace

std::optional<std::string> taskArrayPipes(const std::vector<std::string>& words) {
    logLine("taskArrayPipes      - begin");
    if (words.empty() || !fileExists(words[0])) return std::nullopt;
    if (isVerbose()) logLine("taskArrayPipes      - 1");
    const auto commands = commandsOf(words);
    if (!commands) return std::nullopt;
    if (isVerbose()) logLine("separatedArgsByTasksMa : {}", describeLists(*commands));
    const auto variables = toolEnvironment();
    if (isVerbose()) {
        logLine("env post            : {}",
                describe(std::vector<std::pair<std::string, std::string>>(variables.begin(),
                                                                          variables.end())));
    }
    if (!arePresent(*commands)) return std::nullopt;
    Words environment;
    for (const auto& [name, value] : variables)
        environment.push_back(fmt::format("{}={}", name, value));
    std::string output = runPipeline(*commands, environment);
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
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const std::size_t end = variable.find('=');
        if (end != std::string_view::npos) {
            variables.emplace(variable.substr(0, end), variable.substr(end + 1));
        }
    }
    variables["LC_CTYPE"] = "en_US.UTF-8";
    variables["FONTCONFIG_FILE"] =
        joinPath(expandTilde("~/Library/Application Support/" + hostName()), "fonts.conf");
    variables["FONTCONFIG_PATH"] = joinPath(tmpFolder(), "app.app") + "/Contents/Resources/fonts";
    return variables;
}

}  // namespace tkv
