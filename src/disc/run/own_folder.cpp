#include "disc/run/own_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "disc/run/fault.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

void claim(const std::string& path) {
    std::error_code error;
    if (fs::exists(path, error) && !fs::is_directory(path, error))
        throw DiscError(fmt::format("{} is a file. Name a folder with -o.", path), path);
    fs::create_directories(path, error);
    if (error) throw DiscError(fmt::format("{} cannot be made: {}.", path, error.message()), path);
    const std::string marker = joinPath(path, kMarker);
    const bool isMarked = fs::exists(marker, error);
    if (!isMarked && !error && !fs::is_empty(path, error) && !error) {
        throw DiscError(fmt::format("{} holds files of others, which are not to be mixed with a "
                                    "disc. Name another folder with -o.",
                                    path),
                        path);
    }
    const Descriptor file(open(marker.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (file.number() < 0) failOn(path, "written to");
}

}  // namespace

OwnFolder::OwnFolder(std::string path) : path_(std::move(path)), folder_(-1) {
    claim(path_);
    folder_ = Descriptor(open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool OwnFolder::isInPlace() const {
    struct stat held {
    }, found{};
    return fstat(folder_.number(), &held) == 0 && stat(path_.c_str(), &found) == 0 &&
           held.st_dev == found.st_dev && held.st_ino == found.st_ino;
}

void OwnFolder::requireInPlace() const {
    if (isInPlace()) return;
    throw DiscError(fmt::format("{} has been moved or removed meanwhile.", path_), path_);
}

}  // namespace tkv::disc
