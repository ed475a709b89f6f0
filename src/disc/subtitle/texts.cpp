#include "disc/subtitle/texts.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "disc/run/fault.h"
#include "disc/run/text_file.h"
#include "disc/subtitle/choice.h"
#include "disc/subtitle/encoding.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Bytes of a text that somebody has written; a file that holds more is something else.
constexpr std::int64_t kMostBytes = 16 << 20;

bool isStyled(const FilmSubtitle& subtitle) {
    return subtitle.codec == "ass" || subtitle.codec == "ssa";
}

bool areBitmaps(const FilmSubtitle& subtitle) {
    return subtitle.codec == "hdmv_pgs_subtitle";
}

// Beside the text of subtitles: the encoding that was guessed, if any.
std::string guessPath(const std::string& text) {
    return text + ".guess";
}

std::string nameIn(const std::string& folder, std::size_t number, const FilmSubtitle& subtitle) {
    return fmt::format("{}/{}.{}", folder, number, areBitmaps(subtitle) ? "sup" : "ass");
}

// `path`: of what was read.
bool hasCue(const FilmSubtitle& subtitle, const std::string& path) {
    // Each part of a file of pictures begins like this.
    if (areBitmaps(subtitle)) return readText(path).starts_with("PG");
    return readText(path).find("\nDialogue:") != std::string::npos;
}

// What all that is read depends on.
std::vector<std::string> inputsOf(const Film& film) {
    std::vector<std::string> inputs;
    bool readsFilm = false;
    for (const FilmSubtitle& subtitle : film.subtitles) {
        inputs.push_back(subtitle.codec);
        if (subtitle.path.empty()) {
            readsFilm = true;
            inputs.push_back(std::to_string(subtitle.index));
        } else {
            inputs.push_back(stampOf({subtitle.path}));
            inputs.push_back(subtitle.language);
        }
    }
    if (readsFilm) inputs.push_back(film.source.stamp);
    return inputs;
}

// Makes the texts of one film, with one run of ffmpeg.
class TextReader {
  public:
    // `folder`: in the workshop, for the texts.
    TextReader(const Film& film, std::string folder, const Workshop& workshop)
        : film_(film), folder_(std::move(folder)), workshop_(workshop) {}

    void run() {
        for (std::size_t i = 0; i < film_.subtitles.size(); ++i) {
            const FilmSubtitle& subtitle = film_.subtitles[i];
            if (!subtitle.path.empty()) {
                readFile(subtitle, textName(i));
            } else {
                outputs_.push_back({0, subtitle.index, textName(i), areBitmaps(subtitle)});
                readsFilm_ = true;
            }
        }
        if (outputs_.empty()) return;
        const std::string& path = film_.source.path;
        workshop_.tools().run(command(),
                              {path, fmt::format("The subtitles of {} could not be read", path),
                               "Make the disc without them: --subtitles none"});
        for (const std::string& input : inputs_)
            fs::remove(workshop_.path(input));
    }

  private:
    struct Output {
        std::size_t input;
        int stream;
        std::string name;
        bool areBitmaps;
    };

    std::string textName(std::size_t number) const {
        return nameIn(folder_, number, film_.subtitles[number]);
    }

    // What is of another format than ASS is converted; one that cannot be read has no cue.
    void readFile(const FilmSubtitle& subtitle, const std::string& name) {
        if (areBitmaps(subtitle)) {
            std::error_code error;
            fs::copy_file(subtitle.path, workshop_.path(name), error);
            return;
        }
        const auto bytes = tkv::readFile(subtitle.path, kMostBytes);
        const auto text = bytes ? decodedText(*bytes, subtitle.language) : std::nullopt;
        const std::string written = isStyled(subtitle) ? name : name + ".text";
        writeText(workshop_.path(written), text ? text->text : "");
        if (text && !text->guessed.empty())
            writeText(workshop_.path(guessPath(name)), text->guessed);
        if (written == name) return;
        inputs_.push_back(written);
        formats_.emplace_back(subtitle.codec == "webvtt" ? "webvtt" : "srt");
        outputs_.push_back({inputs_.size(), 0, name, false});
    }

    std::vector<std::string> command() const {
        std::vector<std::string> words{"ffmpeg", "-nostdin", "-v", "error", "-y"};
        const auto add = [&](std::initializer_list<std::string> more) {
            words.insert(words.end(), more);
        };
        for (std::size_t i = 0; readsFilm_ && i < film_.fonts.size(); ++i) {
            add({fmt::format("-dump_attachment:{}", film_.fonts[i]),
                 fmt::format("{}/{}.font", folder_, i)});
        }
        // Where no stream of the film is wanted, it need not be read.
        if (readsFilm_) add({"-i", inputName(film_.source.files)});
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            add({"-f", formats_[i], "-i", inputs_[i]});
        for (const Output& output : outputs_) {
            const std::size_t input = readsFilm_ ? output.input : output.input - 1;
            add({"-map", fmt::format("{}:{}", input, output.stream)});
            if (output.areBitmaps) add({"-c", "copy"});
            add({"-f", output.areBitmaps ? "sup" : "ass", output.name});
        }
        return words;
    }

    const Film& film_;
    std::string folder_;
    const Workshop& workshop_;
    bool readsFilm_ = false;
    std::vector<std::string> inputs_, formats_;
    std::vector<Output> outputs_;
};

}  // namespace

void readSubtitles(Film& film, Workshop& workshop) {
    if (film.subtitles.empty()) return;
    const Workshop::Lock lock(workshop, film.source.stamp);
    const std::string folder = workshop.result(Workshop::nameOf("texts", "", inputsOf(film)),
                                               [&](const std::string& made) {
                                                   fs::create_directory(workshop.path(made));
                                                   TextReader(film, made, workshop).run();
                                               });
    for (std::size_t i = 0; i < film.subtitles.size(); ++i) {
        FilmSubtitle& subtitle = film.subtitles[i];
        subtitle.text = nameIn(folder, i, subtitle);
        const std::string name = nameOf(subtitle, film);
        const std::string guess = readText(workshop.path(guessPath(subtitle.text)));
        if (!hasCue(subtitle, workshop.path(subtitle.text))) {
            film.notes.push_back(name + " holds no subtitles, and is left out");
            subtitle.text.clear();
        } else if (!guess.empty()) {
            film.notes.push_back(
                fmt::format("{} does not tell its encoding; it was read as {}", name, guess));
        }
    }
    std::erase_if(film.subtitles,
                  [](const FilmSubtitle& subtitle) { return subtitle.text.empty(); });
}

std::vector<std::string> attachedFonts(const Film& film, const Workshop& workshop) {
    std::vector<std::string> fonts;
    if (film.subtitles.empty()) return fonts;
    for (std::size_t i = 0; i < film.fonts.size(); ++i) {
        const std::string name =
            fmt::format("{}/{}.font", parentFolder(film.subtitles.front().text), i);
        if (fs::exists(workshop.path(name))) fonts.push_back(name);
    }
    return fonts;
}

}  // namespace tkv::disc
