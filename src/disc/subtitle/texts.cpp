#include "disc/subtitle/texts.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "disc/run/fault.h"
#include "disc/run/text_file.h"
#include "disc/subtitle/choice.h"
#include "disc/subtitle/encoding.h"
#include "disc/subtitle/matroska.h"
#include "disc/subtitle/vobsub_index.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Bytes of a text that somebody has written; a file that holds more is something else.
constexpr std::uintmax_t kMostTextBytes = 16 << 20;

// The same of pictures.
constexpr std::uintmax_t kMostPictureBytes = 256 << 20;

constexpr const char* kPgs = "hdmv_pgs_subtitle";
constexpr const char* kDvb = "dvb_subtitle";

bool isStyled(const FilmSubtitle& subtitle) {
    return subtitle.codec == "ass" || subtitle.codec == "ssa";
}

bool areUnits(const FilmSubtitle& subtitle) {
    return subtitle.codec == "dvd_subtitle" || subtitle.codec == kDvb;
}

const char* extensionOf(const FilmSubtitle& subtitle) {
    if (areUnits(subtitle)) return "mks";
    return subtitle.codec == kPgs ? "sup" : "ass";
}

// Beside the text of subtitles: the encoding that was guessed, if any.
std::string guessPath(const std::string& text) {
    return text + ".guess";
}

std::string nameIn(const std::string& folder, std::size_t number, const FilmSubtitle& subtitle) {
    return fmt::format("{}/{}.{}", folder, number, extensionOf(subtitle));
}

bool isTooLarge(const FilmSubtitle& subtitle) {
    std::error_code error;
    const auto bytes = fs::file_size(subtitle.path, error);
    const bool areTexts = extensionOf(subtitle) == std::string_view("ass");
    return !error && bytes > (areTexts ? kMostTextBytes : kMostPictureBytes);
}

// Whether a film says nothing of it when they are empty: most captions are.
bool areCaptions(const FilmSubtitle& subtitle) {
    return subtitle.codec == kCaptions || subtitle.codec == "eia_608";
}

// `path`: of what was read.
bool hasCue(const FilmSubtitle& subtitle, const std::string& path) {
    if (extensionOf(subtitle) == std::string_view("ass"))
        return readText(path).find("\nDialogue:") != std::string::npos;
    std::ifstream file(path, std::ios::binary);
    // Each part of a file of PGS begins like this.
    if (subtitle.codec == kPgs) return file.get() == 'P' && file.get() == 'G';
    bool isThere = false;
    readMatroska(
        file, [](ByteSpan) {}, [&](const MatroskaPacket&) { isThere = true; });
    return isThere;
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
            if (areUnits(subtitle)) {
                inputs.push_back(stampOf({unitsOfIndex(subtitle.path)}));
                inputs.push_back(std::to_string(subtitle.index));
            }
            inputs.push_back(subtitle.language);
        }
    }
    if (readsFilm) inputs.push_back(film.source.stamp);
    return inputs;
}

// Makes the texts of one film, its own with one run of ffmpeg.
class TextReader {
  public:
    // `folder`: in the workshop, for the texts.
    TextReader(const Film& film, std::string folder, const Workshop& workshop)
        : film_(film), folder_(std::move(folder)), workshop_(workshop) {}

    void run() {
        for (std::size_t i = 0; i < film_.subtitles.size(); ++i) {
            const FilmSubtitle& subtitle = film_.subtitles[i];
            if (!areDrawable(subtitle)) continue;
            const std::string name = nameIn(folder_, i, subtitle);
            if (!subtitle.path.empty()) {
                readFile(subtitle, name);
            } else if (subtitle.codec == kCaptions) {
                readCaptions(name);
            } else {
                addOutputs(subtitle, name);
            }
        }
        if (outputs_.empty()) return;
        runFfmpeg(command());
        for (const std::string& input : inputs_)
            fs::remove(workshop_.path(input));
    }

  private:
    struct Output {
        std::size_t input;
        int stream;
        std::vector<std::string> words;
    };

    // Of the film's own.
    void addOutputs(const FilmSubtitle& subtitle, const std::string& name) {
        readsFilm_ = true;
        const auto add = [&](std::vector<std::string> words) {
            outputs_.push_back({0, subtitle.index, std::move(words)});
        };
        if (subtitle.codec == kDvb) {
            // With four colours each, as a disc has them, and with the ends that they have. Of any
            // size: that of the whole is in what they were.
            add({"-c", "dvdsub", "-s", "4096x4096", "-f", "matroska", name});
            add({"-c", "copy", "-f", "data", dvbSource(name)});
        } else if (areUnits(subtitle)) {
            add({"-c", "copy", "-f", "matroska", name});
        } else if (subtitle.codec == kPgs) {
            add({"-c", "copy", "-f", "sup", name});
        } else {
            add({"-f", "ass", name});
        }
    }

    // What is of another format than ASS is converted; one that cannot be read has no cue.
    void readFile(const FilmSubtitle& subtitle, const std::string& name) {
        if (areUnits(subtitle)) return readIndex(subtitle, name);
        if (subtitle.codec == kPgs) {
            std::error_code error;
            if (!isTooLarge(subtitle)) fs::copy_file(subtitle.path, workshop_.path(name), error);
            return;
        }
        const auto bytes = tkv::readFile(subtitle.path, static_cast<std::int64_t>(kMostTextBytes));
        const auto text = bytes ? decodedText(*bytes, subtitle.language) : std::nullopt;
        const std::string written = isStyled(subtitle) ? name : name + ".text";
        writeText(workshop_.path(written), text ? text->text : "");
        if (text && !text->guessed.empty())
            writeText(workshop_.path(guessPath(name)), text->guessed);
        if (written == name) return;
        inputs_.push_back(written);
        formats_.emplace_back(subtitle.codec == "webvtt" ? "webvtt" : "srt");
        outputs_.push_back({inputs_.size(), 0, {"-f", "ass", name}});
    }

