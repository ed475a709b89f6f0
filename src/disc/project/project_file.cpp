#include "disc/project/project_file.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <utility>

#include "disc/project/deep_names.h"
#include "disc/project/languages.h"
#include "disc/project/names.h"
#include "disc/project/nearest_name.h"
#include "disc/project/settings.h"
#include "disc/run/fault.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

constexpr std::int64_t kMostBytes = 16 << 20;
constexpr const char* kFilmTables = "[[film]], one such line above the settings of each film";
constexpr std::array<std::string_view, 7> kFilmKeys{"path",     "title",     "caption", "excerpt",
                                                    "chapters", "subtitles", "show"};

// Of a DVD.
constexpr int kMostTitles = 99;

constexpr const char* kLanguage = "the two letters of a language";

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

// Reads the tables of one file.
class Reader {
  public:
    // `path`: as messages name the file. `folder`: where its relative paths begin.
    Reader(std::string path, std::string folder)
        : path_(std::move(path)), folder_(std::move(folder)) {}

    void read(const toml::table& table, Project& project) const {
        std::vector<std::string> known{"labels", "film"};
        known.reserve(known.size() + kFlagSettings.size() + textSettings().size());
        for (const FlagSetting& flag : kFlagSettings)
            known.emplace_back(flag.name);
        for (const TextSetting& setting : textSettings())
            known.emplace_back(setting.name);
        refuseOthers(table, known);
        for (const TextSetting& setting : textSettings()) {
            const toml::node* node = table.get(setting.name);
            if (node == nullptr) continue;
            const std::string text = textIn(*node, setting.name, setting.wanted);
            if (!setting.set(project, setting.isPath && text != kNone ? pathOf(text) : text))
                refuse(*node, setting.name, setting.wanted);
        }
        for (const FlagSetting& flag : kFlagSettings) {
            const toml::node* node = table.get(flag.name);
            if (node == nullptr) continue;
            if (!node->is_boolean()) refuse(*node, flag.name, "true or false");
            project.*flag.value = node->as_boolean()->get();
        }
        if (const toml::node* labels = table.get("labels")) readLabels(*labels, project.labels);
        if (const toml::node* films = table.get("film")) readFilms(*films, project.films);
    }

  private:
    std::string path_, folder_;

    [[noreturn]] void fail(const toml::source_region& place, const std::string& message) const {
        throw DiscError(fmt::format("{}:{}: {}", path_, place.begin.line, message), path_);
    }

    [[noreturn]] void refuse(const toml::node& node, std::string_view key,
                             std::string_view wanted) const {
        fail(node.source(), fmt::format("{} wants {}", key, wanted));
    }

    void refuseOthers(const toml::table& table, const std::vector<std::string>& known) const {
        for (const auto& [key, node] : table) {
            if (std::ranges::count(known, key.str()) > 0) continue;
            const std::string meant = nearestName(key.str(), known);
            fail(key.source(), fmt::format("nothing here is called '{}'{}", key.str(),
                                           meant.empty() ? "" : ": did you mean " + meant + "?"));
        }
    }

    std::string textIn(const toml::node& node, std::string_view key,
                       std::string_view wanted) const {
        const auto text = node.value_exact<std::string>();
        if (!text || text->find('\0') != std::string::npos) refuse(node, key, wanted);
        return *text;
    }

    std::string pathOf(const std::string& text) const {
        return text.empty() ? text : absolutePath(expandTilde(text), folder_);
    }

    void readLabels(const toml::node& node, Labels& labels) const {
        const toml::table* table = node.as_table();
        if (table == nullptr) refuse(node, "labels", "a [labels] line above them");
        std::vector<std::string> known;
        known.reserve(kLabelNames.size());
        for (const LabelName& label : kLabelNames)
            known.emplace_back(label.name);
        refuseOthers(*table, known);
        for (const auto& [key, text] : *table) {
            const auto label = labelNamed(key.str());
            if (label == nullptr) continue;
            labels.*label = textIn(text, key.str(), "a text");
            if ((labels.*label).empty()) refuse(text, key.str(), "a text");
        }
    }

    void readFilms(const toml::node& node, std::vector<FilmRequest>& films) const {
        const toml::array* array = node.as_array();
        if (array == nullptr) refuse(node, "film", kFilmTables);
        for (const toml::node& film : *array) {
            const toml::table* table = film.as_table();
            if (table == nullptr) refuse(film, "film", kFilmTables);
            films.push_back(filmOf(*table));
        }
    }

