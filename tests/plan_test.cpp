#include "disc/plan/plan.h"

#include <algorithm>
#include <array>
#include <set>

#include "composer/navigation.h"
#include "composer/page_geometry.h"
#include "composer/page_texts.h"
#include "disc/author/author_file.h"
#include "disc/make/excerpts.h"
#include "disc/make/film_maker.h"
#include "disc/make/readability.h"
#include "disc/make/text_fit.h"
#include "disc/plan/chapters.h"
#include "disc/plan/report.h"
#include "graphics/text.h"
#include "support.h"

// The plan of a disc, without a film.

namespace tkv::test::plan {

using namespace tkv::disc;

Film filmOf(double seconds, std::size_t chapters = 0) {
    Film film;
    film.source.path = "/films/a film.mp4";
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

FilmSubtitle textSubtitle() {
    FilmSubtitle subtitle;
    subtitle.codec = "srt";
    return subtitle;
}

Project projectOf(const std::vector<Film>& films) {
    Project project;
    for (const Film& film : films)
        project.films.emplace_back().path = film.source.path;
    project.title = "A title";
    project.labels = labelsOf("en");
    return project;
}

TEST(Plan, GivesNamesAndPages) {
    const struct {
        Strings paths;
        const char* taken;  // by the first film's tag
        Strings captions;
        const char* title;  // of the disc's last page of films
    } rows[] = {
        // Numbers that count, and those that do not.
        {{"/a/Trips/01 Picos.mp4", "/a/Trips/02_sea.mp4"}, "", {"Picos", "Sea"}, "Trips"},
        {{"/a/Trips/1. A.mp4", "/b/2. B.mp4"}, "", {"A", "B"}, ""},
        {{"/a/Trips/01 Picos.mp4", "/a/Trips/sea.mp4"}, "", {"01 Picos", "Sea"}, "Trips"},
        {{"/a/T/24 hours.mp4", "/a/T/25 days.mp4"}, "", {"24 hours", "25 days"}, "T"},
        {{"/a/T/1.mp4", "/a/T/2.mp4"}, "", {"1", "2"}, "T"},
        // What cameras write. The tag of Greenwich's time is the user's, two hours later.
        {{"/a/DCIM/IMG_0042.MOV"}, "2024-07-12T16:42:33.000000Z", {"July 12, 2024 at 18:42"}, ""},
        {{"/a/P/GX010042.MP4"}, "2024-07-12T18:42:33+0200", {"July 12, 2024 at 18:42"}, ""},
        {{"/a/P/C0001.MP4"}, "1904-01-01T00:00:00Z", {"C0001"}, ""},
        {{"/a/P/PXL_20230231_123456789.mp4"}, "", {"PXL 20230231 123456789"}, ""},
        {{"/a/P/VID_20240712_184233.mp4"}, "", {"July 12, 2024 at 18:42"}, ""},
        {{"/a/P/WhatsApp Video 2024-07-12 at 18.42.33.mp4"}, "", {"July 12, 2024 at 18:42"}, ""},
        {{"/a/P/2024-07-12 18.42.33.mp4"}, "", {"July 12, 2024 at 18:42"}, ""},
        {{"/a/P/Sea 2024.mp4"}, "2024-07-12T16:42:33Z", {"Sea 2024"}, ""},
        // Folders that say nothing.
        {{"/a/downloads/sea.mp4", "/a/downloads/b.mp4"}, "", {"Sea", "B"}, "Sea"},
        {{"/home/ada/Filme/sea.mp4", "/home/ada/Filme/b.mp4"}, "", {"Sea", "B"}, "Sea"},
        {{"/a/100APPLE/sea.mp4", "/a/100APPLE/b.mp4"}, "", {"Sea", "B"}, "Sea"},
        {Strings(10, "/a/Trips/sea.mp4"), "", Strings(10, "Sea"), "Trips 2/2"},
    };
    const ScopedVariable zone("TZ", "Europe/Berlin");
    tzset();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.paths.front());
        std::vector<Film> films(row.paths.size(), filmOf(100));
        films.front().taken = row.taken;
        Project project = projectOf(films);
        project.title.reset();
        project.plainFolders = {"/home/ada/Filme"};
        for (std::size_t i = 0; i < films.size(); ++i)
            project.films[i].path = row.paths[i];
        const DiscPlan plan = planDisc(project, films);
        Strings captions;
        for (const DiscFilm& film : plan.films)
            captions.push_back(film.caption);
        EXPECT_EQ(captions, row.captions);
        EXPECT_EQ(plan.pages.back().title, films.size() == 1 ? captions.front() : row.title);
        EXPECT_EQ(plan.pages.back().thumbnails.size(), std::min<std::size_t>(films.size(), 5));
    }
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

