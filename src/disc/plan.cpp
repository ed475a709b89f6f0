#include "disc/plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "composer/navigation.h"
#include "disc/chapters.h"
#include "disc/disc_error.h"
#include "disc/film_encoding.h"
#include "disc/names.h"
#include "disc/probe.h"

namespace tkv::disc {

namespace {

// A menu has 36 places for buttons, and each button takes one for wide displays and one for those
// of 4:3. The author of the disc would not complain about more, but write them wrongly.
static_assert((kPageEntries + kNavigationButtons.size()) * 2 <= 36);

// Up to here the main menu shows its films big.
constexpr std::size_t kBigEntries = 4;

// In the order of kNavigationButtons.
enum Navigation : std::size_t { playAll, previous, menu, next };

void addEntry(MenuPage& page, const Excerpt& excerpt, std::string caption, const Action& action) {
    page.excerpts.push_back(excerpt);
    page.buttons.push_back({fmt::format("BT_{}", page.buttons.size()), std::move(caption), action});
}

void addLabel(MenuPage& page, Navigation which, const std::string& text, const Action& action) {
    page.buttons.push_back({std::string(kNavigationButtons[which].name), text, action});
}

std::size_t pagesFor(std::size_t entries) {
    return (entries + kPageEntries - 1) / kPageEntries;
}

// Films of 24 pictures a second say nothing: they stand equally well on both.
Standard standardOf(const std::vector<Film>& films) {
    int balance = 0;
    for (const Film& film : films) {
        const double rate = film.video.frameRate.perSecond();
        const auto suits = [rate](double wanted) {
            return std::abs(rate - wanted) < 0.5 || std::abs(rate - 2 * wanted) < 0.5;
        };
        if (suits(25)) ++balance;
        if (suits(30)) --balance;
    }
    return balance < 0 ? Standard::ntsc : Standard::pal;
}

// What the films' folder is called, when they have one in common.
std::string titleOf(const Project& project) {
    if (project.title) return *project.title;
    const auto folder = [](const FilmRequest& film) {
        return std::filesystem::path(film.path).parent_path();
    };
    const auto first = folder(project.films.front());
    const bool isCommon = std::ranges::all_of(
        project.films, [&](const FilmRequest& film) { return folder(film) == first; });
    return isCommon && first.has_filename() ? readableName(first.string()) : "";
}

MenuPage chapterPage(const ChapterList& list, std::size_t film, std::size_t number,
                     const TitleSet& set, const std::string& title, const Labels& labels) {
    MenuPage page;
    page.title = title;
    const std::size_t first = number * kPageEntries;
    const std::size_t end = std::min(first + kPageEntries, list.chapters.size());
    for (std::size_t i = first; i < end; ++i) {
        const Chapter& chapter = list.chapters[i];
        const bool isLast = i + 1 == list.chapters.size();
        const double until = isLast ? set.seconds : list.chapters[i + 1].seconds;
        addEntry(page, {film, chapter.seconds * set.speed, until * set.speed},
                 chapter.name.empty() ? withNumber(labels.chapter, static_cast<int>(i + 1))
                                      : chapter.name,
                 PlayFilm{film, i});
    }
    addLabel(page, playAll, labels.playFilm, PlayFilm{film, 0});
    if (number > 0) addLabel(page, previous, labels.previous, ShowChapters{film, number - 1});
    addLabel(page, menu, labels.menu, ShowFilms{set.page});
    if (end < list.chapters.size())
        addLabel(page, next, labels.next, ShowChapters{film, number + 1});
    return page;
}

Excerpt excerptOf(const FilmRequest& request, const Film& film, std::size_t number) {
    if (request.excerpt) return {number, *request.excerpt, *request.excerpt};
    // Films begin and end with names and logos.
    return {number, film.seconds * 0.1, film.seconds * 0.9};
}

MenuPage filmPage(const Project& project, const std::vector<Film>& films, const DiscPlan& plan,
                  std::size_t number) {
    MenuPage page;
    page.title = plan.title;
    page.isMain = number == 0;
    const std::size_t first = number * kPageEntries;
    const std::size_t end = std::min(first + kPageEntries, films.size());
    const bool isOnly = films.size() == 1;
    for (std::size_t i = first; i < end; ++i) {
        const bool leadsOn = !plan.sets[i].pages.empty() && !isOnly;
        addEntry(page, excerptOf(project.films[i], films[i], i),
                 captionOf(project.films[i], films[i]),
                 leadsOn ? Action(ShowChapters{i, 0}) : Action(PlayFilm{i, 0}));
    }
    const Labels& labels = project.labels;
    if (!isOnly) addLabel(page, playAll, labels.playAll, PlayAll{});
    if (number > 0) addLabel(page, previous, labels.previous, ShowFilms{number - 1});
    if (number > 1) addLabel(page, menu, labels.menu, ShowFilms{0});
    if (end < films.size()) addLabel(page, next, labels.next, ShowFilms{number + 1});
    // An only film is played by its thumbnail; its chapters are behind a label.
    if (isOnly && !plan.sets[0].pages.empty())
        addLabel(page, next, labels.chapters, ShowChapters{0, 0});
    return page;
}

TitleSet titleSet(const Project& project, const Film& film, std::size_t number, Standard standard,
                  bool isCopied) {
    TitleSet set;
    set.isCopied = isCopied;
    set.isWide = isWide(film.video);
    if (!isCopied) set.speed = motionOf(film.video, standard).speed;
    set.seconds = film.seconds / set.speed;
    if (project.hasMenu) {
        set.page = project.films.size() <= kBigEntries ? 0 : number / kPageEntries;
        set.button = number % kPageEntries;
    }
    const FilmRequest& request = project.films[number];
    const ChapterList list =
        chaptersOf(request, film, project.chapters, standard, isCopied, set.speed);
    for (const Chapter& chapter : list.chapters)
        set.chapters.push_back(chapter.seconds);
    if (!project.hasMenu || !list.hasMenu) return set;
    for (std::size_t i = 0; i < pagesFor(list.chapters.size()); ++i) {
        set.pages.push_back(
            chapterPage(list, number, i, set, captionOf(request, film), project.labels));
    }
    return set;
}

DiscPlan drafted(const Project& project, const std::vector<Film>& films, Standard standard,
                 const std::vector<bool>& areCopied) {
    DiscPlan plan;
    plan.standard = standard;
    plan.title = titleOf(project);
    plan.playsFirstFilm = project.playsFirstFilm || !project.hasMenu;
    for (std::size_t i = 0; i < films.size(); ++i)
        plan.sets.push_back(titleSet(project, films[i], i, standard, areCopied[i]));
    for (std::size_t i = 0; project.hasMenu && i < pagesFor(films.size()); ++i)
        plan.pages.push_back(filmPage(project, films, plan, i));
    return plan;
}

[[noreturn]] void refuse(const Project& project, std::int64_t missing) {
    const double minutes = static_cast<double>(missing) /
                           static_cast<double>(filmBytes(60, kLeastVideoRate + kStereoRate));
    const bool isSmall = project.size == DiscSize::dvd5;
    throw DiscError(fmt::format(
        "The films are about {:.0f} min too long for a {} disc, even at {} kb/s. Leave some "
        "out{}.",
        std::ceil(minutes), isSmall ? "single-layer" : "dual-layer", kLeastVideoRate,
        isSmall ? ", or take a dual-layer one: --size dvd9" : ""));
}

}  // namespace

DiscLoad loadOf(const DiscPlan& plan, const std::vector<Film>& films) {
    DiscLoad load;
    std::size_t pages = plan.pages.size();
    for (std::size_t i = 0; i < films.size(); ++i) {
        const TitleSet& set = plan.sets[i];
        load.films.push_back({set.seconds, soundRate(films[i]), set.isCopied ? films[i].bytes : 0});
        pages += set.pages.size();
    }
    load.menuSeconds = static_cast<double>(pages) * factsOf(plan.standard).menuSeconds();
    return load;
}

DiscPlan planDisc(const Project& project, const std::vector<Film>& films) {
    if (films.size() > kMostFilms) {
        throw DiscError(
            fmt::format("{} films are too many: a disc holds {}.", films.size(), kMostFilms));
    }
    const Standard standard = project.standard.value_or(standardOf(films));
    std::vector<bool> areCopied;
    areCopied.reserve(films.size());
    for (const Film& film : films)
        areCopied.push_back(!project.evenVolume && whyNotDvdReady(film, standard).empty());

    // Films that are ready stay as they are, unless there is no room for them.
    while (true) {
        DiscPlan plan = drafted(project, films, standard, areCopied);
        const Rates rates = shareRates(loadOf(plan, films), project.size);
        if (rates.missing == 0) {
            plan.menuRate = rates.menu;
            plan.bytes = rates.bytes;
            for (std::size_t i = 0; i < films.size(); ++i)
                plan.sets[i].videoRate = rates.video[i];
            return plan;
        }
        std::size_t largest = films.size();
        for (std::size_t i = 0; i < films.size(); ++i) {
            if (areCopied[i] && (largest == films.size() || films[i].bytes > films[largest].bytes))
                largest = i;
        }
        if (largest == films.size()) refuse(project, rates.missing);
        areCopied[largest] = false;
    }
}

}  // namespace tkv::disc
