#include "disc/plan/subtitles.h"

#include <algorithm>
#include <string>
#include <utility>

#include "disc/project/project.h"
#include "disc/subtitle/choice.h"

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

bool mayKeepSubtitles(const Film& film) {
    const auto isOwn = [](const FilmSubtitle& subtitle) {
        return subtitle.path.empty() && subtitle.codec == "dvd_subtitle";
    };
    return film.palette && film.hasNavigation && !film.picksSound && !film.audio.empty() &&
           !film.subtitles.empty() && std::ranges::all_of(film.subtitles, isOwn);
}

std::vector<DiscSubtitle> discSubtitles(const Film& film, bool keepsOwn, std::string_view shown) {
    std::vector<DiscSubtitle> subtitles;
    subtitles.reserve(film.subtitles.size());
    for (const FilmSubtitle& each : film.subtitles) {
        if (keepsOwn || areDrawable(each)) subtitles.push_back({each, false});
    }
    if (!keepsOwn) std::ranges::stable_sort(subtitles, {}, placeOf);
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