    // Without "-copyts" the first picture would be shown at once. One that is damaged is no reason
    // to make no disc.
    void readIndex(const FilmSubtitle& subtitle, const std::string& name) {
        try {
            runFfmpeg({"ffmpeg",    "-nostdin",
                       "-v",        "error",
                       "-y",        "-copyts",
                       "-f",        "vobsub",
                       "-sub_name", unitsOfIndex(subtitle.path),
                       "-i",        subtitle.path,
                       "-map",      fmt::format("0:{}", subtitle.index),
                       "-c",        "copy",
                       "-fs",       std::to_string(kMostPictureBytes),
                       "-f",        "matroska",
                       name});
        } catch (const DiscError&) {
            fs::remove(workshop_.path(name));
        }
    }

    // Reads what stands in the film's pictures, which are decoded for that. The filter is given
    // links with plain names, since its own words give many letters a meaning.
    void readCaptions(const std::string& name) {
        std::string links;
        for (std::size_t i = 0; i < film_.source.files.size(); ++i) {
            const std::string link = fmt::format("{}/film{}", folder_, i);
            fs::create_symlink(film_.source.files[i], workshop_.path(link));
            links += (i == 0 ? "" : "|") + link;
        }
        const bool isOne = film_.source.files.size() == 1;
        const std::string container = film_.container.substr(0, film_.container.find(','));
        runFfmpeg({"ffmpeg", "-nostdin", "-v", "error", "-y", "-copyts", "-itsoffset",
                   fmt::format("{:.6f}", -film_.start), "-f", "lavfi", "-i",
                   fmt::format("movie=filename={}{}:format_name={}:si={}[out+subcc]",
                               isOne ? "" : "concat\\\\:", links, container, film_.video.index),
                   "-map", "0:s", "-f", "ass", name});
        for (std::size_t i = 0; i < film_.source.files.size(); ++i)
            fs::remove(workshop_.path(fmt::format("{}/film{}", folder_, i)));
    }

    void runFfmpeg(const std::vector<std::string>& words) const {
        const std::string& path = film_.source.path;
        workshop_.tools().run(words,
                              {path, fmt::format("The subtitles of {} could not be read", path),
                               "Make the disc without them: --subtitles none"});
    }

    std::vector<std::string> command() const {
        std::vector<std::string> words{"ffmpeg", "-nostdin", "-v", "error", "-y"};
        const auto add = [&](const std::vector<std::string>& more) {
            words.insert(words.end(), more.begin(), more.end());
        };
        for (std::size_t i = 0; readsFilm_ && i < film_.fonts.size(); ++i) {
            add({fmt::format("-dump_attachment:{}", film_.fonts[i]),
                 fmt::format("{}/{}.font", folder_, i)});
        }
        // Where no stream of the film is wanted, it need not be read. Without any offset ffmpeg has
        // MPEG's streams begin at 0 with the first that is wanted.
        if (readsFilm_) {
            add({"-itsoffset", "0.000001"});
            add(inputWords(film_.source));
        }
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            add({"-f", formats_[i], "-i", inputs_[i]});
        for (const Output& output : outputs_) {
            const std::size_t input = readsFilm_ ? output.input : output.input - 1;
            add({"-map", fmt::format("{}:{}", input, output.stream)});
            add(output.words);
        }
        // Where a DVD's clock begins anew, its pictures tell how far it has come.
        if (readsFilm_ && film_.container.starts_with("mpeg"))
            add({"-map", fmt::format("0:{}", film_.video.index), "-c", "copy", "-f", "null", "-"});
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
    if (std::ranges::none_of(film.subtitles, areDrawable)) return;
    const Workshop::Lock lock(workshop, film.source.stamp);
    const std::string folder = workshop.result(Workshop::nameOf("texts", "", inputsOf(film)),
                                               [&](const std::string& made) {
                                                   fs::create_directory(workshop.path(made));
                                                   TextReader(film, made, workshop).run();
                                               });
    for (std::size_t i = 0; i < film.subtitles.size(); ++i) {
        FilmSubtitle& subtitle = film.subtitles[i];
        if (!areDrawable(subtitle)) continue;
        subtitle.text = nameIn(folder, i, subtitle);
        const std::string name = nameOf(subtitle, film);
        const std::string guess = readText(workshop.path(guessPath(subtitle.text)));
        if (!hasCue(subtitle, workshop.path(subtitle.text))) {
            if (!areCaptions(subtitle))
                film.notes.push_back(
                    fmt::format("{} holds {}, and is left out", name,
                                isTooLarge(subtitle) ? "more than subtitles do" : "no subtitles"));
            subtitle.text.clear();
        } else if (!guess.empty()) {
            film.notes.push_back(
                fmt::format("{} does not tell its encoding; it was read as {}", name, guess));
        }
    }
    std::erase_if(film.subtitles, [](const FilmSubtitle& subtitle) {
        return subtitle.text.empty() && areDrawable(subtitle);
    });
}

std::string dvbSource(const std::string& text) {
    return text + ".dvb";
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
