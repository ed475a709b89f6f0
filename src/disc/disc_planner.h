#pragma once

#include <optional>
#include <string>
#include <vector>

#include "disc/film/film_list.h"
#include "disc/make/menu_setting.h"
#include "disc/plan/plan.h"
#include "disc/project/command_line.h"
#include "disc/run/fault.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"
#include "system/processes.h"

namespace tkv::disc {

/// From the films that are asked for to the plan of a disc, and to another one as often as a film
/// turns out not to be what it seemed. What is told on the way goes to the progress.
class DiscPlanner {
  public:
    /// All must outlive it. `films`: found, but not probed yet.
    DiscPlanner(const Options& options, FilmList films, Workshop& workshop, Progress& progress,
                ProgramStop& stop);

    /// Reads what the films hold, has them as the person wants them, and plans the disc. Throws
    /// DiscError when there can be none.
    void plan();

    /// Takes a picture of each film: those that cannot be decoded leave the plan, or end the run
    /// with a DiscError, before others are encoded for hours.
    void lookAtFilms();

    /// Has hard films get more of a disc that they share out. Throws DiscError.
    void shareByHardness();

    /// Plans the disc without some of its films; the others are encoded as they were to be.
    /// `faults`: of each film of the plan, none where it stays. Throws DiscError when no film is
    /// left, or the run is not to go on.
    void leaveOut(const std::vector<std::optional<Fault>>& faults);

    const DiscPlan& disc() const { return plan_; }

    /// How the plan's menus look.
    const MenuSetting& setting() const { return setting_; }

    const FilmList& films() const { return films_; }

  private:
    void probeFilms();
    void readFilms();
    void applyWishes();
    void sayLeftOut();
    void planFor(const Project& project);

    const Options& options_;
    FilmList films_;
    Workshop& workshop_;
    Progress& progress_;
    ProgramStop& stop_;
    std::size_t leftOutSaid_ = 0;
    DiscPlan plan_;
    MenuSetting setting_;
};

}  // namespace tkv::disc
