#include "disc/author/output_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "disc/run/fault.h"
#include "system/files.h"
#include "system/mounts.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

constexpr const char* kWork = "work";

// All that a run makes or replaces in the folder.
constexpr std::array kResults{"disc",       "disc.iso",  "disc-faulty", "menus",
                              "jacket.jpg", "cover.pdf", kWork};

// The path without links, as far as it is there.
fs::path resolved(const std::string& path) {
    std::error_code error;
    fs::path location = fs::weakly_canonical(path, error);
    return error ? fs::path(path) : location;
}

bool isAtOrBelow(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
           folder.end();
}

void requireReplaceable(const std::string& folder) {
    const auto mounts = mountPoints().value_or(std::vector<std::string>{});
    for (const char* name : kResults) {
        const std::string place = resolved(folder) / name;
        if (std::ranges::find(mounts, place) == mounts.end()) continue;
        throw DiscError(
            fmt::format("{} is a mount point and cannot be replaced. Unmount it, or name "
                        "another folder with -o.",
                        place),
            place);
    }
    // Behind a link are files of others.
    const std::string work = joinPath(folder, kWork);
    const fs::file_status status = fs::symlink_status(work);
    if (!fs::exists(status) || fs::is_directory(status)) return;
    throw DiscError(
        fmt::format("{} is no folder of its own. Remove it; to have intermediate results "
                    "on another disk, name a folder there with -o.",
                    work),
        work);
}

// Keeps two runs out of one folder.
int lockedMarker(const std::string& folder) {
    const int descriptor = open(joinPath(folder, kMarker).c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor >= 0 && flock(descriptor, LOCK_EX | LOCK_NB) == 0) return descriptor;
    const int error = errno;
    if (descriptor >= 0) close(descriptor);
    if (error == EWOULDBLOCK)
        throw DiscError(fmt::format("Another run is making a disc in {}.", folder), folder);
    throw DiscError(
        fmt::format("{} cannot be locked: {}.", folder, std::generic_category().message(error)),
        folder);
}

// Between names in the folder, wherever it is now.
void move(const OwnFolder& folder, const std::string& from, const std::string& to) {
    if (renameat(folder.descriptor(), from.c_str(), folder.descriptor(), to.c_str()) == 0) return;
    const std::error_code error(errno, std::generic_category());
    throw fs::filesystem_error("", joinPath(folder.path(), to), error);
}

}  // namespace

void requireOutside(const std::string& output, const std::string& path) {
    const fs::path folder = resolved(output), file = resolved(path);
    const auto holds = [&](const char* name) { return isAtOrBelow(file, folder / name); };
    if (std::ranges::none_of(kResults, holds)) return;
    throw DiscError(fmt::format("{} lies where a run puts its results in {}. Move it, or name "
                                "another folder with -o.",
                                path, output),
                    path);
}

OutputFolder::OutputFolder(const std::string& path) : folder_(path), lock_(lockedMarker(path)) {
    requireReplaceable(path);
}

void OutputFolder::requireSpace(std::int64_t bytes) const {
    std::error_code error;
    const auto figures = fileSystemOf(path(), error);
    if (!figures || bytes <= static_cast<std::int64_t>(figures->freeBytes)) return;
    throw DiscError(
        fmt::format("{} needs {:.2f} GB of free space, and there are {:.2f} GB. Make room, name a "
                    "folder on another disk with -o, or do without the image: --no-image.",
                    path(), static_cast<double>(bytes) / 1e9,
                    static_cast<double>(figures->freeBytes) / 1e9),
        path());
}

void OutputFolder::put(const std::string& from, const std::string& name) const {
    folder_.requireInPlace();
    const std::string made = joinPath(kWork, from), old = made + "-old";
    // Moved aside, so that the new one is there as soon as the old one is not.
    if (fs::exists(fs::symlink_status(joinPath(path(), name)))) move(folder_, name, old);
    move(folder_, made, name);
    fs::remove_all(joinPath(path(), old));
}

void OutputFolder::drop(const std::string& name) const {
    folder_.requireInPlace();
    fs::remove_all(joinPath(path(), name));
}

}  // namespace tkv::disc
