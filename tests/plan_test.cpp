#include "disc/plan.h"

#include <algorithm>
#include <set>

#include "composer/navigation.h"
#include "disc/author_file.h"
#include "disc/chapters.h"
#include "disc/disc_error.h"
#include "support.h"

// The plan of a disc, without a film.

namespace tkv::test::plan {

using namespace tkv::disc;

Film filmOf(double seconds, std::size_t chapters = 0) {
    Film film;
    film.path = "/films/a film.mp4";
    film.video.codec = "h264";
    film.video.size = film.video.shown = {1920, 1080};
    film.video.aspect = 16.0 / 9;
    film.video.frameRate = {25, 1};
    film.audio.resize(1);
    film.audio[0].channels = 2;
    film.seconds = seconds;
    for (std::size_t i = 0; i < chapters; ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(chapters);
        film.marks.push_back({part * seconds, i == 1 ? "Arrival" : ""});
    }
    return film;
}

Project projectOf(const std::vector<Film>& films) {
    Project project;
    for (const Film& film : films)
        project.films.emplace_back().path = film.path;
    project.title = "A title";
    project.labels = labelsOf("en");
    return project;
}

/// A place where a viewer can be: a page of the films, of a film's chapters, or a film.
using Place = std::string;

Place filmsPage(std::size_t page) {
    return fmt::format("films {}", page);
}
Place chapterPage(std::size_t film, std::size_t page) {
    return fmt::format("chapters {}.{}", film, page);
}
Place playing(std::size_t film) {
    return fmt::format("film {}", film);
}

/// Where everything on a disc leads, the remote's keys and the ends of films included.
struct Ways {
    std::map<Place, std::set<Place>> from;

    explicit Ways(const DiscPlan& plan) {
        for (std::size_t i = 0; i < plan.pages.size(); ++i)
            addPage(filmsPage(i), plan.pages[i]);
        for (std::size_t film = 0; film < plan.sets.size(); ++film) {
            const TitleSet& set = plan.sets[film];
            for (std::size_t i = 0; i < set.pages.size(); ++i)
                addPage(chapterPage(film, i), set.pages[i]);
            from[playing(film)] = {filmsPage(set.page)};  // the Title key, the end
            if (!set.pages.empty()) from[playing(film)].insert(chapterPage(film, 0));
            if (film + 1 < plan.sets.size()) from[playing(film)].insert(playing(film + 1));
        }
    }

    void addPage(const Place& place, const MenuPage& page) {
        for (const Button& button : page.buttons) {
            const Action& action = button.action;
            if (const auto* film = std::get_if<PlayFilm>(&action))
                from[place].insert(playing(film->film));
            if (const auto* films = std::get_if<ShowFilms>(&action))
                from[place].insert(filmsPage(films->page));
            if (const auto* chapters = std::get_if<ShowChapters>(&action))
                from[place].insert(chapterPage(chapters->film, chapters->page));
            if (std::get_if<PlayAll>(&action) != nullptr) from[place].insert(playing(0));
        }
    }