    explicit Ways(const DiscPlan& disc) : plan_(disc) {
        for (std::size_t i = 0; i < disc.filmPages.count; ++i)
            addPage(filmsPage(i), disc.pages[i]);
        for (const DiscFilm& film : disc.films) {
            for (std::size_t i = 0; i < film.ownPages().count; ++i)
                addPage(chapterPage(film.number, i), disc.pages[film.ownPages().first + i]);
            const Place place = playing(film.number);
            for (const Action& action : {film.keys.menu, film.keys.end, disc.titleKey})
                add(place, film, action);
            if (film.keys.next) add(place, film, *film.keys.next);
        }
    }

    void addPage(const Place& place, const MenuPage& page) {
        for (const Button& button : page.buttons)
            add(place, plan_.films[page.film.value_or(0)], button.action);
    }

    // `film`: the one that plays, or whose chapters are shown.
    void add(const Place& place, const DiscFilm& film, const Action& action) {
        std::set<Place>& to = from[place];
        if (const auto* played = std::get_if<PlayFilm>(&action)) to.insert(playing(played->film));
        if (std::get_if<PlayAll>(&action) != nullptr) to.insert(playing(0));
        if (const auto* films = std::get_if<ShowFilms>(&action)) to.insert(filmsPage(films->page));
        if (const auto* chapters = std::get_if<ShowChapters>(&action))
            to.insert(chapterPage(chapters->film, chapters->page));
        if (std::holds_alternative<SetSound>(action) ||
            std::holds_alternative<SetSubtitles>(action))
            to.insert(chapterPage(film.number, 0));
        if (std::get_if<BackToFilms>(&action) != nullptr) to.insert(filmsPage(film.page));
        if (std::get_if<BackToChapters>(&action) != nullptr) to.insert(chapterPage(film.number, 0));
        if (std::get_if<BackToStart>(&action) != nullptr) {
            to.insert(filmsPage(film.page));
            if (film.ownPages().count > 0) to.insert(chapterPage(film.number, 0));
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

  private:
    const DiscPlan& plan_;
};

/// Its buttons are those of the button map in their order, its thumbnails' first, and few enough.
void expectSoundPage(const MenuPage& page) {
    EXPECT_LE(page.buttons.size() * 2, 36U);
    Strings names, order;
    for (const Button& button : page.buttons) {
        names.push_back(button.name);
        EXPECT_FALSE(button.text.empty()) << button.name;
    }
    for (std::size_t i = 0; i < page.thumbnails.size(); ++i)
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
            const bool areSpoken = count < 9;
            Film one = filmOf(250, chapters);
            if (areSpoken) one.audio.resize(2, one.audio.at(0));
            if (areSpoken) one.subtitles.resize(10, textSubtitle());
            const std::vector<Film> films(count, one);
            Project project = projectOf(films);
            project.size = DiscSize::dvd9;
            const DiscPlan plan = planDisc(project, films);
            EXPECT_EQ(plan.filmPages.count, (count + 8) / 9);
            const Ways ways(plan);
            const std::set<Place> all = ways.reachable(filmsPage(0));
            EXPECT_EQ(all.size(), ways.from.size());
            for (const Place& place : all)
                EXPECT_TRUE(ways.reachable(place).contains(filmsPage(0))) << place;
            for (const MenuPage& page : plan.pages)
                expectSoundPage(page);
            for (const DiscFilm& film : plan.films) {
                // The button to which the viewer returns is the film's.
                EXPECT_EQ(plan.pages.at(film.page).thumbnails.at(film.button).film, film.number);
                EXPECT_EQ(film.chapterPages.count, (chapters + 8) / 9);
                EXPECT_EQ(film.languagePages.count, areSpoken ? 3U : 0U) << "of 2 and 1 + 10";
            }
        }
    }
}

