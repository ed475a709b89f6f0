#include "disc/film/slide_film.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "disc/film/ffprobe.h"
#include "disc/run/fault.h"
#include "disc/run/parallel_tasks.h"
#include "graphics/formats.h"
#include "graphics/picture_faults.h"
#include "graphics/picture_title.h"
#include "graphics/text.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::json;

// Names that are told of those that are left out.
constexpr std::size_t kMostNamed = 5;

// Seconds: a film that is longer has chapters, one each of these.
constexpr double kWithoutChapters = 240, kChapterSeconds = 150;

constexpr double kSoundFadeIn = 0.5, kSoundFadeOut = 3;

void requireFile(const std::string& path, std::string_view what) {
    std::error_code error;
    if (!fs::exists(path, error))
        throw DiscError(fmt::format("{}: there is no such {}.", path, what), path);
    if (fs::is_regular_file(path, error) && canBeRead(path)) return;
    throw DiscError(fmt::format("{} may not be read as a {}.", path, what), path);
}

std::vector<std::string> picturesIn(const std::string& path) {
    if (!fs::is_directory(path)) {
        requireFile(path, "picture");
        return {path};
    }
    const auto names = folderNames(path);
    if (!names) failOn(path, "read");
    std::vector<std::string> pictures;
    for (const std::string& name : *names) {
        const std::string lowered = asciiLowered(name);
        // What desktops leave in folders.
        if (name.starts_with('.') || lowered == "thumbs.db" || lowered == "desktop.ini") continue;
        const std::string picture = joinPath(path, name);
        if (fs::is_regular_file(picture)) pictures.push_back(picture);
    }
    return pictures;
}

// A title where one is wanted, or why the picture cannot be read.
Json lookAt(const std::string& path, bool showsTitles) {
    std::optional<PixelSize> size;
    const auto least = [&](PixelSize full) {
        size = full;
        return PixelSize{16, 16};
    };
    if (!decodePicture(path, least)) return {{"fault", whyNoPicture(path, size)}};
    std::string title;
    if (showsTitles) {
        if (const auto file = readFile(path)) title = titleOfPicture(*file);
    }
    return {{"title", title}};
}

// Seconds of a file's sound, by its packets: what files say themselves may be a guess.
double soundSeconds(const std::string& path, const Tools& tools) {
    double seconds = 0;
    askFfprobe(
        {"-i", inputName(path)},
        {"-select_streams", "a:0", "-show_entries", "packet=duration_time", "-of", "csv=p=0"},
        tools, {path, fmt::format("{} cannot be heard", path), ""}, [&](std::string_view line) {
            const std::string text(line);
            char* end = nullptr;
            const double length = std::strtod(text.c_str(), &end);
            if (std::isfinite(length) && length > 0) seconds += length;
        });
    if (seconds > 0) return seconds;
    throw DiscError(fmt::format("{} holds no sound. Name another file with music.", path), path);
}

// Those that are left out, a line for each reason.
std::vector<std::string> leftOutLines(const std::map<std::string, std::vector<std::string>>& all) {
    std::vector<std::string> lines;
    for (const auto& [reason, paths] : all) {
        std::vector<std::string> names;
        for (const std::string& path : paths) {
            if (names.size() < kMostNamed) names.push_back(lastComponent(path));
        }
        if (names.size() < paths.size())
            names.push_back(fmt::format("{} more", paths.size() - names.size()));
        lines.push_back(fmt::format("left out: {}: {}", fmt::join(names, ", "), reason));
    }
    return lines;
}

// At the beginnings of slides.
std::vector<Chapter> marksOf(const SlideShow& show) {
    const auto slides = static_cast<double>(show.slides.size());
    const double seconds = slides * show.step;
    std::vector<Chapter> marks;
    if (seconds < kWithoutChapters) return marks;
    const auto count = static_cast<int>(std::min(slides, std::round(seconds / kChapterSeconds)));
    for (int i = 0; i < count; ++i)
        marks.push_back({std::round(i * slides / count) * show.step, ""});
    return marks;
}

}  // namespace

FilmSource slideSource(const FilmRequest& request) {
    FilmSource source;
    source.path = request.path;
    SlideShow& show = source.slides.emplace();
    show.request = *request.slides;
    std::vector<std::string>& pictures = show.request.paths;
    for (const std::string& path : std::exchange(pictures, {}))
        std::ranges::move(picturesIn(path), std::back_inserter(pictures));
    if (pictures.empty())
        throw DiscError(fmt::format("{} holds no picture.", request.path), request.path);
    for (const std::string& path : show.request.music)
        requireFile(path, "sound");
    source.files = pictures;
    source.files.insert(source.files.end(), show.request.music.begin(), show.request.music.end());
    source.stamp = stampOf(source.files);
    for (const std::string& file : source.files)
        source.bytes += fileStamp(file).value_or(FileStamp{}).bytes;
    const SlideRequest& asked = show.request;
    source.stamp += fmt::format("slides {} {} {} {}\n", asked.seconds, asked.moves, asked.fitsMusic,
                                asked.showsTitles ? "titles in " + fallbackFaces() : "");
    return source;
}

