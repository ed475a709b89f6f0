#pragma once

#include <toml++/toml.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tkv::disc {

/// Reads values of a project file's tables. All throw DiscError, which names the file and the line,
/// for what is not wanted; "KEY wants WANTED" for values.
class TableReader {
  public:
    /// `path`: as messages name the file. `folder`: where its relative paths begin.
    TableReader(std::string path, std::string folder)
        : path_(std::move(path)), folder_(std::move(folder)) {}

    [[noreturn]] void fail(const toml::source_region& place, const std::string& message) const;
    [[noreturn]] void refuse(const toml::node& node, std::string_view key,
                             std::string_view wanted) const;

    /// Allows no other keys.
    void refuseOthers(const toml::table& table, const std::vector<std::string>& known) const;

    std::string textIn(const toml::node& node, std::string_view key, std::string_view wanted) const;

    /// A text that is not empty, as an absolute path.
    std::string pathIn(const toml::node& node, std::string_view key, std::string_view wanted) const;

    bool flagIn(const toml::node& node, std::string_view key) const;

    /// An array, as which a single value counts, too, where that is allowed.
    enum class Single { refused, allowed };
    std::vector<const toml::node*> listIn(const toml::node& node, std::string_view key,
                                          std::string_view wanted,
                                          Single single = Single::refused) const;

    /// A path of the file's as an absolute one; an empty one stays empty.
    std::string pathOf(const std::string& text) const;

    /// "film.toml:12"
    std::string placeOf(const toml::source_region& place) const;

  private:
    std::string path_, folder_;
};

}  // namespace tkv::disc
