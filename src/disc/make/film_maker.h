#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "disc/make/excerpts.h"
#include "disc/make/film_encoding.h"
#include "disc/plan/plan.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// What a film of the disc is called in the workshop. What is cut from it, its loudness and what
/// the other films leave it do not make it another.
std::string filmName(const DiscFilm& film);

/// Makes the films of a disc, and their excerpts.
class FilmMaker {
  public:
    /// All must outlive it.
    FilmMaker(const DiscPlan& plan, Workshop& workshop, Progress& progress);

    /// Makes a film of the plan, and returns the names of its excerpts' folders, in their order.
    /// May be called from several threads, each with films of its own.
    std::vector<std::string> make(const DiscFilm& film);

  private:
    void copy(const DiscFilm& film, const std::string& name);
    void encode(const DiscFilm& film, const std::string& name, std::vector<WantedExcerpt> wanted);
    double gainOf(const DiscFilm& film) const;
    void interleave(const DiscFilm& film, const std::string& output) const;
    void cut(const DiscFilm& film, const std::string& name, const WantedExcerpt& wanted);
    int rateNow(const DiscFilm& film);
    int fittingRate(const DiscFilm& film, int rate, std::int64_t bytes);
    std::int64_t bytesOf(const std::string& name) const;
    void noteMade(const DiscFilm& film, const std::string& name);

    const DiscPlan& plan_;
    Workshop& workshop_;
    Progress& progress_;

    std::mutex mutex_;
    DiscLoad load_;  // with the bytes of the films that are made or being made
};

}  // namespace tkv::disc
