#include "disc/author/output_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>

#include "disc/run/fault.h"
#include "disc/run/own_folder.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Keeps two runs out of one folder.
int lockedMarker(const std::string& folder) {
    ownFolder(folder);
    const int descriptor = open(joinPath(folder, kMarker).c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) == 0) return descriptor;
    if (descriptor >= 0) close(descriptor);
    throw DiscError(fmt::format("Another run is making a disc in {}.", folder), folder);
}

}  // namespace

OutputFolder::OutputFolder(const std::string& path) : path_(path), lock_(lockedMarker(path)) {}

void OutputFolder::requireSpace(std::int64_t bytes) const {
    std::error_code error;
    const auto figures = fileSystemOf(path_, error);
    if (!figures || bytes <= static_cast<std::int64_t>(figures->freeBytes)) return;
    throw DiscError(fmt::format("{} needs {:.2f} GB of free space, and there are {:.2f} GB. Make "
                                "room, name a folder on "
                                "another disk with -o, or do without the image: --no-image.",
                                path_, static_cast<double>(bytes) / 1e9,
                                static_cast<double>(figures->freeBytes) / 1e9),
                    path_);
}

void OutputFolder::put(const std::string& from, std::string_view name) const {
    const std::string to = fmt::format("{}/{}", path_, name);
    // Moved aside, so that the new one is there as soon as the old one is not.
    const std::string old = from + "-old";
    if (fs::exists(fs::symlink_status(to))) fs::rename(to, old);
    fs::rename(from, to);
    fs::remove_all(old);
}

void OutputFolder::drop(std::string_view name) const {
    fs::remove_all(fmt::format("{}/{}", path_, name));
}

}  // namespace tkv::disc
