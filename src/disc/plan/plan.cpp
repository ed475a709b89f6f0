#include "disc/plan/plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <regex>
#include <utility>

#include "disc/film/captions.h"
#include "disc/film/dvd_ready.h"
#include "disc/plan/chapters.h"
#include "disc/plan/menu_pages.h"
#include "disc/project/names.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// Films of 24 frames a second say nothing: they stand equally well on both.
Standard standardOf(const std::vector<DiscFilm>& films) {
    int balance = 0;
    for (const DiscFilm& film : films) {
        const double rate = film.film.video.frameRate.perSecond();
        const auto suits = [rate](double wanted) {
            return std::abs(rate - wanted) < 0.5 || std::abs(rate - 2 * wanted) < 0.5;
        };
        if (suits(25)) ++balance;
        if (suits(30)) --balance;
    }
    return balance < 0 ? Standard::ntsc : Standard::pal;
}

// Whether a folder is called for the camera's sake or the system's.
bool isPlain(const std::filesystem::path& folder, const Project& project) {
    static const std::regex pattern(
        "downloads?|videos?|movies|desktop|documents|te?mp|dcim|camera|"
        "stream|\\d{3}[a-z0-9_]{5}");
    return std::ranges::find(project.plainFolders, folder.string()) != project.plainFolders.end() ||
           std::regex_match(asciiLowered(folder.filename().string()), pattern);
}

// What an only film is called, or the films' folder, when they have one in common.
std::string titleOf(const Project& project, const std::vector<DiscFilm>& films) {
    if (project.title) return *project.title;
    if (project.films.empty()) return "";
    const auto folder = [](const FilmRequest& film) {
        const std::filesystem::path path = film.path;
        return film.folder.empty() ? path.parent_path() : std::filesystem::path(film.folder);
    };
    const auto first = folder(project.films.front());
    const bool isOneDvd = std::ranges::all_of(project.films, [&](const FilmRequest& film) {
        return film.title > 0 && film.path == project.films.front().path;
    });
    if (isOneDvd && films.size() > 1) return readableName(project.films.front().path);
    if (films.size() == 1 || isPlain(first, project)) return films.front().caption;
    const bool isCommon = std::ranges::all_of(
        project.films, [&](const FilmRequest& film) { return folder(film) == first; });
    return isCommon && first.has_filename() ? readableName(first.string()) : "";
}

Span spanOf(const FilmRequest& request, const Film& film) {
    if (!request.excerpts.empty()) return {request.excerpts.front(), request.excerpts.front()};
    return middleOf(film);
}

// What is known of the films before they are converted.
std::vector<DiscFilm> recordsOf(const Project& project, std::vector<Film> films) {
    const std::vector<std::string> captions = captionsOf(project.films, films, project.labels);
    std::vector<DiscFilm> records(films.size());
    for (std::size_t i = 0; i < films.size(); ++i) {
        DiscFilm& record = records[i];
        record.number = i;
        record.request = project.films[i];
        record.film = std::move(films[i]);
        record.caption = captions[i];
        record.span = spanOf(record.request, record.film);
    }
    return records;
}

void convert(DiscFilm& film, const Project& project, Standard standard, bool isCopied) {
    Conversion& conversion = film.conversion;
    conversion = conversionOf(film.film, standard, isCopied);
    conversion.evensLoudness = project.evenVolume;
    conversion.keepsPitch = project.keepsPitch;
    conversion.keepsSubtitles = isCopied && mayKeepSubtitles(film.film);
    film.subtitles = discSubtitles(film.film, conversion.keepsSubtitles,
                                   film.request.shown.value_or(project.subtitles));
    conversion.subtitleRate =
        conversion.keepsSubtitles ? 0 : static_cast<int>(film.subtitles.size()) * kSubtitleRate;
    setSound(film.film, kStereoRate, conversion);
    ChapterList list = chaptersOf(film.request, film.film, project.chapters, conversion);
    conversion.chapters = std::move(list.chapters);
    film.chaptersLeftOut = list.leftOut;
    const bool hasMenu = project.hasMenu && list.hasMenu;
    film.chapterPages.count = hasMenu ? pagesFor(conversion.chapters.size()) : 0;
}

// Pictures of subtitles that a copy would have kept.
void noteSubtitles(DiscFilm& film) {
    const std::size_t lost = film.film.subtitles.size() - film.subtitles.size();
    if (lost == 0) return;
    film.film.notes.push_back(fmt::format(
        "{} of its subtitles are left out: those of a DVD (dvd_subtitle) stay where the "
        "film is copied, with no others beside them",
        lost));
}

