#include "disc/project/project_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <toml++/toml.h>

#include <sstream>

#include "disc/project/languages.h"
#include "disc/project/names.h"
#include "disc/project/settings.h"
#include "disc/run/fault.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

constexpr const char* kHead =
    R"(# What is to stand on a disc. To make it: tkvDvdDisc THIS.toml -o FOLDER
#
# Settings behind a # are defaults or examples: take the # away and change them.
# Paths begin in the folder of this file.
)";
constexpr const char* kAboveLabels = R"(
# The texts of the menus. A number takes the place of {}.
[labels]
)";
constexpr const char* kAboveFilms = R"(
# The films, in their order; for each:
#   path      a film, a folder of films or of a DVD, or the first VOB of a title
#   parts     instead of path: the files that make it together, in their order
#   slides    instead of path: pictures that make a film, or folders of them; then also
#             seconds (each), motion (none or slow), music (under all of it),
#             fit = "music" (they share its length) and titles = true (their own, on them)
#   title     of a DVD's titles the only one that is meant: 1, 2 and so on
#   caption   what the menu calls it
#   excerpt   where the menu's moving picture begins; else where something is to be seen.
#             Of two or three films the menu shows several pictures each: a list names them all
#   chapters  where they begin, with names or without; [] for none; else as said above
#   subtitles their files, instead of those in the film and beside it; [] for none
#   show      the language of the subtitles that are shown from the start, or none
#   start, end   the part of it that is wanted; all times here are those of the film as it is
#   audio     its sound tracks, by languages or numbers, in their order: ["de", "en"], [2, 1]
#   audio-delay  seconds by which its sound is to come later; below 0: earlier
#   crop      "auto" cuts black bars off; or pixels of left, top, right, bottom: [0, 138, 0, 138]
#   aspect    the shape of its whole picture, where the film tells a wrong one: "16:9", 2.39
#   deinterlace  true: makes whole pictures of its fields; false: they are whole, whatever it tells
)";
constexpr const char* kExcerptExample = "#excerpt = \"1:23\"\n";
constexpr const char* kSubtitlesExample =
    "#subtitles = [\"film.fr.srt\", { path = \"signs.ass\", language = \"en\", forced = true }]\n";
constexpr const char* kMusicExample = "#music = [\"song.flac\", \"another.mp3\"]\n";
constexpr const char* kShowExample = "#show = \"fr\"\n";
constexpr const char* kChaptersExample = "#chapters = [\"0:00 Departure\", \"12:34\"]\n";

// As TOML quotes a text.
std::string quoted(const std::string& text) {
    if (!isUtf8(text))
        throw DiscError(
            fmt::format("'{}' is not UTF-8, and a project file holds nothing else; rename it",
                        validUtf8(text)));
    std::ostringstream out;
    const toml::value<std::string> value(text);
    out << toml::toml_formatter(value, toml::format_flags::allow_unicode_strings);
    return out.str();
}

// A path as it is written: that of a file below the folder begins there.
std::string shortPath(const std::string& path, const std::string& folder) {
    const std::string inside = folder == "/" ? folder : folder + "/";
    if (!path.starts_with(inside) || path == inside) return path;
    const std::string relative = path.substr(inside.size());
    return relative.starts_with('~') ? "./" + relative : relative;
}

class Writer {
  public:
    Writer(const Project& project, const std::string& folder)
        : project_(project), folder_(folder), text_(kHead) {}

    void writeSettings() {
        static const Project defaults;
        for (const TextSetting& setting : textSettings()) {
            const auto value = setting.text(project_);
            const bool isDefault = value == setting.text(defaults);
            text_ += fmt::format("\n# {}\n", setting.explanation);
            const std::string shown = value.value_or(std::string(setting.example));
            writeLine(isDefault, setting.name,
                      quoted(setting.isPath && shown != kNone ? shortPath(shown, folder_) : shown));
        }
        for (const FlagSetting& flag : kFlagSettings) {
            const bool value = project_.*flag.value;
            text_ += fmt::format("\n# {}\n", flag.explanation);
            writeLine(value == defaults.*flag.value, flag.name, value ? "true" : "false");
        }
    }

    void writeLabels() {
        text_ += kAboveLabels;
        const Labels defaults = labelsOf(project_.labels.language);
        for (const LabelName& label : kLabelNames) {
            const std::string& value = project_.labels.*label.text;
            writeLine(value == defaults.*label.text, label.name, quoted(value));
        }
    }

