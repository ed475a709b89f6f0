#include "system/held_item.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "system/files.h"
#include "system/paths.h"

namespace tkv {

namespace {

/// An item of the folder, by a path that begins at its descriptor.
std::string pathThrough(const Descriptor& folder, const std::string& name) {
    return fmt::format("/proc/self/fd/{}/{}", folder.number(), name);
}

}  // namespace

HeldItem::HeldItem(Descriptor folder, std::string location)
    : folder_(std::move(folder)), location_(std::move(location)), name_(lastComponent(location_)) {}

std::optional<HeldItem> HeldItem::at(const std::string& path) {
    const std::string parent = parentFolder(path);
    Descriptor folder(
        open(parent.empty() ? "." : parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::optional<std::string> location = itemLocation(path);
    if (folder.number() < 0 || !location) return std::nullopt;
    HeldItem item(std::move(folder), *std::move(location));
    return item.isInPlace() ? std::optional(std::move(item)) : std::nullopt;
}

bool HeldItem::isInPlace() const {
    struct stat held {};
    const std::optional<FileId> there = fileId(parentFolder(location_));
    return there && fstat(folder_.number(), &held) == 0 &&
           there == FileId{static_cast<std::uint64_t>(held.st_dev),
                           static_cast<std::uint64_t>(held.st_ino)};
}

bool HeldItem::isFolder() const {
    struct stat status {};
    return fstatat(folder_.number(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

std::error_code HeldItem::removeFile() const {
    if (unlinkat(folder_.number(), name_.c_str(), 0) == 0) return {};
    return {errno, std::generic_category()};
}

std::error_code HeldItem::removeAll() const {
    if (!isFolder()) return removeFile();
    std::error_code error;
    std::filesystem::remove_all(pathThrough(folder_, name_), error);
    return error;
}

}  // namespace tkv