// What the keys do that belong to no page.
void setKeys(DiscPlan& plan, const Project& project) {
    const bool hasMenu = project.hasMenu;
    plan.start = ShowFilms{0};
    if (project.playsFirstFilm || !hasMenu) plan.start = PlayFilm{0, 0};
    plan.titleKey = hasMenu ? Action(BackToFilms{}) : Action(PlayFilm{0, 0});
    for (DiscFilm& film : plan.films) {
        film.keys.menu = ShowFilms{film.page, film.button};
        if (film.ownPages().count > 0) film.keys.menu = BackToChapters{};
        if (!hasMenu) film.keys.menu = PlayFilm{0, 0};
        film.keys.end = hasMenu ? Action(BackToStart{}) : Action(StopDisc{});
        film.keys.next.reset();
        if (film.number + 1 < plan.films.size()) film.keys.next = PlayFilm{film.number + 1, 0};
    }
}

// The largest of the films that are copied; null when there is none.
DiscFilm* largestCopied(std::vector<DiscFilm>& films) {
    DiscFilm* largest = nullptr;
    for (DiscFilm& film : films) {
        if (!film.conversion.isCopied) continue;
        if (largest == nullptr || film.film.source.bytes > largest->film.source.bytes)
            largest = &film;
    }
    return largest;
}

// Whether all films that are encoded get the best there is.
bool hasRoom(const Rates& rates) {
    return rates.missing == 0 && std::ranges::all_of(rates.video, [](int rate) {
               return rate == 0 || rate == kBestVideoRate;
           });
}

// Stereo tracks get what no picture has to do without.
Rates shareWithSound(DiscPlan& plan) {
    Rates rates;
    for (const int stereoRate : {384, 320, 256, kStereoRate}) {
        for (DiscFilm& film : plan.films) {
            if (!film.conversion.isCopied) setSound(film.film, stereoRate, film.conversion);
        }
        rates = shareRates(loadOf(plan), plan.size);
        if (hasRoom(rates)) break;
    }
    return rates;
}

bool isBelowBest(const DiscFilm& film) {
    const Conversion& conversion = film.conversion;
    return !conversion.isCopied && conversion.videoRate < conversion.bestVideoRate();
}

std::int64_t subtitleBytes(double seconds, int rate) {
    return static_cast<std::int64_t>(seconds * rate * 1000 / 8);
}

void setRates(DiscPlan& plan, const Rates& rates) {
    plan.menuRate = rates.menu;
    plan.bytes = rates.bytes;
    plan.missing = rates.missing;
    for (DiscFilm& film : plan.films)
        film.conversion.videoRate = rates.video[film.number];
    const bool isFull = std::ranges::any_of(plan.films, isBelowBest);
    for (DiscFilm& film : plan.films)
        film.conversion.isExact = isFull && !film.conversion.isCopied;
}

}  // namespace

DiscLoad loadOf(const DiscPlan& plan) {
    DiscLoad load;
    for (const DiscFilm& film : plan.films) {
        const Conversion& conversion = film.conversion;
        const std::int64_t copied =
            film.film.source.bytes + subtitleBytes(conversion.seconds, conversion.subtitleRate);
        load.films.push_back({conversion.seconds, conversion.soundRate + conversion.subtitleRate,
                              conversion.isCopied ? copied : 0, film.hardness});
    }
    load.menuSeconds =
        static_cast<double>(plan.pages.size()) * factsOf(plan.standard).menuSeconds();
    return load;
}

DiscPlan planDisc(const Project& project, std::vector<Film> films) {
    DiscPlan plan;
    plan.films = recordsOf(project, std::move(films));
    plan.standard = project.standard.value_or(standardOf(plan.films));
    plan.size = project.size;
    plan.title = titleOf(project, plan.films);
    plan.language = project.labels.language;
    for (DiscFilm& film : plan.films) {
        const bool isReady =
            !film.film.isAltered && whyNotDvdReady(film.film, plan.standard).empty();
        convert(film, project, plan.standard, isReady && !project.evenVolume);
    }
    // Films that are ready stay as they are, unless there is no room for them.
    while (true) {
        addPages(plan, project);
        setKeys(plan, project);
        const Rates rates = shareWithSound(plan);
        DiscFilm* const largest = rates.missing > 0 ? largestCopied(plan.films) : nullptr;
        if (largest == nullptr) {
            setRates(plan, rates);
            std::ranges::for_each(plan.films, noteSubtitles);
            return plan;
        }
        convert(*largest, project, plan.standard, false);
    }
}

ShowChapters ownMenu(const DiscPlan& plan, std::size_t film) {
    const MenuPage& page = plan.pages[plan.films[film].ownPages().first];
    return {film, 0, page.thumbnails.size()};
}

bool isSharedOut(const DiscPlan& plan) {
    const auto isEncoded = [](const DiscFilm& film) { return !film.conversion.isCopied; };
    return std::ranges::count_if(plan.films, isEncoded) > 1 &&
           std::ranges::any_of(plan.films, isBelowBest);
}

void shareOut(DiscPlan& plan) {
    setRates(plan, shareRates(loadOf(plan), plan.size));
}

}  // namespace tkv::disc
