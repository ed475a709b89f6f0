#include "disc/run/environment.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "system/paths.h"

namespace tkv::disc {

namespace {

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
