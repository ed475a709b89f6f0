#include "disc/run/environment.h"

#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
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

// The first of the variables that is set and not empty.
std::string firstOf(const std::array<const char*, 3>& names) {
    for (const char* name : names) {
        if (std::string value = variable(name); !value.empty()) return value;
    }
    return {};
}

// By the locale's own word, or where it is not installed, by its territory.
bool usesLetter(const std::string& locale) {
#ifdef __GLIBC__
    if (const locale_t found = newlocale(LC_PAPER_MASK, locale.c_str(), nullptr)) {
        // The number, in millimetres, is in the lower half of the pointer.
        const auto width = reinterpret_cast<std::uintptr_t>(nl_langinfo_l(_NL_PAPER_WIDTH, found));
        freelocale(found);
        return static_cast<std::uint32_t>(width) == 216;
    }
#endif
    constexpr std::array<std::string_view, 14> kTerritories{
        "BZ", "CA", "CL", "CO", "CR", "GT", "MX", "NI", "PA", "PH", "PR", "SV", "US", "VE"};
    const std::size_t mark = locale.find('_');
    return mark != std::string::npos &&
           std::ranges::find(kTerritories, locale.substr(mark + 1, 2)) != kTerritories.end();
}

}  // namespace

std::string currentFolder() {
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

std::string userLanguage() {
    return firstOf({"LC_ALL", "LC_MESSAGES", "LANG"});
}

Paper userPaper() {
    std::string paper = variable("PAPERSIZE");
    if (paper.empty()) std::getline(std::ifstream("/etc/papersize"), paper);
    const bool isLetter = paper.empty() ? usesLetter(firstOf({"LC_ALL", "LC_PAPER", "LANG"}))
                                        : asciiLowered(paper).find("letter") != std::string::npos;
    return isLetter ? Paper::letter : Paper::a4;
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

bool movesCursor() {
    const std::string terminal = variable("TERM");
    return !terminal.empty() && terminal != "dumb";
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

std::string programBeside(const std::string& program) {
    std::error_code error;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
    std::string beside = joinPath(own.parent_path().string(), program);
    return !error && access(beside.c_str(), X_OK) == 0 ? beside : programPath(program);
}

}  // namespace tkv::disc
