#pragma once

// What stands on a disc, and where each button leads:
//
//     const DiscPlan plan = planDisc(project, films);
//     if (plan.missing > 0) return;                     // too full, by so many bytes
//     for (const MenuPage& page : plan.pages)           // every page of every menu
//         for (const Button& button : page.buttons)
//             std::visit(follow, button.action);        // PlayFilm, ShowChapters, …
//
// Films, pages, buttons and chapters count from 0.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "disc/film/film.h"
#include "disc/plan/budget.h"
#include "disc/plan/conversion.h"
#include "disc/plan/keys.h"
#include "disc/plan/subtitles.h"
#include "disc/project/project.h"

namespace tkv::disc {

/// Films on one page, chapters too.
inline constexpr std::size_t kPageEntries = 9;

/// A part of a film, in seconds of the film as it came: what is to be shown of it begins with the
/// first picture on which something is to be seen.
struct Span {
    double from = 0;
    double until = 0;  ///< not above `from`: it begins there, whatever is to be seen
    bool operator==(const Span&) const = default;
};

/// How the pictures of an excerpt lie in its frames, in pixels of the page.
struct FrameShape {
    PixelSize frame;     ///< what the page's layout takes
    Placement window{};  ///< what it shows of that
    int pictures = 1;    ///< beside each other, which fill the window

    PixelSize picture() const { return {window.width / pictures, window.height}; }
    bool isOnePicture() const { return picture() == frame; }
    bool operator==(const FrameShape&) const = default;
};

/// What a thumbnail shows of its film: a moving picture, or a strip of several beside each other.
struct Excerpt {
    std::vector<Span> moments;  ///< one for each picture
    double end = 0;             ///< seconds of the film as it came, where it ends at the latest
    FrameShape shape;
};

struct Thumbnail {
    std::size_t film = 0;
    std::size_t excerpt = 0;  ///< among those of the film
};

struct Button {
    std::string name;  ///< in the button map
    std::string text;  ///< the caption or label
    Action action;     ///< when it is pressed
    Arrows arrows{};
};

struct MenuPage {
    std::string name;                 ///< of its pictures: "films-1", "film-2-chapters-1"
    std::optional<std::size_t> film;  ///< whose own menu it is of; none: of the films
    std::string title;
    bool isMain = false;                ///< are up to four thumbnails shown big?
    std::vector<Thumbnail> thumbnails;  ///< their buttons come first
    std::vector<Button> buttons;        ///< in the order of the button map
};

/// Some pages of a plan.
struct PageRange {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// A film of the disc: what was asked, what was found, and what is decided.
struct DiscFilm {
    std::size_t number = 0;  ///< among the disc's films
    FilmRequest request;
    Film film;
    std::string caption;
    Conversion conversion;
    std::vector<DiscSubtitle> subtitles;  ///< in the order of the disc
    Hardness hardness{};            ///< counts where the disc cannot hold all films at their best
    Span span;                      ///< where something of the whole film is to be seen
    std::vector<Excerpt> excerpts;  ///< all that pages show of it
    PageRange chapterPages;         ///< its chapter menu; none without one
    PageRange languagePages;        ///< which follow them; none where there is no choice
    std::size_t chaptersLeftOut = 0;
    FilmKeys keys;
    std::size_t page = 0;    ///< of the films' pages, the one that shows it
    std::size_t button = 0;  ///< its button there

    /// All pages of its own menu.
    PageRange ownPages() const {
        return {chapterPages.first, chapterPages.count + languagePages.count};
    }
};

struct DiscPlan {
    Standard standard = Standard::pal;
    DiscSize size = DiscSize::dvd5;
    std::string title;     ///< may be empty
    std::string language;  ///< of the menus
    std::vector<DiscFilm> films;
    std::vector<MenuPage> pages;  ///< those of the films, then those of each film's chapters
    PageRange filmPages;          ///< none on a disc that just plays
    Action start;                 ///< when the disc is put in
    Action titleKey;              ///< the Title key, everywhere
    int menuRate = 0;             ///< kb/s of the menus' pictures
    std::int64_t bytes = 0;       ///< of the finished disc, at most, as far as can be told
    std::int64_t missing = 0;     ///< bytes by which it is too full at the lowest rates; mostly 0
};

/// The plan of a disc, also of one that nobody can make: without a film, or too full. `films`:
/// those of the project, in its order, their frames counted.
DiscPlan planDisc(const Project& project, std::vector<Film> films);

/// Whether it matters which of the plan's films are hard: when several are encoded, and not all at
/// their best rate.
bool isSharedOut(const DiscPlan& plan);

/// Sets all rates of a plan anew, by the hardness of its films.
void shareOut(DiscPlan& plan);

/// The first page of a film's own menu, the button highlighted that plays the film.
ShowChapters ownMenu(const DiscPlan& plan, std::size_t film);

/// What the plan's films and menus put on the disc.
DiscLoad loadOf(const DiscPlan& plan);

}  // namespace tkv::disc
