#include "disc/project/project_file.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include "disc/project/deep_names.h"
#include "disc/project/film_table.h"
#include "disc/project/names.h"
#include "disc/project/settings.h"
#include "disc/project/table_reader.h"
#include "disc/run/fault.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

constexpr std::int64_t kMostBytes = 16 << 20;
constexpr const char* kFilmTables = "[[film]], one such line above the settings of each film";

// Reads the tables of one file.
class ProjectReader {
  public:
    explicit ProjectReader(const TableReader& tables) : tables_(tables) {}

    void read(const toml::table& table, Project& project) const {
        std::vector<std::string> known{"labels", "film"};
        known.reserve(known.size() + kFlagSettings.size() + textSettings().size());
        for (const FlagSetting& flag : kFlagSettings)
            known.emplace_back(flag.name);
        for (const TextSetting& setting : textSettings())
            known.emplace_back(setting.name);
        tables_.refuseOthers(table, known);
        for (const TextSetting& setting : textSettings()) {
            const toml::node* node = table.get(setting.name);
            if (node == nullptr) continue;
            const std::string text = tables_.textIn(*node, setting.name, setting.wanted);
            if (!setting.set(project,
                             setting.isPath && text != kNone ? tables_.pathOf(text) : text))
                tables_.refuse(*node, setting.name, setting.wanted);
        }
        for (const FlagSetting& flag : kFlagSettings) {
            const toml::node* node = table.get(flag.name);
            if (node != nullptr) project.*flag.value = tables_.flagIn(*node, flag.name);
        }
        if (const toml::node* labels = table.get("labels")) readLabels(*labels, project.labels);
        if (const toml::node* films = table.get("film")) readFilms(*films, project.films);
    }

  private:
    const TableReader& tables_;

    void readLabels(const toml::node& node, Labels& labels) const {
        const toml::table* table = node.as_table();
        if (table == nullptr) tables_.refuse(node, "labels", "a [labels] line above them");
        std::vector<std::string> known;
        known.reserve(kLabelNames.size());
        for (const LabelName& label : kLabelNames)
            known.emplace_back(label.name);
        tables_.refuseOthers(*table, known);
        for (const auto& [key, text] : *table) {
            const auto label = labelNamed(key.str());
            if (label == nullptr) continue;
            labels.*label = tables_.textIn(text, key.str(), "a text");
            if ((labels.*label).empty()) tables_.refuse(text, key.str(), "a text");
        }
    }

    void readFilms(const toml::node& node, std::vector<FilmRequest>& films) const {
        const toml::array* array = node.as_array();
        if (array == nullptr) tables_.refuse(node, "film", kFilmTables);
        for (const toml::node& film : *array) {
            const toml::table* table = film.as_table();
            if (table == nullptr) tables_.refuse(film, "film", kFilmTables);
            films.push_back(filmIn(*table, tables_));
        }
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
        const TableReader tables(path, parentFolder(absolute));
        ProjectReader(tables).read(toml::parse(text), project);
    } catch (const toml::parse_error& error) {
        throw DiscError(
            fmt::format("{}:{}: {}", path, error.source().begin.line, error.description()), path);
    }
}

}  // namespace tkv::disc