    std::set<Place> reachable(const Place& start) const {
        std::set<Place> seen;
        std::vector<Place> open{start};
        while (!open.empty()) {
            const Place place = open.back();
            open.pop_back();
            if (!seen.insert(place).second) continue;
            EXPECT_TRUE(from.contains(place)) << "nobody has made " << place;
            if (const auto ways = from.find(place); ways != from.end())
                open.insert(open.end(), ways->second.begin(), ways->second.end());
        }
        return seen;
    }
};

/// Its buttons are those of the button map in their order, its thumbnails' first, and few enough.
void expectSoundPage(const MenuPage& page) {
    EXPECT_LE(page.buttons.size() * 2, 36U);
    Strings names, order;
    for (const Button& button : page.buttons) {
        names.push_back(button.name);
        EXPECT_FALSE(button.text.empty()) << button.name;
    }
    for (std::size_t i = 0; i < page.excerpts.size(); ++i)
        order.push_back(fmt::format("BT_{}", i));
    for (const NavigationButton& label : kNavigationButtons) {
        if (std::ranges::count(names, label.name)) order.emplace_back(label.name);
    }
    EXPECT_EQ(names, order);
}

TEST(Plan, EveryPlaceIsReachedAndCanBeLeft) {
    for (const std::size_t count : {1U, 2U, 4U, 5U, 9U, 10U, 19U, 99U}) {
        for (const std::size_t chapters : {0U, 2U, 10U, 99U}) {
            if (count * chapters > 1000) continue;  // no room for them
            SCOPED_TRACE(fmt::format("{} films of {} chapters", count, chapters));
            const std::vector<Film> films(count, filmOf(250, chapters));
            Project project = projectOf(films);
            project.size = DiscSize::dvd9;
            const DiscPlan plan = planDisc(project, films);
            EXPECT_EQ(plan.pages.size(), (count + 8) / 9);
            const Ways ways(plan);
            const std::set<Place> all = ways.reachable(filmsPage(0));
            EXPECT_EQ(all.size(), ways.from.size());
            for (const Place& place : all)
                EXPECT_TRUE(ways.reachable(place).contains(filmsPage(0))) << place;
            for (const MenuPage& page : plan.pages)
                expectSoundPage(page);
            for (std::size_t film = 0; film < count; ++film) {
                const TitleSet& set = plan.sets[film];
                // The button to which the viewer returns is the film's.
                EXPECT_EQ(plan.pages.at(set.page).excerpts.at(set.button).film, film);
                EXPECT_EQ(set.pages.size(), (chapters + 8) / 9);
                for (const MenuPage& page : set.pages)
                    expectSoundPage(page);
            }
        }
    }
}

TEST(Plan, RefusesWhatDoesNotFit) {
    const auto complaint = [](const std::vector<Film>& films, DiscSize size) -> std::string {
        Project project = projectOf(films);
        project.size = size;
        try {
            planDisc(project, films);
            return "";
        } catch (const DiscError& error) {
            return error.what();
        }
    };
    const std::vector<Film> hours(6, filmOf(3600));
    EXPECT_EQ(complaint(hours, DiscSize::dvd5),
              "The films are about 7 min too long for a single-layer disc, even at 1500 kb/s. "
              "Leave some out, or take a dual-layer one: --size dvd9.");
    EXPECT_EQ(complaint(hours, DiscSize::dvd9), "");
    EXPECT_EQ(complaint(std::vector<Film>(100, filmOf(10)), DiscSize::dvd5),
              "100 films are too many: a disc holds 99.");
}

TEST(Plan, ChoosesWhatMostFilmsSuggest) {
    const struct {
        std::vector<FrameRate> rates;
        Standard standard;
    } cases[] = {
        {{{24000, 1001}, {24, 1}}, Standard::pal},
        {{{30000, 1001}, {24, 1}}, Standard::ntsc},
        {{{25, 1}, {30, 1}, {60000, 1001}}, Standard::ntsc},
        {{{50, 1}, {25, 1}, {30, 1}}, Standard::pal},
    };
    for (const auto& [rates, standard] : cases) {
        std::vector<Film> films;
        for (const FrameRate& rate : rates) {
            films.push_back(filmOf(60));
            films.back().video.frameRate = rate;
        }
        EXPECT_EQ(planDisc(projectOf(films), films).standard, standard);
    }
}

TEST(Plan, CopiesFilmsThatAreReadyWhileThereIsRoom) {
    std::vector<Film> films{filmOf(3600), filmOf(3600)};
    Film& ready = films[1];
    ready.video.codec = "mpeg2video";
    ready.video.profile = "Main";
    ready.video.level = 8;
    ready.video.pixelFormat = "yuv420p";
    ready.video.size = ready.video.shown = {720, 576};
    ready.video.maxBitRate = 9'000'000;
    ready.audio[0].codec = "ac3";
    ready.audio[0].bitRate = 192'000;
    ready.audio[0].sampleRate = 48'000;
    ready.keyframeInterval = 12;
    ready.frames = 90'000;
    for (const auto& [bytes, isCopied] :
         {std::pair(2'000'000'000LL, true), {4'600'000'000, false}}) {
        ready.bytes = bytes;
        const DiscPlan plan = planDisc(projectOf(films), films);
        EXPECT_EQ(plan.sets[1].isCopied, isCopied) << bytes;
        EXPECT_LE(plan.bytes, 4'700'372'992) << bytes;
        EXPECT_GT(plan.bytes, 4'600'000'000) << bytes;
    }
}

/// The seconds of the chapters of a film of 100 s with keyframes every half second.
std::vector<double> chapterTimes(const std::vector<double>& marks, bool isCopied = false,
                                 double speed = 1) {
    Film film = filmOf(100);
    for (const double mark : marks)
        film.marks.push_back({mark, ""});
    for (int i = 0; i < 200; ++i)
        film.keyframes.push_back(0.48 * i);
    std::vector<double> times;
    for (const Chapter& chapter : chaptersOf({}, film, {}, Standard::pal, isCopied, speed).chapters)
        times.push_back(chapter.seconds);
    return times;
}

TEST(Plan, KeepsChaptersWhereADiscCanHaveThem) {
    using Times = std::vector<double>;
    EXPECT_EQ(chapterTimes({}), (Times{0}));
    EXPECT_EQ(chapterTimes({30, 10, 10.5}), (Times{0, 10, 30}));
    EXPECT_EQ(chapterTimes({1.5, 50, 99}), (Times{0, 50}));
    EXPECT_EQ(chapterTimes({0, 10.03, 20.01}), (Times{0, 10.04, 20}));
    EXPECT_EQ(chapterTimes({0, 50}, false, 1.25), (Times{0, 40}));
    const Times copied = chapterTimes({0, 10, 11}, true);
    ASSERT_EQ(copied.size(), 2U);
    EXPECT_NEAR(copied[1], 10.08, 1e-9);
    Film film = filmOf(1000);
    film.marks.clear();
    EXPECT_EQ(chaptersOf({}, film, {}, Standard::pal, false, 1).chapters.size(), 4U)
        << "for the skip key";
}

TEST(Plan, BecomesCommandsForThePlayer) {
    std::vector<Film> films(3, filmOf(100));
    films[1] = filmOf(100, 11);
    films[2].video.aspect = 4.0 / 3;
    const DiscPlan plan = planDisc(projectOf(films), films);
    const DiscPieces pieces{.films = {"a.mpg", "b.mpg", "c.mpg"},
                            .pages = {"menu.mpg"},
                            .chapterPages = {{}, {"b1.mpg", "b2.mpg"}, {}},
                            .soundLanguages = {{"en"}, {"fr", "xx"}, {"xx"}},
                            .language = "en"};
    expectText(authorFile(plan, pieces, "disc"), "author_file.xml");
}

TEST(Plan, BecomesCommandsForADiscThatJustPlays) {
    const std::vector<Film> films(11, filmOf(100));
    Project project = projectOf(films);
    project.hasMenu = false;
    DiscPieces pieces;
    pieces.films.assign(11, "film.mpg");
    pieces.soundLanguages.assign(11, {"en"});
    expectText(authorFile(planDisc(project, films), pieces, "disc"), "author_file_no_menu.xml");
}

}  // namespace tkv::test::plan
