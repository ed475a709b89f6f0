#include "composer/reasons.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "graphics/picture_faults.h"
#include "system/files.h"
#include "system/log.h"
#include "system/module.h"
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

/// Where a link leads, be there something or not; the path itself where it is none.
std::string targetOf(const std::string& path) {
    constexpr int kMostLinks = 40;  // The system follows no more either.
    fs::path target = path;
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(target, error); ++i)
        target = target.parent_path() / fs::read_symlink(target, error);
    return target;
}

}  // namespace

void tellWhy(std::string_view what, std::string_view why) {
    writeStandardError(fmt::format("tkvDvdMenuImg: {}: {}\n",
                                   what.empty() ? "\"\"" : printable(what), printable(why)));
}

void tellWhyOnce(const std::string& path, std::string_view why) {
    static std::mutex mutex;
    static std::set<std::pair<std::string, FileStamp>> told;
    const std::scoped_lock lock(mutex);
    if (told.emplace(path, fileStamp(path).value_or(FileStamp{})).second) tellWhy(path, why);
}

void tellWhyNoPicture(const std::string& path, std::optional<PixelSize> size) {
    // Without the module its formats are not known; another line says so.
    if (!wasModuleMissed()) tellWhyOnce(path, whyNoPicture(path, size));
}

std::string whyNotWritten(const std::string& path) {
    if (path.empty()) return "no path was named";
    std::error_code error;
    const std::string parent = parentFolder(targetOf(path));
    const std::string folder = parent.empty() ? "." : parent;
    if (fs::is_directory(path, error)) return "it is a folder";
    if (!fs::exists(folder, error)) return fmt::format("there is no folder {}", folder);
    if (!fs::is_directory(folder, error)) return fmt::format("{} is no folder", folder);
    if (path.ends_with('/')) return "it ends in a slash";
    const bool isThere = fs::exists(path, error);
    if (error) return error.message();  // A name that is too long, for instance.
    if (std::string why = whyNotWritable(isThere ? path : folder); !why.empty()) return why;
    const bool isFull = fs::space(folder, error).available < kLeastSpace && !error;
    return isFull ? "the disk is full" : "it could not be written whole";
}

}  // namespace tkv
