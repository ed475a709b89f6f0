#pragma once

#include <cstddef>
#include <optional>
#include <variant>
#include <vector>

#include "graphics/geometry.h"

// What the keys of a remote do. Films, pages, buttons and chapters count from 0.

namespace tkv::disc {

/// Plays a film, from one of its chapters on.
struct PlayFilm {
    std::size_t film;
    std::size_t chapter;
    bool operator==(const PlayFilm&) const = default;
};

/// Plays all films one after another.
struct PlayAll {
    bool operator==(const PlayAll&) const = default;
};

/// Shows a page of the films.
struct ShowFilms {
    std::size_t page;
    std::size_t button = 0;  ///< that is highlighted
    bool operator==(const ShowFilms&) const = default;
};

/// Shows a page of a film's own menu: of its chapters, or of its languages.
struct ShowChapters {
    std::size_t film;
    std::size_t page;
    std::size_t button = 0;  ///< that is highlighted
    bool operator==(const ShowChapters&) const = default;
};

/// Has a film heard in a track of its sound, and shows its menu from the beginning.
struct SetSound {
    std::size_t film;
    std::size_t track;
    bool operator==(const SetSound&) const = default;
};

/// The same of its subtitles; without a track those that are forced, if any.
struct SetSubtitles {
    std::size_t film;
    std::optional<std::size_t> track;
    bool operator==(const SetSubtitles&) const = default;
};

/// Shows the page of the films where the viewer was last, the button highlighted that led on.
struct BackToFilms {
    bool operator==(const BackToFilms&) const = default;
};

/// The same of a film's chapters; their first page where the viewer came from elsewhere.
struct BackToChapters {
    bool operator==(const BackToChapters&) const = default;
};

/// The one of both where the film was started.
struct BackToStart {
    bool operator==(const BackToStart&) const = default;
};

/// Stops the disc.
struct StopDisc {
    bool operator==(const StopDisc&) const = default;
};

using Action = std::variant<PlayFilm, PlayAll, ShowFilms, ShowChapters, SetSound, SetSubtitles,
                            BackToFilms, BackToChapters, BackToStart, StopDisc>;

/// What happens while a film plays, and in its chapter menu.
struct FilmKeys {
    Action menu;  ///< the Menu key
    Action end;   ///< no key: the film has ended
    /// What follows the film instead, while all are played.
    std::optional<PlayFilm> next;
};

/// The buttons to which the arrow keys lead from one.
struct Arrows {
    std::size_t up, down, left, right;
    bool operator==(const Arrows&) const = default;
};

/// The arrows of a page's buttons, which lie in rows; origin at the bottom left. Up and down lead
/// to the nearest button that stands above or below this one, or where there is none, to the
/// nearest of the next row; left and right stay in the row. At the edge an arrow leads nowhere: to
/// the button itself.
std::vector<Arrows> arrowsOf(const std::vector<Rect>& buttons);

}  // namespace tkv::disc
