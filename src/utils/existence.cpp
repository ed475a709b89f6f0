#include "utils/existence.h"

#include <filesystem>

#include "system/files.h"
#include "system/paths.h"

namespace tkv {

namespace fs = std::filesystem;

bool folderExists(const std::optional<std::string>& path) {
    std::error_code ignored;
    return path && fs::is_directory(*path, ignored);
}

bool fileExists(const std::optional<std::string>& path) {
    if (!path || path->empty()) return false;
    const std::string target = expandTilde(*path);
    noteFileChanged(target);
    if (canBeRead(target)) return true;
    std::error_code ignored;
    return fs::exists(target, ignored) && fs::is_symlink(target, ignored);
}

void noteFileChanged(const std::optional<std::string>& /*path*/) {}

}  // namespace tkv
