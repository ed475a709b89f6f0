#include "disc/output_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "disc/disc_error.h"
#include "system/files.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Tells a folder of this program from all others, and keeps two runs out of one folder.
constexpr std::string_view kMarker = ".tkvDvdDisc";

// Moves aside what is replaced, so that the new one is there as soon as the old one is not.
constexpr const char* kOld = "unfinished/old";

int lockedMarker(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw DiscError(fmt::format("{} cannot be made: {}.", folder, error.message()));
    const std::string marker = fmt::format("{}/{}", folder, kMarker);
    const bool isMarked = fs::exists(marker, error);
    if (!isMarked && !error && !fs::is_empty(folder, error) && !error) {
        throw DiscError(fmt::format(
            "{} holds files of others, which are not to be mixed with a disc. Name another "
            "folder with -o.",
            folder));
    }
    const int descriptor = open(marker.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0)
        throw DiscError(fmt::format("{} cannot be written to: {}.", folder,
                                    std::generic_category().message(errno)));
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        close(descriptor);
        throw DiscError(fmt::format("Another run is making a disc in {}.", folder));
    }
    return descriptor;
}

}  // namespace

OutputFolder::OutputFolder(const std::string& path) : path_(path), lock_(lockedMarker(path)) {
    fs::create_directory(path_ + "/work");
    fs::current_path(path_ + "/work");
}

void OutputFolder::requireSpace(std::int64_t bytes) const {
    std::error_code error;
    const auto figures = fileSystemOf(path_, error);
    if (!figures || bytes <= static_cast<std::int64_t>(figures->freeBytes)) return;
    throw DiscError(fmt::format(
        "{} needs {:.2f} GB of free space, and there are {:.2f} GB. Make room, name a folder on "
        "another disk with -o, or do without the image: --no-image.",
        path_, static_cast<double>(bytes) / 1e9, static_cast<double>(figures->freeBytes) / 1e9));
}

void OutputFolder::put(const std::string& from, std::string_view name) const {
    const std::string to = fmt::format("{}/{}", path_, name);
    if (fs::exists(fs::symlink_status(to))) fs::rename(to, kOld);
    fs::rename(from, to);
    fs::remove_all(kOld);
}

void OutputFolder::drop(std::string_view name) const {
    fs::remove_all(fmt::format("{}/{}", path_, name));
}

}  // namespace tkv::disc
