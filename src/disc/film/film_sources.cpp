#include "disc/film/film_sources.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <utility>

#include "disc/film/slide_film.h"
#include "disc/project/names.h"
#include "disc/run/fault.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// Seconds. Discs hold titles that nobody looks for: warnings, logos, what menus jump through.
constexpr double kLeastTitle = 10;

// Titles whose lengths are told.
constexpr std::size_t kMostTold = 10;

// Whether each sector of a title is one of another's.
bool contains(const DvdTitle& title, const DvdTitle& part) {
    return title.titleSet == part.titleSet &&
           std::ranges::all_of(part.cells, [&](const SectorRange& cell) {
               return std::ranges::any_of(title.cells, [&](const SectorRange& other) {
                   return other.first <= cell.first && cell.end <= other.end;
               });
           });
}

// Whether it has nothing that another one has not; of equals it is the later one.
bool isPartOf(const DvdTitle& title, const DvdTitle& other) {
    return title.number != other.number && contains(other, title) &&
           (other.number < title.number || !contains(title, other));
}

using Titles = std::vector<FilmSource>;

double playingTimeOf(const FilmSource& source) {
    return source.title->seconds;
}

// The titles of a DVD, as far as their sectors are there.
Titles allTitles(const FilmSource& largest, bool isFolder, ProgramStop& stop) {
    Titles titles;
    const std::string folder = parentFolder(largest.files.front());
    for (DvdTitle& title : dvdTitlesIn(folder, stop)) {
        if (!isFolder && title.titleSet != titleSetOf(largest)) continue;
        std::vector<std::string> files = titleSetIn(folder, title.titleSet);
        if (files.empty()) continue;
        FilmSource source = sourceOf(largest.path, std::move(files));
        if (takeTitle(source, std::move(title))) titles.push_back(std::move(source));
    }
    return titles;
}

void noteLeftOut(Titles& kept, const Titles& left, std::string_view what, std::string_view why) {
    if (left.empty()) return;
    std::vector<std::string> lengths;
    for (const FilmSource& title : left)
        lengths.push_back(timeText(std::round(playingTimeOf(title))));
    if (lengths.size() > kMostTold) {
        lengths.resize(kMostTold);
        lengths.emplace_back("…");
    }
    kept.front().notes.push_back(fmt::format(
        "left out: {} {}{} of {}{} ({})", left.size(), what, left.size() == 1 ? "" : "s",
        lastComponent(left.front().path), why, fmt::join(lengths, ", ")));
}

// Moves those that are not wanted out of the titles.
template <typename IsWanted>
Titles takeOut(Titles& titles, IsWanted isWanted) {
    const auto first = std::stable_partition(titles.begin(), titles.end(), isWanted);
    Titles out(std::make_move_iterator(first), std::make_move_iterator(titles.end()));
    titles.erase(first, titles.end());
    return out;
}

Titles named(Titles titles, const FilmRequest& request) {
    takeOut(titles, [&](const FilmSource& title) { return title.title->number == request.title; });
    if (!titles.empty()) return titles;
    throw DiscError(
        fmt::format("{} has no title {} that could be read.", request.path, request.title),
        request.path);
}

}  // namespace

FilmSource joinedSource(const FilmRequest& request) {
    for (const std::string& part : request.parts) {
        if (sourceOf(part).files.size() > 1 || part.find_first_of("|\n") != std::string::npos)
            throw DiscError(fmt::format("{} cannot be a part of a film.", part), request.path);
    }
    FilmSource source = sourceOf(request.path, request.parts);
    for (const std::string& part : request.parts)
        source.clips.push_back({part});
    return source;
}

std::vector<FilmSource> sourcesOf(const FilmRequest& request, bool areAllWanted,
                                  ProgramStop& stop) {
    if (!request.parts.empty()) return {joinedSource(request)};
    if (request.slides) return {slideSource(request)};
    FilmSource source = sourceOf(request.path);
    const bool isFolder = std::filesystem::is_directory(request.path);
    Titles titles;
    if (titleSetOf(source) > 0) titles = allTitles(source, isFolder, stop);
    if (request.title > 0) return named(std::move(titles), request);
    if (titles.empty()) return {std::move(source)};
    const FilmSource& longest = std::ranges::max(titles, {}, playingTimeOf);
    const bool areWanted = areAllWanted && !request.isOfOne();
    const double least = std::min(kLeastTitle, playingTimeOf(longest));
    const Titles shorter = takeOut(
        titles, [areWanted, least, number = longest.title->number](const FilmSource& title) {
            return areWanted ? playingTimeOf(title) >= least : title.title->number == number;
        });
    const Titles parts = takeOut(titles, [all = titles](const FilmSource& title) {
        return std::ranges::none_of(
            all, [&](const FilmSource& other) { return isPartOf(*title.title, *other.title); });
    });
    noteLeftOut(titles, shorter, "shorter title", "");
    noteLeftOut(titles, parts, "title", ", which others contain");
    return titles;
}

}  // namespace tkv::disc
