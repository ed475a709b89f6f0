#include "utils/existence.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "platform/paths.h"

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
    // Without O_NONBLOCK the opening of a FIFO would wait for somebody to write to it.
    const int descriptor = open(target.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor >= 0) {
        close(descriptor);
        return true;
    }
    std::error_code ignored;
    return fs::exists(target, ignored) && fs::is_symlink(target, ignored);
}

void noteFileChanged(const std::optional<std::string>& /*path*/) {}

}  // namespace tkv