TEST(Plan, LanguagesAreCalledAsTheyCallThemselves) {
    Film film = filmOf(100);
    film.audio.resize(4, film.audio.at(0));
    film.audio[0].language = film.audio[1].language = "fr";
    film.audio[1].channels = 6;
    film.audio[2].language = "ja";
    film.subtitles.resize(4, textSubtitle());
    film.subtitles[0].language = film.subtitles[1].language = film.subtitles[2].language = "de";
    film.subtitles[1].kind = SubtitleKind::hearing;
    film.subtitles[2].kind = SubtitleKind::commentary;
    film.subtitles[3].kind = SubtitleKind::forced;
    const auto texts = [&](std::size_t number) {
        const DiscPlan plan = planDisc(projectOf({film}), {film});
        Strings all;
        for (const Button& button : plan.pages.at(number).buttons)
            all.push_back(button.text);
        return all;
    };
    EXPECT_EQ(texts(1), (Strings{"Français", "Français 5.1", "日本語", "Sound 4", "Play film",
                                 "Main menu", "Subtitles"}));
    EXPECT_EQ(texts(2), (Strings{"No subtitles", "Deutsch", "Deutsch ♪", "Deutsch 2", "Play film",
                                 "Sound", "Main menu"}));
}

TEST(Plan, TellsWhatDoesNotFit) {
    const auto complaint = [](const std::vector<Film>& films, DiscSize size) {
        Project project = projectOf(films);
        project.size = size;
        return whyNoDisc(planDisc(project, films));
    };
    const std::vector<Film> hours(6, filmOf(3600));
    EXPECT_EQ(complaint(hours, DiscSize::dvd5),
              "The films are about 7 min too long for a single-layer disc, even at 1500 kb/s. "
              "Leave some out, or take a dual-layer one: --size dvd9.");
    EXPECT_EQ(complaint(hours, DiscSize::dvd9), "");
    EXPECT_EQ(complaint(std::vector<Film>(100, filmOf(10)), DiscSize::dvd5),
              "100 films are too many: a disc holds 99.");
    EXPECT_EQ(complaint({}, DiscSize::dvd5), "There is no film. Name the files of some.");

    Project project = projectOf({filmOf(100)});
    project.films[0].excerpts = {99, 100};
    project.films[0].chapters = {{{0, ""}, {50, ""}, {7200, "Home"}}};
    const Strings lines = planLines(planDisc(project, {filmOf(100)}));
    EXPECT_EQ(Strings(lines.begin() + 2, lines.end()),
              (Strings{"        excerpt 1:40 is behind its end, and shows that",
                       "        chapter 2:00:00 is behind its end, and left out"}));

    project.films = projectOf({filmOf(1000)}).films;
    Film rich = filmOf(1000, 120);
    rich.audio.resize(10, rich.audio.at(0));
    rich.audio[8].language = "en";
    const Strings left = planLines(planDisc(project, {rich}));
    EXPECT_EQ(Strings(left.begin() + 2, left.end()),
              (Strings{"        2 sound tracks left out, since a disc's film has 8: en, unknown",
                       "        21 chapters left out, since a disc's film has 99, 2 s apart or "
                       "more"}));
}

/// The buttons that up, down, left and right lead to, by their names in the map without "BT_" and
/// "dvdBt_".
std::string arrowsFrom(const MenuPage& page, const std::string& from) {
    const auto shortName = [](const std::string& name) { return name.substr(name.find('_') + 1); };
    for (const Button& button : page.buttons) {
        if (shortName(button.name) != from) continue;
        std::string names;
        const Arrows& to = button.arrows;
        for (const std::size_t number : {to.up, to.down, to.left, to.right})
            names += (names.empty() ? "" : " ") + shortName(page.buttons[number].name);
        return names;
    }
    return "no such button";
}

