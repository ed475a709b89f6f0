#include "disc/plan/subtitles.h"

#include <algorithm>
#include <string>
#include <utility>

#include "disc/project/project.h"

namespace tkv::disc {

namespace {

bool isForced(const DiscSubtitle& subtitle) {
    return subtitle.source.kind == SubtitleKind::forced;
}

int placeOf(const DiscSubtitle& subtitle) {
    if (isForced(subtitle)) return 2;
    return subtitle.source.isDefault ? 0 : 1;
}

// The first of one kind and language; null when there is none.
DiscSubtitle* find(std::vector<DiscSubtitle>& subtitles, SubtitleKind kind,
                   std::string_view language) {
    const auto found = std::ranges::find_if(subtitles, [&](const DiscSubtitle& each) {
        return each.source.kind == kind && each.source.language == language;
    });
    return found == subtitles.end() ? nullptr : &*found;
}

}  // namespace

std::vector<DiscSubtitle> discSubtitles(const Film& film, std::string_view shown) {
    std::vector<DiscSubtitle> subtitles;
    subtitles.reserve(film.subtitles.size());
    for (const FilmSubtitle& each : film.subtitles)
        subtitles.push_back({each, false});
    std::ranges::stable_sort(subtitles, {}, placeOf);
    if (shown == kNone) return subtitles;

    DiscSubtitle* first = nullptr;
    for (const SubtitleKind kind :
         {SubtitleKind::normal, SubtitleKind::hearing, SubtitleKind::commentary}) {
        if (first == nullptr) first = find(subtitles, kind, shown);
    }
    const std::string heard = film.audio.empty() ? "xx" : film.audio.front().language;
    for (const std::string& language : {heard, std::string("xx")}) {
        if (first == nullptr) first = find(subtitles, SubtitleKind::forced, language);
    }
    if (first != nullptr) first->isShown = true;
    return subtitles;
}

}  // namespace tkv::disc
