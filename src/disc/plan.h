#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "disc/budget.h"
#include "disc/film.h"
#include "disc/project.h"

// What stands on a disc, and where each button leads. Films, pages and chapters count from 0.

namespace tkv::disc {

inline constexpr std::size_t kMostFilms = 99;
inline constexpr std::size_t kMostChapters = 99;

/// Films on one page, chapters too.
inline constexpr std::size_t kPageEntries = 9;

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
    bool operator==(const ShowFilms&) const = default;
};

/// Shows a page of the chapters of a film.
struct ShowChapters {
    std::size_t film;
    std::size_t page;
    bool operator==(const ShowChapters&) const = default;
};

using Action = std::variant<PlayFilm, PlayAll, ShowFilms, ShowChapters>;

/// Where a thumbnail's moving excerpt comes from: it begins with the first picture in this part of
/// the film on which something is to be seen. Seconds of the film as it came.
struct Excerpt {
    std::size_t film = 0;
    double from = 0;
    double until = 0;  ///< not above `from`: it begins there, whatever is to be seen
};

struct Button {
    std::string name;  ///< in the button map
    std::string text;  ///< the caption or label
    Action action;
};

struct MenuPage {
    std::string title;
    bool isMain = false;            ///< are up to four thumbnails shown big?
    std::vector<Excerpt> excerpts;  ///< of the thumbnails, whose buttons come first
    std::vector<Button> buttons;    ///< in the order of the button map, which counts them from 1
};

/// A film as it stands on the disc.
struct TitleSet {
    bool isCopied = false;  ///< its tracks stay as they are
    bool isWide = false;    ///< 16:9, or else 4:3
    double speed = 1;       ///< how much faster than the film that it is made of it plays
    double seconds = 0;     ///< on the disc
    int videoRate = 0;      ///< kb/s; 0 when it is copied
    /// Where they begin on the disc, in seconds: the first at 0, rising.
    std::vector<double> chapters;
    std::vector<MenuPage> pages;  ///< its chapter menu; none without one
    std::size_t page = 0;         ///< of the films' pages, the one that shows it
    std::size_t button = 0;       ///< its button there, from 0
};

struct DiscPlan {
    Standard standard = Standard::pal;
    std::string title;  ///< may be empty
    bool playsFirstFilm = false;
    std::vector<MenuPage> pages;  ///< of the films; none on a disc that just plays
    std::vector<TitleSet> sets;   ///< one a film
    int menuRate = 0;             ///< kb/s of the menus' pictures
    std::int64_t bytes = 0;       ///< of the finished disc, at most, as far as can be told
};

/// The plan of a disc. `films`: those of the project, in its order, their frames counted.
/// Throws DiscError when they are too many, or too long for the disc, which it tells by how much.
DiscPlan planDisc(const Project& project, const std::vector<Film>& films);

/// What the plan's films and menus put on the disc.
DiscLoad loadOf(const DiscPlan& plan, const std::vector<Film>& films);

}  // namespace tkv::disc
