#include "disc/probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <regex>

#include "disc/disc_error.h"
#include "disc/frame_counter.h"
#include "system/files.h"
#include "system/processes.h"

namespace tkv::disc {

namespace {

namespace fs = std::filesystem;

// "VTS_01_3.VOB" is the third file of the first title set; number 0 holds its menus.
const std::regex& titleVobName() {
    static const std::regex name(R"(VTS_(\d\d)_([1-9])\.VOB)", std::regex::icase);
    return name;
}

// The VOBs of each title set of a folder, in their order.
std::map<std::string, std::vector<std::string>> titlesOf(const std::string& folder) {
    std::map<std::string, std::vector<std::string>> titles;
    for (const std::string& name : folderNames(folder).value_or(std::vector<std::string>{})) {
        std::smatch parts;
        if (std::regex_match(name, parts, titleVobName()))
            titles[parts[1]].push_back(fs::path(folder) / name);
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

std::string stampOf(const std::vector<std::string>& sources) {
    std::string text;
    for (const std::string& source : sources) {
        const FileStamp stamp = fileStamp(source).value_or(FileStamp{});
        text += fmt::format("{} {}:{} {} {}\n", source, stamp.device, stamp.inode, stamp.bytes,
                            stamp.modifiedNs);
    }
    return text;
}

// The files of a title, whose names ffmpeg is given with bars between.
const std::vector<std::string>& readable(const std::vector<std::string>& title) {
    if (title.size() > 1 && title.front().find('|') != std::string::npos) {
        throw DiscError(
            fmt::format("{} cannot be read, since a folder's name holds a '|'. Rename "
                        "it.",
                        title.front()));
    }
    return title;
}

// Runs ffprobe on a film; throws, with ffprobe's last words, when it cannot read it.
void askFfprobe(const Film& film, const std::vector<std::string>& questions,
                const std::function<void(std::string_view)>& onLine) {
    const std::string input = inputName(film.sources);
    Program program;
    program.command = {"ffprobe", "-v", "error"};
    program.command.insert(program.command.end(), questions.begin(), questions.end());
    program.command.insert(program.command.end(), {"-i", input});
    program.onOutput = onLine;
    std::string words;
    program.onError = [&](std::string_view line) {
        if (!line.empty()) words = line;
    };
    const ProgramEnd end = runProgram(std::move(program));
    if (end.how == ProgramEnd::How::stopped) throw Interrupted{};
    if (end.how == ProgramEnd::How::notStarted) {
        throw DiscError("ffprobe cannot be started. Install the package ffmpeg.");
    }
    if (end.how == ProgramEnd::How::exited && end.status == 0) return;
    if (words.starts_with(input + ": ")) words.erase(0, input.size() + 2);
    throw DiscError(
        fmt::format("{} cannot be read as a film: {}. Leave it out, or try whether "
                    "ffplay shows it.",
                    film.path, words.empty() ? "ffprobe failed" : words));
}

// Codecs whose pictures are whole, or of which ffprobe knows when they are not. What it says of
// others is their container's word, which knows nothing of DV's fields for one.
constexpr std::array<std::string_view, 7> kTellingFields = {"h264", "mpeg2video", "hevc", "vp8",
                                                            "vp9",  "av1",        "gif"};

// Looks at the first frames for fields that ffprobe's other answers do not tell of.
void findFields(Film& film) {
    const bool isKnown = film.video.fields != Fields::progressive ||
                         std::ranges::count(kTellingFields, film.video.codec) != 0;
    if (isKnown) return;
    const auto onLine = [&](std::string_view line) {
        if (line.starts_with("1,1")) film.video.fields = Fields::topFirst;
        if (line.starts_with("1,0")) film.video.fields = Fields::bottomFirst;
    };
    askFfprobe(film,
               {"-select_streams", fmt::format("{}", film.video.index), "-read_intervals", "%+#3",
                "-show_entries", "frame=interlaced_frame,top_field_first", "-of", "csv=p=0"},
               onLine);
}

// Whether the container itself tells how long it is; of others, the length is found in what they
// hold, or guessed.
bool tellsItsLength(const std::string& container) {
    constexpr std::array<std::string_view, 6> kTelling = {"matroska", "mov", "avi",
                                                          "asf",      "flv", "mxf"};
    return std::ranges::any_of(kTelling,
                               [&](std::string_view name) { return container.starts_with(name); });
}

}  // namespace

std::vector<std::string> sourcesOf(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    const fs::file_status status = fs::status(absolute, error);
    if (!fs::exists(status)) throw DiscError(fmt::format("{}: there is no such film.", path));
    if (fs::is_directory(status)) {
        std::vector<std::string> title = largestTitle(absolute);
        if (!title.empty()) return readable(title);
        throw DiscError(
            fmt::format("{} is a folder without a DVD's films (VTS_01_1.VOB and so "
                        "on). Name the films in it.",
                        path));
    }
    if (!canBeRead(absolute))
        throw DiscError(fmt::format("{} may not be read. Change its permissions.", path));

    std::smatch parts;
    const std::string name = absolute.filename();
    if (std::regex_match(name, parts, titleVobName()) && parts[2] == "1")
        return readable(titlesOf(absolute.parent_path())[parts[1]]);
    return {absolute};
}

std::string inputName(const std::vector<std::string>& sources) {
    // Without the protocol's name, what stands before a colon would be taken for one.
    if (sources.size() == 1) return "file:" + sources.front();
    return fmt::format("concat:{}", fmt::join(sources, "|"));
}

Film probeFilm(const std::string& path, const KnownAnswer& knownAnswer) {
    Film asked;
    asked.path = path;
    asked.sources = sourcesOf(path);
    asked.stamp = stampOf(asked.sources);
    if (knownAnswer) asked.answer = knownAnswer(asked.stamp);
    if (asked.answer.empty()) {
        askFfprobe(asked, {"-of", "json", "-show_format", "-show_streams", "-show_chapters"},
                   [&](std::string_view line) { asked.answer.append(line).append("\n"); });
    }
    Film film = filmFromAnswer(path, asked.answer);
    film.answer = std::move(asked.answer);
    film.sources = std::move(asked.sources);
    film.stamp = std::move(asked.stamp);
    film.bytes = bytesOf(film.sources);
    findFields(film);
    return film;
}

void countFrames(Film& film) {
    FrameCounter counter(film);
    askFfprobe(film, {"-show_entries", FrameCounter::kEntries, "-of", "csv=p=0"},
               [&](std::string_view line) { counter.take(line); });
    const double said = film.seconds;
    counter.finish(film);
    if (film.frames == 0)
        throw DiscError(
            fmt::format("{} holds no frame. Leave it out, or copy it anew.", film.path));
    if (tellsItsLength(film.container) && counter.lastEnd() < 0.99 * said - 2) {
        throw DiscError(
            fmt::format("{} says it lasts {:.0f} s, but ends after {:.0f}: it has been "
                        "cut short. Copy it anew.",
                        film.path, said, counter.lastEnd()));
    }
}

}  // namespace tkv::disc
