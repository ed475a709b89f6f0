#include "disc/film/film_list.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "disc/film/clips.h"
#include "disc/film/film_sources.h"
#include "disc/film/folder.h"
#include "disc/film/joined_film.h"
#include "disc/project/slide_request.h"
#include "disc/run/parallel_tasks.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// What desktops leave in folders.
bool isClutter(const std::string& path) {
    const std::string name = asciiLowered(lastComponent(path));
    return name.starts_with(".") || name == "thumbs.db" || name == "desktop.ini";
}

// Whether a file is about as large as the file systems of cards allow, or as cameras do, which keep
// below 2 or 4 GB.
bool isFull(std::int64_t bytes) {
    constexpr std::int64_t kGiB = std::int64_t{1} << 30U;
    return std::ranges::any_of(std::array{2 * kGiB, 4 * kGiB}, [&](std::int64_t most) {
        return bytes <= most && bytes > most - most / 10;
    });
}

// Where all that is named are pictures, and perhaps music to them, they are a film.
std::vector<FilmRequest> withPictures(std::vector<FilmRequest> requests) {
    SlideRequest slides;
    for (const FilmRequest& request : requests) {
        const FileKind kind = kindOf(request.path);
        const bool isPicture = kind == FileKind::picture;
        if (!request.isListed || (!isPicture && kind != FileKind::sound)) return requests;
        (isPicture ? slides.paths : slides.music).push_back(request.path);
    }
    // One alone was hardly meant to be a film.
    if (slides.paths.size() < 2) return requests;
    FilmRequest film = filmOfPictures(slides.paths);
    film.slides = std::move(slides);
    return {film};
}

// Of items that belong to one film each, those of films without a fault.
template <typename Item>
void keepFaultless(std::vector<Item>& items, const std::vector<std::optional<Fault>>& faults) {
    if (items.empty()) return;
    std::vector<Item> kept;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        if (!faults[i]) kept.push_back(std::move(items[i]));
    }
    items = std::move(kept);
}

}  // namespace

FilmList::FilmList(Project project, const std::string& output, bool keepsGoing, ProgramStop& stop)
    : project_(std::move(project)), keepsGoing_(keepsGoing) {
    for (const FilmRequest& request : withPictures(std::exchange(project_.films, {}))) {
        const auto fault = faultOf([&] {
            for (const FilmRequest& film : requestsIn(request, output))
                find(film, stop);
        });
        if (fault) leftOut_.push_back(*fault);
    }
    requireEnough();
    const std::size_t count = sources_.size();
    if (count > kMostFilms)
        throw DiscError(fmt::format("{} films are too many: a disc holds {}. Make several discs.",
                                    count, kMostFilms));
}

std::vector<FilmRequest> FilmList::requestsIn(const FilmRequest& request,
                                              const std::string& output) {
    const std::string& path = request.path;
    std::error_code error;
    if (request.slides || !std::filesystem::is_directory(path, error)) return {request};
    const FolderContents contents = contentsOf(path, output);
    if (contents.films.empty() && contents.pictures.empty())
        throw DiscError(fmt::format("{} is a folder in which there is no film.", path), path);
    if (contents.films.empty()) {
        notePassedOver(contents.others);
        FilmRequest slides = request;
        slides.slides = SlideRequest{.paths = contents.pictures, .music = contents.sounds};
        return {slides};
    }
    const bool isOne = contents.films.size() == 1;
    // A DVD is called as the folder that holds its own.
    if (isOne && (contents.films[0] == path || contents.films[0] == joinPath(path, "VIDEO_TS")))
        return {request};
    if (!isOne && request.isOfOne()) {
        throw DiscError(fmt::format("{} holds {} films, and what is said is of one. Name them one "
                                    "by one.",
                                    path, contents.films.size()),
                        path);
    }
    std::vector<FilmRequest> requests;
    for (const std::string& film : contents.films) {
        requests.push_back(request);
        requests.back().path = film;
        requests.back().folder = path;
        requests.back().isListed = true;
    }
    for (const auto* const names : {&contents.pictures, &contents.sounds, &contents.others})
        notePassedOver(*names);
    return requests;
}

void FilmList::notePassedOver(const std::vector<std::string>& paths) {
    for (const std::string& path : paths)
        passedOver_.push_back(lastComponent(path));
}

void FilmList::find(const FilmRequest& request, ProgramStop& stop) {
    std::vector<FilmSource> found = sourcesOf(request, project_.hasAllTitles, stop);
    const bool areSeveral = found.size() > 1;
    for (FilmSource& source : found) {
        FilmRequest& film = project_.films.emplace_back(request);
        if (areSeveral) film.title = source.title->number;
        sources_.push_back(std::move(source));
    }
}

