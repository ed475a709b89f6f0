#include "disc/plan/menu_pages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>
#include <utility>

#include "composer/navigation.h"
#include "composer/thumbnail_layout.h"
#include "disc/plan/languages.h"

namespace tkv::disc {

namespace {

// A menu has 36 places for buttons, and each button takes one for wide displays and one for those
// of 4:3. The author of the disc would not complain about more, but write them wrongly.
static_assert((kPageEntries + kNavigationButtons.size()) * 2 <= 36);

// How long after its mark the excerpt of a chapter begins: so many seconds, or this part of a short
// one.
constexpr double kMarkSeconds = 1;
constexpr double kMarkPart = 0.1;

// In the order of kNavigationButtons.
enum Navigation : std::size_t { playAll, previous, menu, next };

// A shorter film shows one picture where others show a strip of several, in seconds.
constexpr double kShortFilm = 3;

// `end`: of the excerpt, in seconds of the film as it came.
void addEntry(MenuPage& page, DiscFilm& film, const Span& span, double end, std::string caption,
              const Action& action) {
    page.thumbnails.push_back({film.number, film.excerpts.size()});
    film.excerpts.push_back({{span}, end, {}});
    page.buttons.push_back({fmt::format("BT_{}", page.buttons.size()), std::move(caption), action});
}

void addLabel(MenuPage& page, Navigation which, const std::string& text, const Action& action) {
    page.buttons.push_back({std::string(kNavigationButtons[which].name), text, action});
}

// The first entry of a page, and the first of the next; pages are as full as each other.
std::pair<std::size_t, std::size_t> entriesOf(std::size_t page, std::size_t entries) {
    const std::size_t pages = pagesFor(entries);
    const auto firstOf = [&](std::size_t number) {
        return entries / pages * number + std::min(number, entries % pages);
    };
    return {firstOf(page), firstOf(page + 1)};
}

// "Holidays 2/3" on the second of three pages.
std::string numberedTitle(const std::string& title, std::size_t page, std::size_t entries) {
    const std::size_t pages = pagesFor(entries);
    if (pages < 2) return title;
    return fmt::format("{}{}{}/{}", title, title.empty() ? "" : " ", page + 1, pages);
}

MenuPage filmPage(DiscPlan& plan, std::size_t number, const Labels& labels) {
    MenuPage page;
    page.name = fmt::format("films-{}", number + 1);
    page.isMain = number == 0;
    const std::size_t count = plan.films.size();
    const auto [first, end] = entriesOf(number, count);
    page.title = numberedTitle(plan.title, number, count);
    const bool isOnly = count == 1;
    for (std::size_t i = first; i < end; ++i) {
        DiscFilm& film = plan.films[i];
        const bool leadsOn = film.ownPages().count > 0 && !isOnly;
        addEntry(page, film, film.span, kLongestFilm, film.caption,
                 leadsOn ? Action(ShowChapters{i, 0}) : Action(PlayFilm{i, 0}));
    }
    if (!isOnly) addLabel(page, playAll, labels.playAll, PlayAll{});
    if (number > 0) addLabel(page, previous, labels.previous, ShowFilms{number - 1});
    if (number > 1) addLabel(page, menu, labels.menu, ShowFilms{0});
    if (end < count) addLabel(page, next, labels.next, ShowFilms{number + 1});
    // An only film is played by its thumbnail; its own menu is behind a label.
    if (isOnly && plan.films[0].ownPages().count > 0)
        addLabel(page, next,
                 plan.films[0].chapterPages.count > 0 ? labels.chapters : labels.languages,
                 ShowChapters{0, 0});
    return page;
}

// The films' places, which are kept without menus, too: there the films of a page are those that
// one dispatcher leads to.
void placeFilms(std::vector<DiscFilm>& films) {
    for (std::size_t page = 0; page < pagesFor(films.size()); ++page) {
        const auto [first, end] = entriesOf(page, films.size());
        for (std::size_t i = first; i < end; ++i) {
            films[i].page = page;
            films[i].button = i - first;
        }
    }
}

MenuPage chapterPage(DiscFilm& film, std::size_t number, const Labels& labels) {
    const Conversion& conversion = film.conversion;
    const std::vector<Chapter>& chapters = conversion.chapters;
    MenuPage page;
    page.name = fmt::format("film-{}-chapters-{}", film.number + 1, number + 1);
    page.film = film.number;
    page.title = numberedTitle(film.caption, number, chapters.size());
    const auto [first, end] = entriesOf(number, chapters.size());
    for (std::size_t i = first; i < end; ++i) {
        const Chapter& chapter = chapters[i];
        const double until =
            i + 1 == chapters.size() ? conversion.seconds : chapters[i + 1].seconds;
        // Marks stand in a fade, or on the last frame before.
        const double begin =
            chapter.seconds + std::min(kMarkSeconds, (until - chapter.seconds) * kMarkPart);
        const Span span{begin * conversion.speed, until * conversion.speed};
        addEntry(page, film, span, span.until,
                 chapter.name.empty() ? withNumber(labels.chapter, static_cast<int>(i + 1))
                                      : chapter.name,
                 PlayFilm{film.number, i});
    }
    addLabel(page, playAll, labels.playFilm, PlayFilm{film.number, 0});
    if (number > 0)
        addLabel(page, previous, labels.previous, ShowChapters{film.number, number - 1});
    else if (film.languagePages.count > 0)
        addLabel(page, previous, labels.languages,
                 ShowChapters{film.number, film.chapterPages.count});
    addLabel(page, menu, labels.menu, ShowFilms{film.page, film.button});
    if (end < chapters.size())
        addLabel(page, next, labels.next, ShowChapters{film.number, number + 1});
    return page;
}

// All entries show the same picture: it is the caption that counts.
void addChoices(MenuPage& page, DiscFilm& film, std::span<const LanguageChoice> choices) {
    for (const LanguageChoice& choice : choices) {
        page.thumbnails.push_back({film.number, film.excerpts.size()});
        page.buttons.push_back(
            {fmt::format("BT_{}", page.buttons.size()), choice.caption, choice.action});
    }
    film.excerpts.push_back({{film.span}, kLongestFilm, {}});
}

// `titles`: what the pages let a viewer choose. Labels name it where they lead to another choice.
void addLanguageLabels(std::vector<MenuPage>& pages, const std::vector<std::string>& titles,
                       const DiscFilm& film, const Labels& labels) {
    const std::size_t chapters = film.chapterPages.count;
    const auto leadTo = [&](std::size_t from, std::size_t to, Navigation which,
                            const std::string& text) {
        addLabel(pages[from], which, titles[from] == titles[to] ? text : titles[to],
                 ShowChapters{film.number, chapters + to});
    };
    for (std::size_t i = 0; i < pages.size(); ++i) {
        addLabel(pages[i], playAll, labels.playFilm, PlayFilm{film.number, 0});
        if (i > 0) leadTo(i, i - 1, previous, labels.previous);
        if (i == 0 && chapters > 0)
            addLabel(pages[i], previous, labels.chapters, ShowChapters{film.number, 0});
        addLabel(pages[i], menu, labels.menu, ShowFilms{film.page, film.button});
        if (i + 1 < pages.size()) leadTo(i, i + 1, next, labels.next);
    }
}

std::vector<MenuPage> languagePages(DiscFilm& film, const Labels& labels) {
    std::vector<MenuPage> pages;
    std::vector<std::string> titles;
    for (const LanguageList& list : languageLists(film, labels)) {
        const std::size_t count = list.choices.size();
        const std::string title = fmt::format("{} – {}", film.caption, list.title);
        for (std::size_t number = 0; number < pagesFor(count); ++number) {
            MenuPage& page = pages.emplace_back();
            titles.push_back(list.title);
            page.name = fmt::format("film-{}-languages-{}", film.number + 1, pages.size());
            page.film = film.number;
            page.title = numberedTitle(title, number, count);
            const auto [first, end] = entriesOf(number, count);
            addChoices(page, film, std::span(list.choices).subspan(first, end - first));
        }
    }
    addLanguageLabels(pages, titles, film, labels);
    return pages;
}

// The thumbnails' frames: big ones are bands of the layout's pictures, as wide as several pictures
// of 16:9.
FrameShape frameShapeOf(const ThumbnailLayout& layout, const Film& film) {
    const Rect& source = layout.source;
    const auto pixels = [](double units) { return static_cast<int>(units); };
    FrameShape shape;
    shape.frame = {pixels(layout.scaledTo.width), pixels(layout.scaledTo.height)};
    shape.window = {pixels(source.x), shape.frame.height - pixels(source.y + source.height),
                    pixels(source.width), pixels(source.height)};
    if (film.seconds >= kShortFilm) {
        const double shown = onPage({shape.window.width, shape.window.height}).aspect;
        shape.pictures = static_cast<int>(std::lround(shown / kWideAspect));
    }
    return shape;
}

// What the pictures of a strip show: what was asked for, and else moments spread over the film.
std::vector<Span> momentsOf(const DiscFilm& film, int pictures) {
    const std::vector<double>& asked = film.request.excerpts;
    const Span all = middleOf(film.film);
    const double length = (all.until - all.from) / pictures;
    std::vector<Span> moments;
    for (int i = 0; i < pictures; ++i) {
        const auto number = static_cast<std::size_t>(i);
        const double from = all.from + i * length;
        moments.push_back(number < asked.size() ? Span{asked[number], asked[number]}
                                                : Span{from, from + length});
    }
    return moments;
}

// What follows from where a page's layout places thumbnails and labels.
void place(MenuPage& page, std::vector<DiscFilm>& films) {
    constexpr double kLabelHeight = 19;
    const ThumbnailLayout& layout = thumbnailLayout(page.isMain, page.thumbnails.size());
    std::vector<Rect> places;
    for (const Thumbnail& thumbnail : page.thumbnails) {
        const ThumbnailPlace& at = layout.place(places.size());
        places.push_back({static_cast<double>(at.x + layout.shiftX), static_cast<double>(at.y),
                          layout.source.width, layout.source.height});
        DiscFilm& film = films[thumbnail.film];
        Excerpt& excerpt = film.excerpts[thumbnail.excerpt];
        excerpt.shape = frameShapeOf(layout, film.film);
        if (excerpt.shape.pictures > 1) excerpt.moments = momentsOf(film, excerpt.shape.pictures);
    }
    for (const NavigationButton& label : kNavigationButtons) {
        if (std::ranges::find(page.buttons, label.name, &Button::name) == page.buttons.end())
            continue;
        places.push_back({static_cast<double>(label.x), static_cast<double>(label.y),
                          kNavigationWidth, kLabelHeight});
    }
    const std::vector<Arrows> arrows = arrowsOf(places);
    for (std::size_t i = 0; i < page.buttons.size(); ++i)
        page.buttons[i].arrows = arrows[i];
}

}  // namespace

Span middleOf(const Film& film) {
    return {film.seconds * 0.1, film.seconds * 0.9};
}

std::size_t pagesFor(std::size_t entries) {
    return (entries + kPageEntries - 1) / kPageEntries;
}

void addPages(DiscPlan& plan, const Project& project) {
    plan.pages.clear();
    for (DiscFilm& film : plan.films)
        film.excerpts.clear();
    placeFilms(plan.films);
    for (DiscFilm& film : plan.films) {
        film.languagePages = {};
        if (!project.hasMenu) continue;
        for (const LanguageList& list : languageLists(film, project.labels))
            film.languagePages.count += pagesFor(list.choices.size());
    }
    plan.filmPages = {0, project.hasMenu ? pagesFor(plan.films.size()) : 0};
    for (std::size_t i = 0; i < plan.filmPages.count; ++i)
        plan.pages.push_back(filmPage(plan, i, project.labels));
    for (DiscFilm& film : plan.films) {
        film.chapterPages.first = plan.pages.size();
        for (std::size_t i = 0; i < film.chapterPages.count; ++i)
            plan.pages.push_back(chapterPage(film, i, project.labels));
        if (film.languagePages.count == 0) continue;
        film.languagePages.first = plan.pages.size();
        std::ranges::move(languagePages(film, project.labels), std::back_inserter(plan.pages));
    }
    for (MenuPage& page : plan.pages)
        place(page, plan.films);
}

}  // namespace tkv::disc
