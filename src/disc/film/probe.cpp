#include "disc/film/probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "disc/film/encryption.h"
#include "disc/film/ffprobe.h"
#include "disc/film/film_answer.h"
#include "disc/film/frame_counter.h"
#include "disc/film/joined_film.h"
#include "disc/film/slide_film.h"
#include "disc/film/title_facts.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace {

// Bytes of ffprobe's list of all packets; those of a hundred hours, which no disc holds, take less.
constexpr std::size_t kMostPackets = std::size_t{2} << 30U;

// Whether a file begins with nothing but what texts are written in. ffprobe knows texts of some
// length and form only.
bool isText(const std::string& path) {
    std::array<char, 4096> head{};
    std::ifstream file(path);
    file.read(head.data(), head.size());
    const std::string_view text(head.data(), static_cast<std::size_t>(file.gcount()));
    return !text.empty() && std::ranges::all_of(text, [](char byte) {
        return static_cast<unsigned char>(byte) >= ' ' || (byte >= '\t' && byte <= '\r');
    });
}

void ask(const FilmSource& source, const std::vector<std::string>& questions, const Tools& tools,
         const std::function<void(std::string_view)>& onLine, std::size_t most = kMostAnswer) {
    const std::string task = fmt::format("{} cannot be read as a film", source.path);
    try {
        askFfprobe(inputWords(source), questions, tools,
                   {source.path, task, "Leave it out, or try whether ffplay shows it."}, onLine,
                   most);
    } catch (const NoFilm&) {
        throw;
    } catch (const DiscError&) {
        if (!isText(source.files.front())) throw;
        throw NoFilm(task + ": it is a text. Leave it out.", source.path);
    }
}

// Codecs whose pictures are whole, or of which ffprobe knows when they are not. What it says of
// others is their container's word, which knows nothing of DV's fields for one.
constexpr std::array<std::string_view, 7> kTellingFields = {"h264", "mpeg2video", "hevc", "vp8",
                                                            "vp9",  "av1",        "gif"};

// Looks at the first frames for fields that ffprobe's other answers do not tell of.
void findFields(Film& film, const Tools& tools) {
    const bool isKnown = film.video.fields != Fields::progressive ||
                         std::ranges::count(kTellingFields, film.video.codec) != 0;
    if (isKnown) return;
    const auto onLine = [&](std::string_view line) {
        if (line.starts_with("1,1")) film.video.fields = Fields::topFirst;
        if (line.starts_with("1,0")) film.video.fields = Fields::bottomFirst;
    };
    ask(film.source,
        {"-select_streams", fmt::format("{}", film.video.index), "-read_intervals", "%+#3",
         "-show_entries", "frame=interlaced_frame,top_field_first", "-of", "csv=p=0"},
        tools, onLine);
}

// The time of the first frame that can be decoded; none for the first of all.
std::optional<double> firstFrameOf(const Film& film, const FrameCounter& counter,
                                   const Tools& tools) {
    const int packets = film.container.starts_with("mpeg") ? counter.packetsToFirstFrame() : 0;
    if (packets == 0) return std::nullopt;
    std::optional<double> first;
    const auto onLine = [&](std::string_view line) {
        double time = 0;
        const auto read = std::from_chars(line.data(), line.data() + line.size(), time);
        if (read.ec == std::errc() && !first) first = time;
    };
    ask(film.source,
        {"-select_streams", fmt::format("{}", film.video.index), "-read_intervals",
         fmt::format("%+#{}", packets), "-show_entries", "frame=best_effort_timestamp_time", "-of",
         "default=nokey=1:noprint_wrappers=1"},
        tools, onLine);
    return first.value_or(counter.firstKeyframe());
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

std::string probeAnswer(const FilmSource& source, const Tools& tools) {
    if (source.slides) return slideAnswer(source, tools);
    std::string answer;
    // Whether there are captions in its pictures is known when one is decoded.
    ask(source,
        {"-of", "json", "-show_format", "-show_streams", "-show_chapters", "-show_entries",
         "frame=pts:frame_side_data=side_data_type", "-read_intervals", "%+#8"},
        tools, [&](std::string_view line) { answer.append(line).append("\n"); });
    return answer;
}

Film probedFilm(FilmSource source, std::string_view answer, const Tools& tools) {
    if (source.slides) return slideFilm(std::move(source), answer);
    if (isScrambled(source)) {
        const std::string& path = source.path;
        throw DiscError(fmt::format("{} is encrypted. Leave it out, or decrypt it first.", path),
                        path);
    }
    Film film = filmFromAnswer(std::move(source), answer);
    findFields(film, tools);
    addTitleFacts(film);
    return film;
}

Film filmOf(const FilmSource& source, const std::function<Film(const FilmSource&)>& filmOf) {
    if (source.clips.empty()) return filmOf(source);
    std::vector<Film> clips;
    clips.reserve(source.clips.size());
    for (const FilmClip& clip : source.clips)
        clips.push_back(filmOf(sourceOf(clip.file)));
    if (!areOneStream(clips)) return joinedFilm(source, clips);
    FilmSource whole = source;
    whole.clips.clear();
    Film film = filmOf(whole);
    film.marks = clipMarks(clips);
    return film;
}

void countFrames(Film& film, const Tools& tools) {
    FrameCounter counter(film);
    ask(
        film.source, {"-show_entries", FrameCounter::kEntries, "-of", "csv=p=0"}, tools,
        [&](std::string_view line) { counter.take(line); }, kMostPackets);
    const double said = film.seconds;
    counter.finish(film, firstFrameOf(film, counter, tools));
    if (film.frames == 0)
        throw DiscError(
            fmt::format("{} holds no frame. Leave it out, or copy it anew.", film.source.path),
            film.source.path);
    if (tellsItsLength(film.container) && counter.lastEnd() < 0.99 * said - 2) {
        throw DiscError(fmt::format("{} says it lasts {:.0f} s, but ends after {:.0f}: it has been "
                                    "cut short. Copy it anew.",
                                    film.source.path, said, counter.lastEnd()),
                        film.source.path);
    }
}

}  // namespace tkv::disc