std::vector<std::string> FilmList::probe(ProgramStop& stop,
                                         const std::function<Film(const FilmSource&)>& probe) {
    films_.resize(sources_.size());
    std::vector<std::optional<Fault>> faults(sources_.size());
    std::vector<std::optional<Fault>> noFilms(sources_.size());
    sideBySide(sources_.size(), stop, [&](std::size_t i) {
        bool isNone = isClutter(sources_[i].path);
        const std::optional<Fault> fault = faultOf([&] {
            try {
                films_[i] = probe(sources_[i]);
            } catch (const NoFilm& reason) {
                isNone = isNone || reason.kind() != NoFilm::Kind::playlist;
                throw;
            }
        });
        (isNone && project_.films[i].isListed ? noFilms : faults)[i] = fault;
    });
    std::vector<std::string> passedOver = passedOver_;
    for (std::size_t i = 0; i < noFilms.size(); ++i) {
        if (noFilms[i]) passedOver.push_back(lastComponent(sources_[i].path));
    }
    const auto isFilm = [](const std::optional<Fault>& none) { return !none; };
    if (std::ranges::none_of(noFilms, isFilm)) std::swap(faults, noFilms);
    keepFaultless(project_.films, noFilms);
    keepFaultless(sources_, noFilms);
    keepFaultless(films_, noFilms);
    keepFaultless(faults, noFilms);
    leaveOut(faults);
    return passedOver;
}

// Whether a film seems to be the piece of a recording that follows on the film before it.
bool FilmList::goesOn(std::size_t film) const {
    if (film == 0 || film >= films_.size()) return false;
    const Film &before = films_[film - 1], &piece = films_[film];
    for (const std::size_t each : {film - 1, film}) {
        const FilmSource& source = films_[each].source;
        if (source.files.size() > 1 || source.title || project_.films[each].isOfOne()) return false;
    }
    if (!canGoOn(before, piece)) return false;
    const std::string &first = before.source.path, &second = piece.source.path;
    if (parentFolder(first) == parentFolder(second) && areOneStream({before, piece})) return true;
    const auto a = clipNamed(first), b = clipNamed(second);
    const bool isNext = a && b && a->recording == b->recording && a->number + 1 == b->number;
    return isNext && (a->isSure || project_.joinsClips || isFull(before.source.bytes));
}

std::vector<std::string> FilmList::joinClips(const std::function<Film(const FilmSource&)>& probe) {
    std::vector<std::string> lines;
    for (std::size_t first = films_.size(); first-- > 0;) {
        if (goesOn(first)) continue;
        std::size_t end = first + 1;
        while (goesOn(end))
            ++end;
        if (end == first + 1) continue;
        lines.push_back(fmt::format(
            "{} to {} ({} files) {}", lastComponent(films_[first].source.path),
            lastComponent(films_[end - 1].source.path), end - first,
            project_.joinsClips ? "are one film"
                                : "look like one recording: --join makes one film of them"));
        if (project_.joinsClips) join(first, end, probe);
    }
    const auto isJoined = [](const FilmRequest& film) { return !film.parts.empty(); };
    if (project_.joinsClips && std::ranges::none_of(project_.films, isJoined))
        lines.emplace_back("--join: no films look like the pieces of one recording");
    std::ranges::reverse(lines);
    return lines;
}

void FilmList::join(std::size_t first, std::size_t end,
                    const std::function<Film(const FilmSource&)>& probe) {
    FilmRequest& request = project_.films[first];
    for (std::size_t piece = first; piece < end; ++piece)
        request.parts.push_back(project_.films[piece].path);
    sources_[first] = joinedSource(request);
    films_[first] = probe(sources_[first]);
    const auto eraseOthers = [&](auto& items) {
        const auto begin = items.begin();
        items.erase(begin + static_cast<std::ptrdiff_t>(first) + 1,
                    begin + static_cast<std::ptrdiff_t>(end));
    };
    eraseOthers(project_.films);
    eraseOthers(sources_);
    eraseOthers(films_);
}

void FilmList::visit(const std::function<void(Film&, FilmRequest&)>& action) {
    std::vector<std::optional<Fault>> faults;
    for (std::size_t i = 0; i < films_.size(); ++i)
        faults.push_back(faultOf([&] { action(films_[i], project_.films[i]); }));
    leaveOut(faults);
}

void FilmList::leaveOut(const std::vector<std::optional<Fault>>& faults) {
    keepFaultless(project_.films, faults);
    keepFaultless(sources_, faults);
    keepFaultless(films_, faults);
    for (const std::optional<Fault>& fault : faults) {
        if (fault) leftOut_.push_back(*fault);
    }
    requireEnough();
}

void FilmList::requireEnough() const {
    if (!leftOut_.empty() && (!keepsGoing_ || project_.films.empty())) throw DiscError(leftOut_);
}

}  // namespace tkv::disc
