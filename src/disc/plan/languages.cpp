#include "disc/plan/languages.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "disc/project/languages.h"

namespace tkv::disc {

namespace {

// `what` names those of unknown languages: "Sound 2".
std::string captionOf(const std::string& language, std::size_t number, std::string_view what) {
    const std::string name = ownNameOf(language);
    return name.empty() ? fmt::format("{} {}", what, number + 1) : name;
}

// "Deutsch" and "Deutsch 2" of two that are called the same.
void tellApart(std::vector<LanguageChoice>& choices) {
    std::map<std::string, int> seen;
    for (LanguageChoice& choice : choices) {
        const int number = ++seen[choice.caption];
        if (number > 1) choice.caption += fmt::format(" {}", number);
    }
}

LanguageList soundOf(const DiscFilm& film, const Labels& labels) {
    const std::vector<DiscTrack>& tracks = film.conversion.tracks;
    const bool areMixed = std::ranges::any_of(tracks, &DiscTrack::isSurround) &&
                          !std::ranges::all_of(tracks, &DiscTrack::isSurround);
    LanguageList list{labels.sound, {}};
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        std::string caption = captionOf(tracks[i].language, i, labels.sound);
        if (areMixed && tracks[i].isSurround) caption += " 5.1";
        list.choices.push_back({std::move(caption), SetSound{film.number, i}});
    }
    tellApart(list.choices);
    return list;
}

LanguageList subtitlesOf(const DiscFilm& film, const Labels& labels) {
    LanguageList list{labels.subtitles, {}};
    for (std::size_t i = 0; i < film.subtitles.size(); ++i) {
        const FilmSubtitle& source = film.subtitles[i].source;
        if (source.kind == SubtitleKind::forced) continue;
        std::string caption = captionOf(source.language, i, labels.subtitles);
        // Those tell of music, too. Words would need a language, and letters would be lowered.
        if (source.kind == SubtitleKind::hearing) caption += " ♪";
        list.choices.push_back({std::move(caption), SetSubtitles{film.number, i}});
    }
    tellApart(list.choices);
    if (!list.choices.empty())
        list.choices.insert(list.choices.begin(),
                            {labels.noSubtitles, SetSubtitles{film.number, {}}});
    return list;
}

}  // namespace

std::vector<LanguageList> languageLists(const DiscFilm& film, const Labels& labels) {
    constexpr std::size_t kNoneAndOne = 2;
    LanguageList sound = soundOf(film, labels), subtitles = subtitlesOf(film, labels);
    std::vector<LanguageList> lists;
    const bool isSoundChosen = sound.choices.size() > 1;
    if (isSoundChosen) lists.push_back(std::move(sound));
    if (subtitles.choices.size() > kNoneAndOne || (isSoundChosen && !subtitles.choices.empty()))
        lists.push_back(std::move(subtitles));
    return lists;
}

}  // namespace tkv::disc
