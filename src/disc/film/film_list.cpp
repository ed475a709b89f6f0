#include "disc/film/film_list.h"

#include <algorithm>
#include <utility>

#include "disc/film/film_sources.h"
#include "disc/run/parallel_tasks.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// What desktops leave in folders.
bool isClutter(const std::string& path) {
    const std::string name = asciiLowered(lastComponent(path));
    return name.starts_with(".") || name == "thumbs.db" || name == "desktop.ini";
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

FilmList::FilmList(Project project, bool keepsGoing, ProgramStop& stop)
    : project_(std::move(project)), keepsGoing_(keepsGoing) {
    for (const FilmRequest& request : std::exchange(project_.films, {})) {
        if (const auto fault = faultOf([&] { find(request, stop); })) leftOut_.push_back(*fault);
    }
    requireEnough();
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
    std::vector<std::string> passedOver;
    for (std::size_t i = 0; i < noFilms.size(); ++i) {
        if (noFilms[i]) passedOver.push_back(lastComponent(sources_[i].path));
    }
    if (passedOver.size() == sources_.size()) std::swap(faults, noFilms);
    keepFaultless(project_.films, noFilms);
    keepFaultless(sources_, noFilms);
    keepFaultless(films_, noFilms);
    keepFaultless(faults, noFilms);
    leaveOut(faults);
    return passedOver;
}

void FilmList::visit(const std::function<void(Film&, const FilmRequest&)>& action) {
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
