#include "disc/film/title_facts.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tkv::disc {

namespace {

// Whoever authors a disc of streams with numbers takes the first of each format, then the second of
// each: AC-3, MPEG, LPCM.
std::pair<int, int> copyPlaceOf(const AudioTrack& track) {
    constexpr std::array<std::string_view, 3> kInOrder{"ac3", "mp2", "pcm_dvd"};
    const auto* const format = std::ranges::find(kInOrder, track.codec);
    return {track.id & 7, static_cast<int>(format - kInOrder.begin())};
}

// Those that begin behind what ffprobe has looked at are not among its answers.
FilmSubtitle titleSubtitle(const DvdStream& stream, const std::vector<FilmSubtitle>& found) {
    FilmSubtitle subtitle;
    subtitle.codec = "dvd_subtitle";
    subtitle.id = stream.id;
    subtitle.letterboxedId = stream.letterboxed;
    subtitle.language = stream.language;
    subtitle.kind = stream.kind;
    const auto same = std::ranges::find(found, stream.id, &FilmSubtitle::id);
    subtitle.index = same == found.end() ? -1 : same->index;
    return subtitle;
}

}  // namespace

bool lacksSound(const Film& film) {
    if (!film.source.title) return false;
    return std::ranges::any_of(film.source.title->sound, [&](const DvdStream& stream) {
        return std::ranges::find(film.audio, stream.id, &AudioTrack::id) == film.audio.end();
    });
}

void addTitleFacts(Film& film) {
    if (!film.source.title) return;
    const DvdTitle& title = *film.source.title;
    for (AudioTrack& track : film.audio) {
        const auto stream = std::ranges::find(title.sound, track.id, &DvdStream::id);
        if (stream != title.sound.end()) track.language = stream->language;
    }
    std::ranges::stable_sort(film.audio, {}, copyPlaceOf);
    std::vector<FilmSubtitle> subtitles;
    for (const DvdStream& stream : title.subtitles)
        subtitles.push_back(titleSubtitle(stream, film.subtitles));
    film.subtitles = std::move(subtitles);
    if (!film.subtitles.empty()) film.palette = title.palette;
    // What one title plays between the sectors of another has other times.
    if (title.chapters.size() < 2 || title.isInterleaved) return;
    film.marks.clear();
    for (const double seconds : title.chapters)
        film.marks.push_back({seconds, ""});
}

}  // namespace tkv::disc
