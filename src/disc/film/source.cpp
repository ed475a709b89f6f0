#include "disc/film/source.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

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

// A file of a title whose parts ffmpeg is given with bars between.
void requireReadable(const std::string& file) {
    if (file.find('|') == std::string::npos) return;
    throw DiscError(
        fmt::format("{} cannot be read, since a folder's name holds a '|'. Rename it.", file),
        file);
}

const std::vector<std::string>& readable(const std::vector<std::string>& title) {
    if (title.size() > 1) requireReadable(title.front());
    return title;
}

// Some sectors of the files; none where the files are shorter.
std::vector<FilePart> partsIn(const std::vector<std::string>& files, const SectorRange& range) {
    std::vector<FilePart> parts;
    std::int64_t start = 0, first = range.first * kSectorBytes;
    const std::int64_t end = range.end * kSectorBytes;
    for (const std::string& file : files) {
        const std::int64_t bytes = bytesOf({file});
        const std::int64_t here = std::min(end, start + bytes);
        if (first < here) {
            parts.push_back({file, first - start, here - start});
            first = here;
        }
        start += bytes;
    }
    return first == end ? parts : std::vector<FilePart>{};
}

std::string inputName(const std::vector<FilePart>& parts) {
    std::vector<std::string> names;
    names.reserve(parts.size());
    for (const FilePart& part : parts)
        names.push_back(
            fmt::format("subfile,,start,{},end,{},,:{}", part.first, part.end, part.path));
    return names.size() == 1 ? names.front() : fmt::format("concat:{}", fmt::join(names, "|"));
}

// Has each clip's first frame follow the last of the one before, however long its sound lasts.
std::string listOf(const std::vector<FilmClip>& clips) {
    std::string list = "data:,ffconcat version 1.0\n";
    for (std::size_t i = 0; i < clips.size(); ++i) {
        const double next = i + 1 < clips.size() ? clips[i + 1].start : 0;
        std::string name;
        for (const char byte : clips[i].file)
            name += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
        list += fmt::format("file 'file:{}'\nduration {:.6f}\n", name,
                            clips[i].start + clips[i].seconds - next);
    }
    return list;
}

// Where a moment is in the clips: also behind the end of all.
FilmPlace placeInClips(const std::vector<FilmClip>& clips, double entry, double moment) {
    // What is left is to hold a frame.
    constexpr double kTail = 0.1;
    double begin = 0;
    auto clip = clips.begin();
    while (clip + 1 != clips.end() && moment >= begin + clip->seconds) {
        begin += clip->seconds;
        ++clip;
    }
    const double last = std::max(0.0, clip->seconds - kTail);
    return {tkv::disc::inputName(clip->file), std::clamp(entry - begin, 0.0, last), begin,
            clip != clips.begin(), clip->start - clips.front().start};
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
            fmt::format("{} is a folder without a DVD's films (VTS_01_1.VOB and so on).", path),
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
    return sourceOf(path, filesOf(path));
}

FilmSource sourceOf(const std::string& path, std::vector<std::string> files) {
    FilmSource source;
    source.path = path;
    source.files = std::move(files);
    source.bytes = bytesOf(source.files);
    source.stamp = stampOf(source.files);
    return source;
}

std::vector<std::string> titleSetIn(const std::string& folder, int number) {
    return readable(titlesOf(folder)[number]);
}

int titleSetOf(const FilmSource& source) {
    const auto part = dvdPartOf(source.files.front());
    return part && part->isVob && part->number == 1 ? part->titleSet : 0;
}

bool takeTitle(FilmSource& source, DvdTitle title) {
    std::vector<FilePart> parts;
    for (const SectorRange& range : title.cells) {
        const std::vector<FilePart> more = partsIn(source.files, range);
        if (more.empty()) return false;
        parts.insert(parts.end(), more.begin(), more.end());
    }
    const bool isWhole = title.cells == std::vector{SectorRange{0, source.bytes / kSectorBytes}};
    // Angles can only be told from each other while they are played.
    if (!isWhole && !title.isInterleaved) {
        if (parts.size() > 1) requireReadable(source.files.front());
        source.bytes = 0;
        for (const FilePart& part : parts) {
            source.bytes += part.end - part.first;
            source.stamp += fmt::format("{} {}\n", part.first, part.end);
        }
        source.parts = std::move(parts);
    }
    source.title = std::move(title);
    return true;
}

// Without the protocol's name, what stands before a colon would be taken for one.
std::string inputName(const std::string& file) {
    return "file:" + file;
}

std::string inputName(const FilmSource& source) {
    if (!source.clips.empty()) return listOf(source.clips);
    if (source.slides) return inputName(source.slides->sound);
    if (!source.parts.empty()) return inputName(source.parts);
    if (source.files.size() == 1) return inputName(source.files.front());
    return fmt::format("concat:{}", fmt::join(source.files, "|"));
}

std::vector<FilePart> partsOf(const FilmSource& source) {
    if (!source.parts.empty()) return source.parts;
    std::vector<FilePart> parts;
    for (const std::string& file : source.files)
        parts.push_back({file, 0, bytesOf({file})});
    return parts;
}

FilmPlace placeIn(const FilmSource& source, double entry, double moment) {
    // What is left is to hold a keyframe.
    constexpr double kTail = 2;
    if (!source.clips.empty()) return placeInClips(source.clips, entry, moment);
    if (!source.title || source.title->runs.size() < 2) return {inputName(source), entry};
    const std::vector<TitleRun>& runs = source.title->runs;
    const auto next = std::ranges::upper_bound(runs, moment, {}, &TitleRun::seconds);
    const auto run = next == runs.begin() ? next : next - 1;
    const bool isLast = next == runs.end();
    const std::int64_t first = run->sector * kSectorBytes;
    const std::int64_t end = isLast ? source.bytes : next->sector * kSectorBytes;
    const double length = (isLast ? source.title->seconds : next->seconds) - run->seconds;
    std::vector<FilePart> parts;
    std::int64_t start = 0;
    for (const FilePart& part : partsOf(source)) {
        const FilePart cut{part.path, std::max(part.first, part.first + first - start),
                           std::min(part.end, part.first + end - start)};
        if (cut.first < cut.end) parts.push_back(cut);
        start += part.end - part.first;
    }
    const double seconds = std::clamp(entry - run->seconds, 0.0, std::max(0.0, length - kTail));
    return {inputName(parts), seconds, run->seconds, true};
}

std::vector<std::string> inputWords(const FilmSource& source) {
    if (!source.clips.empty()) return {"-f", "concat", "-safe", "0", "-i", inputName(source)};
    if (!source.looksFurther) return {"-i", inputName(source)};
    // Bytes and microseconds: a track that is silent at first may begin minutes later.
    return {"-probesize", "1000000000", "-analyzeduration", "600000000", "-i", inputName(source)};
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
