#include "disc/project/table_reader.h"

#include <fmt/format.h>

#include <algorithm>

#include "disc/project/names.h"
#include "disc/project/nearest_name.h"
#include "disc/run/fault.h"
#include "system/paths.h"

namespace tkv::disc {

std::string TableReader::placeOf(const toml::source_region& place) const {
    return fmt::format("{}:{}", path_, place.begin.line);
}

void TableReader::fail(const toml::source_region& place, const std::string& message) const {
    throw DiscError(fmt::format("{}: {}", placeOf(place), message), path_);
}

void TableReader::refuse(const toml::node& node, std::string_view key,
                         std::string_view wanted) const {
    fail(node.source(), fmt::format("{} wants {}", key, wanted));
}

void TableReader::refuseOthers(const toml::table& table,
                               const std::vector<std::string>& known) const {
    for (const auto& [key, node] : table) {
        if (std::ranges::count(known, key.str()) > 0) continue;
        const std::string meant = nearestName(key.str(), known);
        fail(key.source(), fmt::format("nothing here is called '{}'{}", key.str(),
                                       meant.empty() ? "" : ": did you mean " + meant + "?"));
    }
}

std::string TableReader::textIn(const toml::node& node, std::string_view key,
                                std::string_view wanted) const {
    const auto text = node.value_exact<std::string>();
    if (!text || text->find('\0') != std::string::npos) refuse(node, key, wanted);
    return *text;
}

std::string TableReader::pathIn(const toml::node& node, std::string_view key,
                                std::string_view wanted) const {
    std::string path = pathOf(textIn(node, key, wanted));
    if (path.empty()) refuse(node, key, wanted);
    return path;
}

bool TableReader::flagIn(const toml::node& node, std::string_view key) const {
    if (!node.is_boolean()) refuse(node, key, "true or false");
    return node.as_boolean()->get();
}

std::vector<const toml::node*> TableReader::listIn(const toml::node& node, std::string_view key,
                                                   std::string_view wanted, Single single) const {
    const toml::array* const array = node.as_array();
    if (array == nullptr && single == Single::allowed) return {&node};
    if (array == nullptr) refuse(node, key, wanted);
    std::vector<const toml::node*> elements;
    for (const toml::node& element : *array)
        elements.push_back(&element);
    return elements;
}

std::string TableReader::pathOf(const std::string& text) const {
    return text.empty() ? text : absolutePath(expandTilde(text), folder_);
}

}  // namespace tkv::disc