TEST(Plan, ArrowsLeadWhereAnEyeExpects) {
    const struct {
        std::size_t films, chapters, page;
        const char *button, *arrows;
    } cases[] = {
        // Big: one, two below each other, a square of four.
        {1, 0, 0, "0", "0 0 0 0"},
        {1, 2, 0, "0", "0 menuNext 0 0"},
        {2, 0, 0, "1", "0 1 1 1"},
        {2, 0, 0, "readAll", "readAll 0 readAll readAll"},
        {4, 0, 0, "1", "readAll 3 0 1"},
        {4, 0, 0, "2", "0 2 2 3"},
        // A row that is not full; what is above and below it.
        {5, 0, 0, "readAll", "readAll 2 readAll readAll"},
        {5, 0, 0, "0", "readAll 3 0 1"},
        {5, 0, 0, "2", "readAll 4 1 2"},
        {5, 0, 0, "4", "1 4 3 4"},
        {7, 0, 0, "5", "2 6 4 5"},
        // Labels below: straight where one stands, else the nearest.
        {27, 0, 1, "6", "3 menuPrev 6 7"},
        {27, 0, 1, "7", "4 menuPrev 6 8"},
        {27, 0, 1, "menuNext", "8 menuNext menuPrev menuNext"},
        {19, 0, 2, "menuMain", "4 menuMain menuPrev menuMain"},
        {2, 7, 1, "5", "2 6 4 5"},
        {2, 7, 1, "4", "1 menuMain 3 5"},
        {2, 7, 1, "menuMain", "4 menuMain menuMain menuMain"},
    };
    for (const auto& row : cases) {
        const std::vector<Film> films(row.films, filmOf(250, row.chapters));
        const DiscPlan plan = planDisc(projectOf(films), films);
        EXPECT_EQ(arrowsFrom(plan.pages.at(row.page), row.button), row.arrows)
            << row.films << " films, page " << row.page << ", " << row.button;
    }
}

