#include "disc/run/environment.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "system/paths.h"

namespace tkv::disc {

namespace {

// Longer than any path; long lines are too much for a regular expression.
constexpr std::size_t kMostPath = 5000;

// Empty for a variable that is not set. The environment changes only in useLanguage.
std::string variable(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr ? value : "";
}

}  // namespace

std::string currentFolder() {
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

std::string userLanguage() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::string value = variable(name); !value.empty()) return value;
    }
    return {};
}

std::vector<std::string> plainFolders() {
    const std::string home = variable("HOME");
    std::string config = variable("XDG_CONFIG_HOME");
    if (config.empty()) config = joinPath(home, ".config");
    std::vector<std::string> folders{home, "/tmp", "/var/tmp"};
    // XDG_VIDEOS_DIR="$HOME/Videos"
    static const std::regex pattern(R"re(XDG_[A-Z]+_DIR="(\$HOME)?(/[^"]*)"\s*)re");
    std::ifstream file(joinPath(config, "user-dirs.dirs"));
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (line.size() < kMostPath && std::regex_match(line, match, pattern))
            folders.push_back((match.length(1) > 0 ? home : "") + match.str(2));
    }
    return folders;
}

void useLanguage(const std::string& language) {
    setenv("LC_ALL", language.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
}

std::string programPath(const std::string& program) {
    const std::string path = variable("PATH");
    std::istringstream folders(path.empty() ? "/usr/bin:/bin" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string found = joinPath(folder.empty() ? "." : folder, program);
        if (access(found.c_str(), X_OK) != 0) continue;
        std::error_code error;
        return std::filesystem::absolute(found, error).string();
    }
    return {};
}

}  // namespace tkv::disc
