#include "disc/project/film_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "disc/project/languages.h"
#include "disc/project/names.h"
#include "disc/project/slide_request.h"

namespace tkv::disc {

namespace {

constexpr int kMostTitles = 99;  // of a DVD

// What a recording's sound may be late by, in seconds.
constexpr double kMostDelay = 10;

// Pixels; no film has so many in a row.
constexpr int kMostCut = 16384;

constexpr double kLeastAspect = 0.2, kMostAspect = 5;

// Of slides, instead of kNone.
constexpr std::string_view kSlow = "slow";

constexpr const char* kLanguage = "the two letters of a language";
constexpr const char* kTime = "a time such as \"1:23\", or seconds";

std::optional<Chapter> chapterOf(const std::string& text) {
    const std::size_t blank = std::min(text.find_first_of(" \t"), text.size());
    const std::size_t name = std::min(text.find_first_not_of(" \t", blank), text.size());
    const auto seconds = secondsOf(text.substr(0, blank));
    if (!seconds) return {};
    return Chapter{*seconds, text.substr(name, text.find_last_not_of(" \t") + 1 - name)};
}

std::optional<double> timeOf(const toml::node& node) {
    if (const auto text = node.value_exact<std::string>()) return secondsOf(*text);
    const auto seconds = node.is_number() ? node.value<double>() : std::nullopt;
    return seconds && *seconds >= 0 && *seconds < kLongestFilm ? seconds : std::nullopt;
}

// Width to height of "16:9" or "2.39".
std::optional<double> aspectOf(const toml::node& node) {
    auto aspect = node.is_number() ? node.value<double>() : std::nullopt;
    if (const auto text = node.value_exact<std::string>()) {
        const std::size_t colon = std::min(text->find(':'), text->size());
        const auto width = secondsOf(text->substr(0, colon));
        const auto height = secondsOf(colon < text->size() ? text->substr(colon + 1) : "1");
        if (width && height && *height > 0) aspect = *width / *height;
    }
    if (!aspect || !(*aspect >= kLeastAspect && *aspect <= kMostAspect)) return {};
    return aspect;
}

using Reader = TableReader;
using Node = toml::node;

void readTitle(const Reader& reader, const Node& node, FilmRequest& film) {
    if (film.slides) reader.refuse(node, "title", "a DVD, which slides are not");
    const auto number = node.value_exact<std::int64_t>().value_or(0);
    if (number < 1 || number > kMostTitles)
        reader.refuse(node, "title", "the number of a DVD's title, from 1");
    film.title = static_cast<int>(number);
}

void readParts(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted = "a list of two films or more such as [\"a.mp4\", \"b.mp4\"]";
    for (const Node* element : reader.listIn(node, "parts", kWanted))
        film.parts.push_back(reader.pathIn(*element, "parts", kWanted));
    if (film.parts.size() < 2) reader.refuse(node, "parts", kWanted);
    if (!film.path.empty()) reader.fail(node.source(), "a film has a path or parts, not both");
    film.path = film.parts.front();
}

// Names of files, or one.
std::vector<std::string> pathsIn(const Reader& reader, const Node& node, std::string_view key) {
    constexpr const char* kWanted = "a name, or a list such as [\"a\", \"b\"]";
    std::vector<std::string> paths;
    for (const Node* element : reader.listIn(node, key, kWanted, Reader::Single::allowed))
        paths.push_back(reader.pathIn(*element, key, kWanted));
    if (paths.empty()) reader.refuse(node, key, kWanted);
    return paths;
}

void readSlides(const Reader& reader, const Node& node, FilmRequest& film) {
    if (!film.path.empty()) reader.refuse(node, "slides", "no path or parts beside it");
    FilmRequest pictures = filmOfPictures(pathsIn(reader, node, "slides"));
    film.path = std::move(pictures.path);
    film.slides = std::move(pictures.slides);
}

SlideRequest& slidesOf(const Reader& reader, const Node& node, std::string_view key,
                       FilmRequest& film) {
    if (!film.slides) reader.refuse(node, key, "a film of slides");
    return *film.slides;
}

void readSeconds(const Reader& reader, const Node& node, FilmRequest& film) {
    double& seconds = slidesOf(reader, node, "seconds", film).seconds;
    seconds = timeOf(node).value_or(0);
    if (seconds < kLeastSlideSeconds || seconds > kMostSlideSeconds)
        reader.refuse(node, "seconds",
                      fmt::format("a number from {} to {}", kLeastSlideSeconds, kMostSlideSeconds));
}

void readMotion(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted = "none or slow";
    const std::string text = reader.textIn(node, "motion", kWanted);
    if (text != kNone && text != kSlow) reader.refuse(node, "motion", kWanted);
    slidesOf(reader, node, "motion", film).moves = text == kSlow;
}

void readFit(const Reader& reader, const Node& node, FilmRequest& film) {
    SlideRequest& slides = slidesOf(reader, node, "fit", film);
    if (reader.textIn(node, "fit", "music") != "music") reader.refuse(node, "fit", "music");
    if (slides.music.empty()) reader.refuse(node, "fit", "music to be there");
    slides.fitsMusic = true;
}

// A time, or a list of such for the pictures of a strip.
void readExcerpts(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted = "a time such as \"1:23\", seconds, or a list";
    for (const Node* element : reader.listIn(node, "excerpt", kWanted, Reader::Single::allowed)) {
        const auto time = timeOf(*element);
        if (!time) reader.refuse(*element, "excerpt", kWanted);
        film.excerpts.push_back(*time);
    }
}

void readChapters(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted = "a list such as [\"0:00 Departure\", \"12:34\"]";
    std::vector<Chapter>& chapters = film.chapters.emplace();
    for (const Node* element : reader.listIn(node, "chapters", kWanted)) {
        const auto chapter = chapterOf(reader.textIn(*element, "chapters", kWanted));
        if (!chapter) reader.refuse(*element, "chapters", kWanted);
        chapters.push_back(*chapter);
    }
}

// Names of files, or tables of a name and what is not to be read from it.
void readSubtitles(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted =
        "a list such as [\"film.fr.srt\", { path = \"signs.ass\", forced = true }]";
    std::vector<SubtitleRequest>& files = film.subtitles.emplace();
    for (const Node* element : reader.listIn(node, "subtitles", kWanted)) {
        SubtitleRequest& file = files.emplace_back();
        const toml::table* const table = element->as_table();
        if (table == nullptr) {
            file.path = reader.pathIn(*element, "subtitles", kWanted);
            continue;
        }
        reader.refuseOthers(*table, {"path", "language", "forced"});
        const Node* const path = table->get("path");
        if (path == nullptr) reader.refuse(*element, "subtitles", kWanted);
        file.path = reader.pathIn(*path, "subtitles", kWanted);
        if (const Node* language = table->get("language")) {
            file.language = reader.textIn(*language, "language", kLanguage);
            if (!isLanguage(*file.language)) reader.refuse(*language, "language", kLanguage);
        }
        if (const Node* forced = table->get("forced"))
            file.isForced = reader.flagIn(*forced, "forced");
    }
}

void readShown(const Reader& reader, const Node& node, FilmRequest& film) {
    film.shown = reader.textIn(node, "show", kLanguage);
    if (*film.shown != kNone && !isLanguage(*film.shown)) reader.refuse(node, "show", kLanguage);
}

double timeIn(const Reader& reader, const Node& node, std::string_view key) {
    const auto time = timeOf(node);
    if (!time) reader.refuse(node, key, kTime);
    return *time;
}

void readEnd(const Reader& reader, const Node& node, FilmRequest& film) {
    film.choices.end = timeIn(reader, node, "end");
    if (*film.choices.end <= film.choices.start)
        reader.refuse(node, "end", "a time behind the start");
}

void readAudio(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted = "a list such as [\"de\", \"en\"] or [2, 1]";
    std::vector<std::string>& tracks = film.choices.audio.emplace();
    for (const Node* element : reader.listIn(node, "audio", kWanted)) {
        const auto number = element->value_exact<std::int64_t>();
        tracks.push_back(number ? std::to_string(*number)
                                : reader.textIn(*element, "audio", kWanted));
        if (number ? *number < 1 : !isLanguage(tracks.back()))
            reader.refuse(*element, "audio", kWanted);
    }
}

void readDelay(const Reader& reader, const Node& node, FilmRequest& film) {
    const auto seconds = node.is_number() ? node.value<double>() : std::nullopt;
    if (!seconds || !(std::abs(*seconds) <= kMostDelay))
        reader.refuse(node, "audio-delay", "seconds from -10 to 10, such as 0.2");
    film.choices.audioDelay = *seconds;
}

void readCrop(const Reader& reader, const Node& node, FilmRequest& film) {
    constexpr const char* kWanted =
        "\"auto\", or the pixels to be cut off at the left, top, right and bottom: [0, 138, 0, "
        "138]";
    film.choices.cutsBars = node.value_exact<std::string>() == std::string(kAuto);
    if (film.choices.cutsBars) return;
    const auto elements = reader.listIn(node, "crop", kWanted);
    std::array<int, 4> edges{};
    if (elements.size() != edges.size()) reader.refuse(node, "crop", kWanted);
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const auto pixels = elements[i]->value_exact<std::int64_t>().value_or(-1);
        if (pixels < 0 || pixels > kMostCut) reader.refuse(*elements[i], "crop", kWanted);
        edges.at(i) = static_cast<int>(pixels);
    }
    film.choices.edges = {edges[0], edges[1], edges[2], edges[3]};
}

void readAspect(const Reader& reader, const Node& node, FilmRequest& film) {
    const auto aspect = aspectOf(node);
    if (!aspect) reader.refuse(node, "aspect", "width to height, such as \"16:9\" or 2.39");
    film.choices.aspect = *aspect;
}

// In the order in which they are read.
struct FilmKey {
    std::string_view name;
    void (*read)(const Reader& reader, const Node& node, FilmRequest& film);
};
constexpr std::array kKeys{
    FilmKey{"path",
            [](const Reader& reader, const Node& node, FilmRequest& film) {
                film.path = reader.pathIn(node, "path", "the name of a film");
            }},
    FilmKey{"parts", readParts},
    FilmKey{"slides", readSlides},
    FilmKey{"seconds", readSeconds},
    FilmKey{"motion", readMotion},
    FilmKey{"music",
            [](const Reader& reader, const Node& node, FilmRequest& film) {
                slidesOf(reader, node, "music", film).music = pathsIn(reader, node, "music");
            }},
    FilmKey{"fit", readFit},
    FilmKey{"titles",
            [](const Reader& reader, const Node& node, FilmRequest& film) {
                slidesOf(reader, node, "titles", film).showsTitles = reader.flagIn(node, "titles");
            }},
    FilmKey{"title", readTitle},
    FilmKey{"caption",
            [](const Reader& reader, const Node& node, FilmRequest& film) {
                film.caption = reader.textIn(node, "caption", "a text");
            }},
    FilmKey{"excerpt", readExcerpts},
    FilmKey{"chapters", readChapters},
    FilmKey{"subtitles", readSubtitles},
    FilmKey{"show", readShown},
    FilmKey{"start", [](const Reader& reader, const Node& node,
                        FilmRequest& film) { film.choices.start = timeIn(reader, node, "start"); }},
    FilmKey{"end", readEnd},
    FilmKey{"audio", readAudio},
    FilmKey{"audio-delay", readDelay},
    FilmKey{"crop", readCrop},
    FilmKey{"aspect", readAspect},
    FilmKey{"deinterlace",
            [](const Reader& reader, const Node& node, FilmRequest& film) {
                film.choices.deinterlace = reader.flagIn(node, "deinterlace");
            }},
};

}  // namespace

FilmRequest filmIn(const toml::table& table, const TableReader& reader) {
    std::vector<std::string> known;
    known.reserve(kKeys.size());
    for (const FilmKey& key : kKeys)
        known.emplace_back(key.name);
    reader.refuseOthers(table, known);
    FilmRequest film;
    film.choices.place = reader.placeOf(table.source());
    for (const FilmKey& key : kKeys) {
        if (const Node* node = table.get(key.name)) key.read(reader, *node, film);
    }
    if (film.slides && film.choices != FilmChoices{.place = film.choices.place})
        reader.fail(table.source(), "slides have no start, end, audio, crop and the like");
    if (film.path.empty()) reader.fail(table.source(), "this film has no path and no parts");
    return film;
}

}  // namespace tkv::disc
