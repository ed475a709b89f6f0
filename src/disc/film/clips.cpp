#include "disc/film/clips.h"

#include <algorithm>
#include <regex>
#include <tuple>

#include "system/paths.h"

namespace tkv::disc {

namespace {

bool isOfAction(const std::optional<ClipName>& clip) {
    return clip && clip->isSure;
}

}  // namespace

std::optional<ClipName> clipNamed(std::string_view path) {
    // A codec's letter, the piece and the recording; of older ones the first piece is called
    // differently.
    static const std::regex later("(g[hxl])(\\d\\d)(\\d{4})"), first("gopr(\\d{4})"),
        further("gp(\\d\\d)(\\d{4})"), numbered("(.+[-_])(\\d{3,4})");
    const std::string name = asciiLowered(withoutExtension(lastComponent(path)));
    const std::string where = parentFolder(path) + "/", kind = asciiLowered(pathExtension(path));
    std::smatch match;
    const auto clip = [&](const std::string& recording, const std::string& number, bool isSure) {
        return ClipName{where + recording + "." + kind, std::stoi(number), isSure};
    };
    if (std::regex_match(name, match, later))
        return clip(match.str(1) + match.str(3), match.str(2), true);
    if (std::regex_match(name, match, first)) return clip("gp" + match.str(1), "0", true);
    if (std::regex_match(name, match, further))
        return clip("gp" + match.str(2), match.str(1), true);
    if (std::regex_match(name, match, numbered)) return clip(match.str(1), match.str(2), false);
    return {};
}

void orderByRecording(std::vector<std::string>& paths) {
    std::vector<std::string> pieces;
    for (const std::string& path : paths) {
        if (isOfAction(clipNamed(path))) pieces.push_back(path);
    }
    std::ranges::stable_sort(pieces, {}, [](const std::string& path) {
        const ClipName clip = *clipNamed(path);
        return std::tuple(clip.recording, clip.number);
    });
    auto next = pieces.begin();
    for (std::string& path : paths) {
        if (isOfAction(clipNamed(path))) path = *next++;
    }
}

}  // namespace tkv::disc
