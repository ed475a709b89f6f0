#include "composer/reasons.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "system/log.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv {

namespace fs = std::filesystem;

namespace {

/// With less free space than a small picture takes, a disk counts as full.
constexpr std::uintmax_t kLeastSpace = 1 << 16;

/// The system's error message; empty when the path is writable.
std::string whyNotWritable(const std::string& path) {
    return access(path.c_str(), W_OK) == 0 ? "" : std::generic_category().message(errno);
}

}  // namespace

void tellWhy(std::string_view what, std::string_view why) {
    writeStandardError(fmt::format("tkvDvdMenuImg: {}: {}\n", printable(what), printable(why)));
}

std::string whyNotWritten(const std::string& path) {
    std::error_code error;
    const std::string parent = parentFolder(path);
    const std::string folder = parent.empty() ? "." : parent;
    if (fs::is_directory(path, error)) return "it is a folder";
    if (!fs::exists(folder, error)) return fmt::format("there is no folder {}", folder);
    if (!fs::is_directory(folder, error)) return fmt::format("{} is no folder", folder);
    const bool isThere = fs::exists(path, error);
    if (error) return error.message();  // A name that is too long, for instance.
    if (std::string why = whyNotWritable(isThere ? path : folder); !why.empty()) return why;
    const bool isFull = fs::space(folder, error).available < kLeastSpace && !error;
    return isFull ? "the disk is full" : "it could not be written whole";
}

}  // namespace tkv
