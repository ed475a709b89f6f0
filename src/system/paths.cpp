#include "system/paths.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace tkv {

namespace {

// Without trailing slashes; of a path of slashes alone one remains, the root.
std::string_view trimmed(std::string_view path) {
    return path.substr(
        0, std::max(path.find_last_not_of('/') + 1, std::min(path.size(), std::size_t{1})));
}

}  // namespace

// The environment changes only before there are other threads, and one thread looks accounts up.
// NOLINTBEGIN(concurrency-mt-unsafe)

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
    const passwd* entry = getpwuid(getuid());
    return entry != nullptr ? entry->pw_dir : "/";
}

std::string loginName() {
    const passwd* entry = getpwuid(getuid());
    return entry != nullptr ? entry->pw_name : "";
}

std::vector<std::string> accountHomes() {
    std::vector<std::string> homes;
    setpwent();
    while (const passwd* entry = getpwent())
        homes.emplace_back(entry->pw_dir);
    endpwent();
    return homes;
}

std::string expandTilde(std::string_view path) {
    if (!path.starts_with('~')) return std::string(path);
    const std::size_t nameEnd = std::min(path.find('/'), path.size());
    const std::string user(path.substr(1, nameEnd - 1));
    std::string home;
    if (user.empty()) {
        home = homeFolder();
    } else if (const passwd* entry = getpwnam(user.c_str())) {
        home = entry->pw_dir;
    } else {
        return std::string(path);
    }
    return joinPath(home, path.substr(nameEnd));
}

// NOLINTEND(concurrency-mt-unsafe)

std::string joinPath(std::string_view folder, std::string_view name) {
    if (folder.empty()) return std::string(name);
    std::string path(trimmed(folder));
    name.remove_prefix(std::min(name.find_first_not_of('/'), name.size()));
    if (name.empty()) return path;
    if (path.back() != '/') path += '/';
    return path.append(name);
}

std::string parentFolder(std::string_view path) {
    path = trimmed(path);
    return std::string(trimmed(path.substr(0, path.rfind('/') + 1)));
}

std::string lastComponent(std::string_view path) {
    path = trimmed(path);
    return std::string(path == "/" ? path : path.substr(path.rfind('/') + 1));
}

std::string pathExtension(std::string_view path) {
    const std::string name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

std::string withoutExtension(std::string_view path) {
    path = trimmed(path);
    const std::size_t length = pathExtension(path).size();
    return std::string(length == 0 ? path : path.substr(0, path.size() - length - 1));
}

std::string asciiLowered(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lowered;
}

}  // namespace tkv
