#include "disc/subtitle/vobsub_index.h"

#include <optional>
#include <utility>

#include "disc/project/languages.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

std::vector<std::string> tracksInIndex(std::string_view index) {
    std::vector<std::string> tracks;
    std::optional<std::string> language;  // of a track that has not shown anything yet
    while (!index.empty()) {
        const std::string_view line = index.substr(0, index.find('\n'));
        index.remove_prefix(std::min(line.size() + 1, index.size()));
        // "id: en, index: 0"
        if (line.starts_with("id: ")) language = line.substr(4, line.find(',') - 4);
        if (line.starts_with("timestamp:") && language)
            tracks.push_back(discLanguage(*std::exchange(language, {})));
    }
    return tracks;
}

std::string unitsOfIndex(const std::string& index) {
    for (const char* extension : {".sub", ".SUB"}) {
        std::string units = withoutExtension(index) + extension;
        if (canBeRead(units)) return units;
    }
    return {};
}

}  // namespace tkv::disc
