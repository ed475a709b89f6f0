#include "system/resources.h"

#include <filesystem>

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <array>
#endif

#include "system/paths.h"

namespace tkv {

namespace {

std::string runningExecutable() {
#ifdef __APPLE__
    std::array<char, 4096> buffer{};
    auto size = static_cast<std::uint32_t>(buffer.size());
    if (_NSGetExecutablePath(buffer.data(), &size) != 0) return {};
    const char* const path = buffer.data();
#else
    const char* const path = "/proc/self/exe";
#endif
    std::error_code error;
    return std::filesystem::canonical(path, error).string();
}

}  // namespace

std::string resourceFolder() {
    return resourceFolder(runningExecutable());
}

std::string resourceFolder(const std::string& executable) {
    if (executable.empty()) return {};
    const std::string folder = parentFolder(executable);
    const std::string above = parentFolder(folder);
    const bool inBundle = lastComponent(folder) == "MacOS" && lastComponent(above) == "Contents";
    return joinPath(above, inBundle ? "Resources" : "share/tkvDvdMenuImg");
}

std::string hostName() {
    return TKV_HOST_NAME;
}

}  // namespace tkv