std::string slideAnswer(const FilmSource& source, const Tools& tools) {
    const SlideRequest& asked = source.slides->request;
    std::vector<Json> looks(asked.paths.size());
    sideBySide(looks.size(), tools.stop(), [&](std::size_t i) {
        if (tools.stop().isStopped()) throw Interrupted();
        looks[i] = lookAt(asked.paths[i], asked.showsTitles);
    });
    std::vector<double> sounds;
    for (const std::string& path : asked.music)
        sounds.push_back(soundSeconds(path, tools));
    return Json{{"pictures", looks}, {"music", sounds}}.dump();
}

Film slideFilm(FilmSource source, std::string_view answer) {
    const Json facts = Json::parse(answer);
    Film film;
    SlideShow& show = *source.slides;
    const SlideRequest& asked = show.request;
    std::map<std::string, std::vector<std::string>> leftOut;
    for (std::size_t i = 0; i < asked.paths.size(); ++i) {
        const Json& picture = facts.at("pictures").at(i);
        if (picture.contains("fault")) {
            leftOut[picture.at("fault").get<std::string>()].push_back(asked.paths[i]);
        } else {
            show.slides.push_back({asked.paths[i], picture.at("title").get<std::string>()});
        }
    }
    film.notes = leftOutLines(leftOut);
    if (show.slides.empty()) {
        throw DiscError(fmt::format("{} holds no picture that can be read ({}).", source.path,
                                    film.notes.front()),
                        source.path);
    }
    double sound = 0;
    for (const Json& seconds : facts.at("music"))
        sound += seconds.get<double>();
    const auto slides = static_cast<double>(show.slides.size());
    show.step = asked.seconds;
    if (asked.fitsMusic && sound > 0)
        show.step = std::clamp(sound / slides, kLeastSlideSeconds, kMostSlideSeconds);
    film.seconds = slides * show.step;
    film.marks = marksOf(show);
    film.video.codec = "rawvideo";
    film.video.pixelFormat = "yuv420p";
    film.video.matrix = "smpte170m";
    film.video.range = "tv";
    film.video.size = film.video.shown = {1920, 1080};
    film.video.aspect = 16.0 / 9;
    if (sound > 0) {
        AudioTrack& track = film.audio.emplace_back();
        track.codec = "flac";
        track.channels = 2;
        track.sampleRate = 48000;
    }
    film.source = std::move(source);
    return film;
}

void makeSlideSound(Film& film, Workshop& workshop) {
    if (!film.source.slides || film.audio.empty()) return;
    SlideShow& show = *film.source.slides;
    const std::vector<std::string>& music = show.request.music;
    const Failure failure{film.source.path,
                          fmt::format("The music of {} could not be joined", film.source.path), ""};
    const auto start = [] {
        return std::vector<std::string>{"ffmpeg", "-nostdin", "-v", "error", "-y"};
    };
    const auto finish = [](std::vector<std::string>& command, const std::string& output) {
        command.insert(command.end(), {"-c:a", "flac", "-sample_fmt", "s16", "-compression_level",
                                       "1", "-f", "flac", "file:" + output});
    };
    // All of it, once.
    const auto joinCommand = [&](const std::string& output) {
        std::vector<std::string> command = start();
        std::string inputs, joined;
        for (std::size_t i = 0; i < music.size(); ++i) {
            command.insert(command.end(), {"-i", inputName(music[i])});
            inputs +=
                fmt::format("[{0}:a:0]aresample=48000,aformat=channel_layouts=stereo[part{0}];", i);
            joined += fmt::format("[part{}]", i);
        }
        command.insert(command.end(), {"-filter_complex",
                                       fmt::format("{}{}concat=n={}:v=0:a=1,atrim=end={:.3f}",
                                                   inputs, joined, music.size(), film.seconds)});
        finish(command, output);
        return command;
    };
    std::vector<std::string> inputs = joinCommand("");
    inputs.push_back(stampOf(music));
    show.sound =
        workshop.result(Workshop::nameOf("music", ".flac", inputs), [&](const std::string& made) {
            const std::string once = made + "-once.flac";
            workshop.tools().run(joinCommand(once), failure);
            // From its beginning again, as often as it takes.
            std::vector<std::string> command = start();
            command.insert(command.end(), {"-stream_loop", "-1", "-i", "file:" + once, "-af"});
            command.push_back(fmt::format(
                "atrim=end={0:.3f},afade=t=in:d={1},afade=t=out:st={2:.3f}:d={3}", film.seconds,
                kSoundFadeIn, std::max(0.0, film.seconds - kSoundFadeOut), kSoundFadeOut));
            finish(command, made);
            workshop.tools().run(command, failure);
            fs::remove(workshop.path(once));
        });
}

}  // namespace tkv::disc