    void writeFilm(const FilmRequest& request) {
        text_ += "\n[[film]]\n";
        if (request.slides) {
            writeSlides(*request.slides);
        } else if (!request.parts.empty()) {
            writePaths("parts", request.parts);
        } else {
            writeLine(false, "path", quoted(shortPath(request.path, folder_)));
        }
        if (request.title > 0) writeLine(false, "title", std::to_string(request.title));
        writeLine(false, "caption", quoted(captionOf(request, "")));
        writeExcerpts(request.excerpts);
        if (request.chapters) {
            writeChapters(*request.chapters);
        } else {
            text_ += kChaptersExample;
        }
        writeSubtitles(request);
        writeChoices(request.choices);
    }

    void append(const char* text) { text_ += text; }
    const std::string& text() const { return text_; }

  private:
    using NoSubtitles = std::vector<SubtitleRequest>;

    const Project& project_;
    std::string folder_, text_;

    void writeLine(bool isComment, std::string_view key, std::string_view value) {
        text_ += fmt::format("{}{} = {}\n", isComment ? "#" : "", key, value);
    }

    void writeExcerpts(const std::vector<double>& times) {
        std::vector<std::string> texts;
        texts.reserve(times.size());
        for (const double seconds : times)
            texts.push_back(quoted(timeText(seconds)));
        if (texts.empty()) {
            text_ += kExcerptExample;
        } else if (texts.size() == 1) {
            writeLine(false, "excerpt", texts.front());
        } else {
            writeLine(false, "excerpt", fmt::format("[{}]", fmt::join(texts, ", ")));
        }
    }

    void writeChoices(const FilmChoices& choices) {
        if (choices.start > 0) writeLine(false, "start", quoted(timeText(choices.start)));
        if (choices.end) writeLine(false, "end", quoted(timeText(*choices.end)));
        if (choices.audio) {
            std::vector<std::string> tracks;
            for (const std::string& track : *choices.audio)
                tracks.push_back(isLanguage(track) ? quoted(track) : track);
            writeLine(false, "audio", fmt::format("[{}]", fmt::join(tracks, ", ")));
        }
        if (choices.audioDelay != 0)
            writeLine(false, "audio-delay", fmt::format("{}", choices.audioDelay));
        const Edges& edges = choices.edges;
        if (choices.cutsBars) writeLine(false, "crop", quoted(std::string(kAuto)));
        if (edges != Edges{})
            writeLine(
                false, "crop",
                fmt::format("[{}, {}, {}, {}]", edges.left, edges.top, edges.right, edges.bottom));
        if (choices.aspect > 0) writeLine(false, "aspect", fmt::format("{}", choices.aspect));
        if (choices.deinterlace)
            writeLine(false, "deinterlace", *choices.deinterlace ? "true" : "false");
    }

    void writePaths(std::string_view key, const std::vector<std::string>& paths) {
        std::string list;
        for (const std::string& path : paths)
            list += fmt::format("    {},\n", quoted(shortPath(path, folder_)));
        writeLine(false, key, "[\n" + list + "]");
    }

    void writeSlides(const SlideRequest& slides) {
        static const SlideRequest defaults;
        writePaths("slides", slides.paths);
        writeLine(slides.seconds == defaults.seconds, "seconds", fmt::format("{}", slides.seconds));
        writeLine(!slides.moves, "motion", "\"slow\"");
        if (slides.music.empty()) {
            text_ += kMusicExample;
        } else {
            writePaths("music", slides.music);
        }
        writeLine(!slides.fitsMusic, "fit", "\"music\"");
        writeLine(!slides.showsTitles, "titles", "true");
    }

    void writeSubtitles(const FilmRequest& request) {
        std::string list;
        for (const SubtitleRequest& file : request.subtitles.value_or(NoSubtitles{})) {
            list += fmt::format("    {{ path = {}", quoted(shortPath(file.path, folder_)));
            if (file.language) list += fmt::format(", language = {}", quoted(*file.language));
            if (file.isForced) list += fmt::format(", forced = {}", *file.isForced);
            list += " },\n";
        }
        if (!request.subtitles) {
            text_ += kSubtitlesExample;
        } else {
            writeLine(false, "subtitles", list.empty() ? "[]" : "[\n" + list + "]");
        }
        if (!request.shown) {
            text_ += kShowExample;
        } else {
            writeLine(false, "show", quoted(*request.shown));
        }
    }

    void writeChapters(const std::vector<Chapter>& chapters) {
        std::string list;
        for (const Chapter& chapter : chapters) {
            const std::string time = timeText(chapter.seconds);
            list += fmt::format("    {},\n",
                                quoted(chapter.name.empty() ? time : time + " " + chapter.name));
        }
        writeLine(false, "chapters", list.empty() ? "[]" : "[\n" + list + "]");
    }
};

}  // namespace

std::string projectFileText(const Project& project, const std::string& folder) {
    Writer writer(project, folder);
    writer.writeSettings();
    writer.writeLabels();
    writer.append(kAboveFilms);
    for (const FilmRequest& film : project.films)
        writer.writeFilm(film);
    return writer.text();
}

}  // namespace tkv::disc
