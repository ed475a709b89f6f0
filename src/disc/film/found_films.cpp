#include "disc/film/found_films.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "disc/run/fault.h"
#include "disc/run/parallel_tasks.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// What desktops leave in folders.
bool isClutter(const std::string& path) {
    const std::string name = asciiLowered(lastComponent(path));
    return name.starts_with(".") || name == "thumbs.db" || name == "desktop.ini";
}

}  // namespace

std::vector<FilmSource> sourcesOf(const Project& project) {
    std::vector<FilmSource> sources;
    sources.reserve(project.films.size());
    for (const FilmRequest& film : project.films)
        sources.push_back(sourceOf(film.path));
    return sources;
}

FoundFilms findFilms(Project& project, const std::vector<FilmSource>& sources, ProgramStop& stop,
                     const std::function<Film(const FilmSource&)>& probe) {
    const std::vector<FilmRequest> requests = std::exchange(project.films, {});
    std::vector<std::optional<Film>> films(requests.size());
    std::vector<std::exception_ptr> reasons(requests.size());
    const auto passOver = [&](std::size_t i, const std::exception_ptr& reason) {
        if (!requests[i].isListed) std::rethrow_exception(reason);
        reasons[i] = reason;
    };
    sideBySide(requests.size(), stop, [&](std::size_t i) {
        try {
            films[i] = probe(sources[i]);
        } catch (const NoFilm& reason) {
            if (reason.kind() == NoFilm::Kind::playlist) throw;
            passOver(i, std::current_exception());
        } catch (const DiscError&) {
            if (!isClutter(sources[i].path)) throw;
            passOver(i, std::current_exception());
        }
    });
    FoundFilms found;
    for (std::size_t i = 0; i < requests.size(); ++i) {
        if (films[i]) {
            project.films.push_back(requests[i]);
            found.films.push_back(std::move(*films[i]));
        } else {
            found.passedOver.push_back(lastComponent(sources[i].path));
        }
    }
    if (found.films.empty() && !reasons.empty()) std::rethrow_exception(reasons.front());
    return found;
}

}  // namespace tkv::disc