/// Rows of three with and without each label: what holds of every page.
TEST(Plan, ArrowsReachEveryButtonAndLeadBack) {
    constexpr std::array kColumns{110.0, 280.0, 450.0}, kRows{355.0, 221.0, 87.0};
    for (std::size_t count = 1; count <= 9; ++count) {
        for (unsigned labels = 0; labels < 16; ++labels) {
            std::vector<Rect> buttons;
            for (std::size_t i = 0; i < count; ++i)
                buttons.push_back({kColumns[i % 3], kRows[i / 3], 160, 120});
            for (std::size_t i = 0; i < 4; ++i) {
                const NavigationButton& label = kNavigationButtons[i];
                if ((labels >> i & 1U) != 0)
                    buttons.push_back({1.0 * label.x, 1.0 * label.y, kNavigationWidth, 19});
            }
            const std::vector<Arrows> arrows = arrowsOf(buttons);
            std::vector<std::size_t> reached{0};
            for (std::size_t i = 0; i < reached.size(); ++i) {
                const std::size_t from = reached[i];
                const Arrows& to = arrows[from];
                for (const std::size_t next : {to.up, to.down, to.left, to.right}) {
                    if (!std::ranges::count(reached, next)) reached.push_back(next);
                }
                const auto expectBack = [&](std::size_t next, std::size_t Arrows::*back) {
                    const bool isBeside =
                        buttons[next].x == buttons[from].x || buttons[next].y == buttons[from].y;
                    EXPECT_TRUE(next == from || !isBeside || arrows[next].*back == from);
                };
                expectBack(to.up, &Arrows::down);
                expectBack(to.down, &Arrows::up);
                expectBack(to.left, &Arrows::right);
                expectBack(to.right, &Arrows::left);
            }
            EXPECT_EQ(reached.size(), buttons.size()) << count << " and labels " << labels;
        }
    }
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
        ready.source.bytes = bytes;
        const DiscPlan plan = planDisc(projectOf(films), films);
        EXPECT_EQ(plan.films[1].conversion.isCopied, isCopied) << bytes;
        EXPECT_LE(plan.bytes, 4'700'372'992) << bytes;
        EXPECT_GT(plan.bytes, 4'600'000'000) << bytes;
    }
}

TEST(Plan, GivesSoundWhatPicturesLeave) {
    // kb/s of the tracks of a film, those that are taken as they are marked.
    const auto ratesOf = [](const Film& film, bool isEven = false) {
        Project project = projectOf({film});
        project.evenVolume = isEven;
        const DiscPlan plan = planDisc(project, {film});
        std::string rates;
        for (const DiscTrack& track : plan.films[0].conversion.tracks)
            rates += fmt::format("{}{} ", track.rate, track.isCopied ? " taken" : "");
        return rates;
    };
    Film film = filmOf(60);
    EXPECT_EQ(ratesOf(film), "384 ");
    EXPECT_EQ(ratesOf(filmOf(4440)), "256 ") << "at 8,000 kb/s a disc holds 75 min";
    EXPECT_EQ(ratesOf(filmOf(7200)), "192 ");
    film.audio.resize(8, film.audio[0]);
    EXPECT_EQ(ratesOf(film), "192 192 192 192 192 192 192 192 ") << "the picture keeps its rate";

    film = filmOf(60);
    film.audio[0] = {"ac3", 2, 48'000, 224'000};
    EXPECT_EQ(ratesOf(film), "224 taken ");
    EXPECT_EQ(ratesOf(film, true), "384 ");
    const struct {
        void (*change)(Film& film);
        const char* rates;
    } rows[] = {
        {[](Film& f) { f.audio[0].channels = 6; }, "224 taken "},
        {[](Film& f) { f.audio[0].late = -0.03; }, "224 taken "},
        {[](Film& f) { f.audio[0].late = -0.4; }, "384 "},
        {[](Film& f) { f.audio[0].late = -0.4, f.container = "mpegts"; }, "224 taken "},
        {[](Film& f) { f.audio[0].late = 0.04; }, "384 "},
        {[](Film& f) { f.audio[0].isWhole = false; }, "384 "},
        {[](Film& f) { f.audio[0].isUnbroken = false; }, "384 "},
        {[](Film& f) { f.audio[0].codec = "eac3"; }, "384 "},
        {[](Film& f) { f.audio[0].sampleRate = 44'100; }, "384 "},
        {[](Film& f) { f.audio[0].bitRate = 640'000; }, "384 "},
        {[](Film& f) {
             f.video.frameRate = {24, 1};
         },
         "384 "},
    };
    for (const auto& row : rows) {
        Film other = film;
        row.change(other);
        EXPECT_EQ(ratesOf(other), row.rates) << &row - rows;
    }
}

/// Films of an hour with stereo sound, their rates on a single-layer disc.
TEST(Budget, GivesMoreToHardFilms) {
    const Hardness easy{900, 480, 330}, middle{9000, 4500, 2150}, noise{29000, 8300, 1350};
    const Hardness unknown{}, flat{100, 100, 100};
    const struct {
        std::vector<Hardness> films;
        std::vector<int> rates;
    } rows[] = {
        {{unknown}, {8000}},
        {{unknown, unknown, unknown}, {3187, 3187, 3187}},
        {{middle, middle, middle}, {3187, 3187, 3187}},
        {{unknown, easy, noise}, {1710, 1429, 6423}},
        {{easy, noise}, {1803, 8000}},
        {{middle, noise, easy}, {3538, 4595, 1429}},
        {{flat, flat, noise, flat}, {1000, 1000, 6321, 1000}},
        {{noise, easy, middle, middle, noise, easy}, {1500, 1429, 1500, 1500, 1500, 1429}},
    };
    for (const auto& row : rows) {
        DiscLoad load;
        for (const Hardness& hardness : row.films)
            load.films.push_back({3600, kStereoRate, 0, hardness});
        const Rates rates = shareRates(load, DiscSize::dvd5);
        EXPECT_EQ(rates.video, row.rates);
        EXPECT_EQ(rates.missing > 0, row.films.size() > 5);
        if (rates.missing > 0 || row.films.size() == 1) continue;
        EXPECT_LE(rates.bytes, capacityOf(DiscSize::dvd5));
        EXPECT_GT(rates.bytes, capacityOf(DiscSize::dvd5) - 4'000'000) << row.films.size();
        // What the first leaves, or takes, is the others'.
        load.films[0].bytes = 1'500'000'000;
        const Rates later = shareRates(load, DiscSize::dvd5);
        EXPECT_EQ(later.video[0], 0);
        EXPECT_LE(later.bytes, capacityOf(DiscSize::dvd5));
    }
}

/// Only where several films share what does not do for all of them is it worth to look at them.
TEST(Budget, IsSharedOutWhereItBinds) {
    const struct {
        std::vector<double> hours;
        bool isExact, isSharedOut;
    } rows[] = {{{0.5, 0.5}, false, false}, {{3}, true, false}, {{2, 1}, true, true}};
    for (const auto& [hours, isExact, isShared] : rows) {
        std::vector<Film> films;
        for (const double length : hours)
            films.push_back(filmOf(3600 * length));
        DiscPlan plan = planDisc(projectOf(films), films);
        EXPECT_EQ(plan.films[0].conversion.isExact, isExact);
        ASSERT_EQ(isSharedOut(plan), isShared);
        if (!isShared) continue;
        EXPECT_EQ(plan.films[0].conversion.videoRate, plan.films[1].conversion.videoRate);
        const std::string name = filmName(plan.films[1]);
        plan.films[0].hardness = {900, 480, 330};
        plan.films[1].hardness = {9000, 4500, 2150};
        shareOut(plan);
        EXPECT_LT(plan.films[0].conversion.videoRate * 2, plan.films[1].conversion.videoRate);
        EXPECT_NE(filmName(plan.films[1]), name) << "another rate makes another film";
    }
}

/// The seconds of the chapters of a film of 100 s with keyframes every half second.
std::vector<double> chapterTimes(const std::vector<double>& marks, bool isCopied = false,
                                 double speed = 1, bool isPulledDown = false) {
    Film film = filmOf(100);
    for (const double mark : marks)
        film.marks.push_back({mark, ""});
    for (int i = 0; i < 200; ++i)
        film.keyframes.push_back(0.48 * i);
    Conversion conversion;
    conversion.isCopied = isCopied;
    conversion.speed = speed;
    if (isPulledDown) conversion.standard = Standard::ntsc;
    conversion.isPulledDown = isPulledDown;
    conversion.seconds = film.seconds / speed;
    std::vector<double> times;
    for (const Chapter& chapter : chaptersOf({}, film, {}, conversion).chapters)
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
    const Times pulled = chapterTimes({0, 10, 20}, false, 1, true);
    ASSERT_EQ(pulled.size(), 3U);
    EXPECT_NEAR(pulled[1], 600 * 1001 / 60000.0, 1e-9) << "after 240 pictures";
    EXPECT_NEAR(pulled[2], 1200 * 1001 / 60000.0, 1e-9) << "a half field before";
    const Times copied = chapterTimes({0, 10, 11}, true);
    ASSERT_EQ(copied.size(), 2U);
    EXPECT_NEAR(copied[1], 10.08, 1e-9);
    Film film = filmOf(1000);
    film.marks.clear();
    EXPECT_EQ(chaptersOf({}, film, {}, conversionOf(film, Standard::pal, false)).chapters.size(),
              4U)
        << "for the skip key";
    film = filmOf(1000, 120);
    EXPECT_EQ(chaptersOf({}, film, {}, conversionOf(film, Standard::pal, false)).chapters.size(),
              99U);
}

TEST(Plan, SuitsFilmsOfEachKind) {
    std::vector<Film> films{filmOf(1000, 400), filmOf(120, 12), filmOf(60, 1)};
    films[1].video.frameRate = {24, 1};  // It plays faster.
    films[2].audio.resize(6, {"ac3", 6});
    Project project = projectOf(films);
    project.title.reset();
    project.films[1].path = "/others/b.mp4";
    const DiscPlan plan = planDisc(project, films);
    EXPECT_EQ(plan.title, "");
    EXPECT_EQ(plan.films[0].conversion.chapters.size(), 99U);
    EXPECT_EQ(plan.pages.at(2).buttons.at(0).text, "Chapter 10");
    EXPECT_NEAR(loadOf(plan).menuSeconds, 29.96 * (1 + 11 + 2 + 1), 0.1);
    EXPECT_EQ(plan.pages.at(13).buttons.back().action, Action(ShowFilms{0, 1}));
    EXPECT_NEAR(plan.films[1].excerpts.at(6).moments.at(0).from, 51, 0.02);
    const std::vector<std::vector<Scene>> scenes(13, {{50, ""}});
    const WantedExcerpt excerpt = wantedExcerpts(plan.films[1], "", scenes)[6];
    EXPECT_EQ(excerpt.parts.at(0), (FrameRange{50 * 24 - 12, 12 + 187}))
        << "before the chapter's end, four times in a menu";
    EXPECT_LE(plan.films[2].conversion.videoRate, plan.films[2].conversion.topVideoRate);
    Project bare = projectOf(std::vector<Film>(70, filmOf(10)));
    bare.hasMenu = false;
    const DiscPlan many = planDisc(bare, std::vector<Film>(70, filmOf(10)));
    EXPECT_EQ(many.films.back().page, 7U) << "too many films for the commands of one dispatcher";
    for (const char* part : {"if (g4 eq 2) jump menu 3;", "id=\"0\" mode=\"widescreen\""})
        EXPECT_NE(authorFile(plan, {Strings(3), Strings(99)}, "").find(part), std::string::npos);
}

/// Left and right edge of a text's letters on the page.
std::pair<int, int> extentOf(const TextLayer& layer) {
    const auto drawn = lettersOf(layer);
    return drawn ? std::pair(drawn->left, drawn->left + drawn->pixels.width()) : std::pair(0, 0);
}

TEST(Texts, EndWhereTheirPlacesDo) {
    const std::string names[] = {"Our summer in the mountains of Asturias 2024",
                                 std::string(60, 'W'), "夏の思い出と山の風景と海の風景と川の風景",
                                 "رحلة الصيف إلى الجبال والبحر مع العائلة",
                                 std::string(100'000, 'i')};
    for (std::size_t count = 1; count <= 9; ++count) {
        for (const std::string& name : names) {
            MenuRequest request;
            request.isMainMenu = true;
            request.thumbs.emplace(count, "a.jpg");
            request.captions.emplace(count, name);
            request.title = name;
            request.dvdBt_readAll = "Play all";
            fitTexts(request);
            const ThumbnailLayout& layout = thumbnailLayout(true, count);
            for (std::size_t i = 0; i < count; ++i) {
                const std::string& caption = request.captions->at(i);
                const auto [left, right] = extentOf(captionText(caption, layout, i));
                const int begin = layout.place(i).x + layout.shiftX;
                EXPECT_GE(left, begin - 1) << caption;
                EXPECT_LE(right, begin + layout.source.width + 1) << caption;
                EXPECT_TRUE(caption == name || right - left > layout.source.width / 2) << caption;
            }
            const int title = extentOf(titleText(request.title)).second;
            EXPECT_LT(title, extentOf(navigationText(kNavigationButtons[0], "Play all")).first);
        }
    }
    MenuRequest request;
    request.thumbs.emplace(1, "a.jpg");
    request.captions.emplace(1, "Short \xFF");
    fitTexts(request);
    EXPECT_EQ(request.captions->front(), "Short \uFFFD");
}

TEST(Texts, CanBeReadOnEveryBackground) {
    const std::vector<Film> films(10, filmOf(100, 3));
    const DiscPlan plan = planDisc(projectOf(films), films);
    DiscPlan silent = plan;
    silent.pages.resize(1);
    silent.pages[0].buttons.resize(5);  // captions and title, all white
    const struct {
        Rgba color;
        double orange,
            white;  // levels behind a page's 0.6 for 4.6:1, by WCAG 2's formula
    } rows[] = {{{255, 255, 255, 255}, 0.370, 0.7655},
                {{90, 90, 90, 255}, 1, 1},
                {{255, 0, 0, 255}, 0.788, 1}};
    for (const auto& [color, orange, white] : rows) {
        const Bitmap background = painted({kPageWidth, kPageHeight}, color);
        EXPECT_NEAR(dimmingFor(background, plan), orange, 0.001);
        EXPECT_NEAR(dimmingFor(background, silent), white, 0.001);
    }
}

}  // namespace tkv::test::plan
