#include "disc/disc_planner.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "disc/author/output_folder.h"
#include "disc/film/ffprobe.h"
#include "disc/film/film_choices.h"
#include "disc/film/kept_film.h"
#include "disc/make/bars.h"
#include "disc/make/film_hardness.h"
#include "disc/make/scenes.h"
#include "disc/plan/report.h"
#include "disc/project/names.h"
#include "disc/run/parallel_tasks.h"
#include "disc/subtitle/choice.h"
#include "disc/subtitle/texts.h"

namespace tkv::disc {

namespace {

constexpr double kLookingWeight = 0.5;  // seconds of work

}  // namespace

DiscPlanner::DiscPlanner(const Options& options, FilmList films, Workshop& workshop,
                         Progress& progress, ProgramStop& stop)
    : options_(options),
      films_(std::move(films)),
      workshop_(workshop),
      progress_(progress),
      stop_(stop) {}

void DiscPlanner::plan() {
    probeFilms();
    if (!options_.isPreview) readFilms();
    applyWishes();
    sayLeftOut();
    planFor(films_.project());
}

void DiscPlanner::probeFilms() {
    const auto probe = [&](const FilmSource& source) { return probeFilmOnce(source, workshop_); };
    const auto passedOver = films_.probe(stop_, probe);
    if (!passedOver.empty()) progress_.say(passedOverLine(passedOver));
    for (const std::string& line : films_.joinClips(probe))
        progress_.say(line);
    films_.visit([&](Film& film, const FilmRequest& request) {
        chooseSubtitles(request, options_.project, film);
        for (const FilmSubtitle& subtitle : film.subtitles) {
            if (!subtitle.path.empty()) requireOutside(options_.output, subtitle.path);
        }
    });
}

// From the first to the last byte, which a preview has no time for.
void DiscPlanner::readFilms() {
    films_.visit([&](Film& film, const FilmRequest& request) {
        const Progress::Task task(progress_, "Looking through " + shortName(request), 0);
        countFramesOnce(film, workshop_);
        readSubtitles(film, workshop_);
    });
}

void DiscPlanner::applyWishes() {
    films_.visit([&](Film& film, FilmRequest& request) {
        applyChoices(request, film);
        if (request.choices.cutsBars) cutEdges(film, barsOf(film, workshop_));
    });
}

void DiscPlanner::sayLeftOut() {
    for (; leftOutSaid_ < films_.leftOut().size(); ++leftOutSaid_)
        progress_.say("Left out: " + films_.leftOut()[leftOutSaid_].words);
}

void DiscPlanner::planFor(const Project& project) {
    plan_ = planDisc(project, films_.films());
    if (const std::string why = whyNoDisc(plan_); !why.empty()) throw DiscError(why);
    setting_ = menuSettingOf(project, plan_);
}

void DiscPlanner::lookAtFilms() {
    std::vector<std::optional<Fault>> faults(plan_.films.size());
    progress_.expect(kLookingWeight * static_cast<double>(faults.size()));
    sideBySide(faults.size(), stop_, [&](std::size_t number) {
        const DiscFilm& film = plan_.films[number];
        const Progress::Task task(progress_, "Looking at " + shortName(film.request),
                                  kLookingWeight);
        const Workshop::Lock lock(workshop_, film.film.source.stamp);
        faults[number] = faultOf([&] { lookAt(film, workshop_); });
    });
    leaveOut(faults);
}

void DiscPlanner::shareByHardness() {
    sideBySide(plan_.films.size(), stop_, [&](std::size_t number) {
        DiscFilm& film = plan_.films[number];
        if (film.conversion.isCopied) return;
        const Progress::Task task(progress_, "Looking at " + shortName(film.request), 0);
        const Workshop::Lock lock(workshop_, film.film.source.stamp);
        film.hardness = hardnessOf(film, workshop_);
    });
    shareOut(plan_);
}

// What is made already keeps its name: that of its standard and its rate.
void DiscPlanner::leaveOut(const std::vector<std::optional<Fault>>& faults) {
    if (std::ranges::none_of(faults, &std::optional<Fault>::has_value)) return;
    films_.leaveOut(faults);
    sayLeftOut();
    const DiscPlan earlier = std::exchange(plan_, {});
    Project project = films_.project();
    project.standard = earlier.standard;
    planFor(project);
    std::size_t number = 0;
    for (const DiscFilm& film : earlier.films) {
        if (faults[film.number]) continue;
        DiscFilm& same = plan_.films[number++];
        same.hardness = film.hardness;
        if (same.conversion.isCopied) continue;
        same.conversion.videoRate = film.conversion.videoRate;
        same.conversion.isExact = film.conversion.isExact;
    }
}

}  // namespace tkv::disc
