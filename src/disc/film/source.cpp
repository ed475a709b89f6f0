#include "disc/film/source.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <filesystem>
#include <map>

#include "disc/project/names.h"
#include "disc/run/fault.h"
#include "system/files.h"

namespace tkv::disc {

namespace {

namespace fs = std::filesystem;

// The VOBs of each title set of a folder, in their order; those of menus are left out.
std::map<int, std::vector<std::string>> titlesOf(const std::string& folder) {
    std::map<int, std::vector<std::string>> titles;
    for (const std::string& name : folderNames(folder).value_or(std::vector<std::string>{})) {
        const auto part = dvdPartOf(name);
        if (part && part->isVob && part->number > 0)
            titles[part->titleSet].push_back(fs::path(folder) / name);
    }
    return titles;
}

std::int64_t bytesOf(const std::vector<std::string>& files) {
    std::int64_t bytes = 0;
    for (const std::string& file : files) {
        if (const auto stamp = fileStamp(file)) bytes += stamp->bytes;
    }
    return bytes;
}

// The VOBs of the largest title in a VIDEO_TS folder, or in the folder that holds it.
std::vector<std::string> largestTitle(const std::string& folder) {
    std::vector<std::string> largest;
    for (const char* below : {"", "VIDEO_TS", "video_ts"}) {
        for (const auto& title : titlesOf(fs::path(folder) / below)) {
            if (bytesOf(title.second) > bytesOf(largest)) largest = title.second;
        }
    }
    return largest;
}

// The files of a title, whose names ffmpeg is given with bars between.
const std::vector<std::string>& readable(const std::vector<std::string>& title) {
    if (title.size() > 1 && title.front().find('|') != std::string::npos) {
        throw DiscError(
            fmt::format("{} cannot be read, since a folder's name holds a '|'. Rename it.",
                        title.front()),
            title.front());
    }
    return title;
}

std::vector<std::string> filesOf(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none)
        throw DiscError(fmt::format("{} may not be read: {}.", path, error.message()), path);
    if (!fs::exists(status)) throw DiscError(fmt::format("{}: there is no such film.", path), path);
    if (fs::is_directory(status)) {
        std::vector<std::string> title = largestTitle(path);
        if (!title.empty()) return readable(title);
        throw DiscError(
            fmt::format("{0} is a folder without a DVD's films (VTS_01_1.VOB and so on). Name the "
                        "films in it: {0}/*",
                        path),
            path);
    }
    // A pipe would be waited for, and a device has no end.
    if (!fs::is_regular_file(status))
        throw DiscError(fmt::format("{} is no file. Name a film's.", path), path);
    if (!canBeRead(path))
        throw DiscError(fmt::format("{} may not be read. Change its permissions.", path), path);

    const auto part = dvdPartOf(path);
    if (part && part->isVob && part->number == 1)
        return readable(titlesOf(fs::path(path).parent_path())[part->titleSet]);
    return {path};
}

}  // namespace

FilmSource sourceOf(const std::string& path) {
    FilmSource source;
    source.path = path;
    source.files = filesOf(path);
    source.bytes = bytesOf(source.files);
    source.stamp = stampOf(source.files);
    return source;
}

std::string inputName(const std::vector<std::string>& files) {
    // Without the protocol's name, what stands before a colon would be taken for one.
    if (files.size() == 1) return "file:" + files.front();
    return fmt::format("concat:{}", fmt::join(files, "|"));
}

std::string stampOf(const std::vector<std::string>& files) {
    std::string text;
    for (const std::string& file : files) {
        const FileStamp stamp = fileStamp(file).value_or(FileStamp{});
        text += fmt::format("{} {}:{} {} {}\n", file, stamp.device, stamp.inode, stamp.bytes,
                            stamp.modifiedNs);
    }
    return text;
}

}  // namespace tkv::disc
