#pragma once

#include <string_view>
#include <vector>

#include "disc/film/film.h"

namespace tkv::disc {

/// A track of subtitles of the disc's film.
struct DiscSubtitle {
    FilmSubtitle source;
    bool isShown = false;  ///< from the start; of a film's tracks at most one
};

/// What a film's track of subtitles takes on the disc at most, on average, in kb/s.
inline constexpr int kSubtitleRate = 12;

/// Whether a film that is copied keeps its subtitles: they are all its own, a DVD's title's.
bool mayKeepSubtitles(const Film& film);

/// The subtitles of a film that keeps its own, in their order; else those that can be drawn, in the
/// disc's: those that are marked as the film's own choice first,
/// forced ones last. `shown`: two letters of those that are shown from the start, where there are
/// any; else forced ones are that are in the language of the film's sound.
std::vector<DiscSubtitle> discSubtitles(const Film& film, bool keepsOwn, std::string_view shown);

}  // namespace tkv::disc
