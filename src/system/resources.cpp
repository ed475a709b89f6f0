#include "system/resources.h"

#include <filesystem>

#include "system/paths.h"

namespace tkv {

namespace {

std::string runningExecutable() {
    std::error_code error;
    return std::filesystem::canonical("/proc/self/exe", error).string();
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