    FilmRequest filmOf(const toml::table& table) const {
        refuseOthers(table, {kFilmKeys.begin(), kFilmKeys.end()});
        FilmRequest film;
        const toml::node* path = table.get("path");
        if (path == nullptr) fail(table.source(), "this film has no path");
        film.path = pathOf(textIn(*path, "path", "the name of a film"));
        if (film.path.empty()) refuse(*path, "path", "the name of a film");
        if (const toml::node* title = table.get("title")) {
            const auto number = title->value_exact<std::int64_t>().value_or(0);
            if (number < 1 || number > kMostTitles)
                refuse(*title, "title", "the number of a DVD's title, from 1");
            film.title = static_cast<int>(number);
        }
        if (const toml::node* caption = table.get("caption"))
            film.caption = textIn(*caption, "caption", "a text");
        if (const toml::node* excerpt = table.get("excerpt")) film.excerpts = excerptsIn(*excerpt);
        if (const toml::node* chapters = table.get("chapters"))
            film.chapters = chaptersIn(*chapters);
        if (const toml::node* files = table.get("subtitles")) film.subtitles = subtitlesIn(*files);
        if (const toml::node* show = table.get("show")) {
            const std::string text = textIn(*show, "show", kLanguage);
            if (text != kNone && !isLanguage(text)) refuse(*show, "show", kLanguage);
            film.shown = text;
        }
        return film;
    }

    // A time, or a list of such for the pictures of a strip.
    std::vector<double> excerptsIn(const toml::node& node) const {
        std::vector<double> times;
        const auto add = [&](const toml::node& element) {
            const auto time = timeOf(element);
            if (!time) refuse(element, "excerpt", "a time such as \"1:23\", seconds, or a list");
            times.push_back(*time);
        };
        if (!node.is_array()) {
            add(node);
            return times;
        }
        for (const toml::node& element : *node.as_array())
            add(element);
        return times;
    }

    // Names of files, or tables of a name and what is not to be read from it.
    std::vector<SubtitleRequest> subtitlesIn(const toml::node& node) const {
        constexpr const char* kWanted =
            "a list such as [\"film.fr.srt\", { path = \"signs.ass\", forced = true }]";
        const toml::array* array = node.as_array();
        if (array == nullptr) refuse(node, "subtitles", kWanted);
        std::vector<SubtitleRequest> files;
        for (const toml::node& element : *array) {
            SubtitleRequest file;
            const toml::table* const table = element.as_table();
            if (table != nullptr) refuseOthers(*table, {"path", "language", "forced"});
            const toml::node* const path = table == nullptr ? &element : table->get("path");
            if (path == nullptr) refuse(element, "subtitles", kWanted);
            file.path = pathOf(textIn(*path, "subtitles", kWanted));
            if (file.path.empty()) refuse(*path, "subtitles", kWanted);
            if (const auto* language = table == nullptr ? nullptr : table->get("language")) {
                file.language = textIn(*language, "language", kLanguage);
                if (!isLanguage(*file.language)) refuse(*language, "language", kLanguage);
            }
            if (const auto* forced = table == nullptr ? nullptr : table->get("forced")) {
                if (!forced->is_boolean()) refuse(*forced, "forced", "true or false");
                file.isForced = forced->as_boolean()->get();
            }
            files.push_back(std::move(file));
        }
        return files;
    }

    std::vector<Chapter> chaptersIn(const toml::node& node) const {
        constexpr const char* kWanted = "a list such as [\"0:00 Departure\", \"12:34\"]";
        const toml::array* array = node.as_array();
        if (array == nullptr) refuse(node, "chapters", kWanted);
        std::vector<Chapter> chapters;
        for (const toml::node& element : *array) {
            const auto chapter = chapterOf(textIn(element, "chapters", kWanted));
            if (!chapter) refuse(element, "chapters", kWanted);
            chapters.push_back(*chapter);
        }
        return chapters;
    }
};

}  // namespace

void readProjectFile(const std::string& path, const std::string& folder, Project& project) {
    const std::string absolute = absolutePath(path, folder);
    const auto stamp = fileStamp(absolute);
    if (stamp && stamp->bytes > kMostBytes)
        throw DiscError(fmt::format("{} is too large for a project file.", path), path);
    const auto bytes = readFile(absolute);
    if (!bytes) throw DiscError(fmt::format("{} cannot be read; is that its name?", path), path);
    try {
        const std::string text(bytes->begin(), bytes->end());
        if (const auto line = lineOfDeepName(text))
            throw DiscError(fmt::format("{}:{}: a name has too many parts", path, *line), path);
        Reader(path, parentFolder(absolute)).read(toml::parse(text), project);
    } catch (const toml::parse_error& error) {
        throw DiscError(
            fmt::format("{}:{}: {}", path, error.source().begin.line, error.description()), path);
    }
}

}  // namespace tkv::disc
