#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "disc/excerpts.h"
#include "disc/film.h"
#include "disc/film_encoding.h"
#include "disc/page_work.h"
#include "disc/plan.h"
#include "disc/progress.h"
#include "disc/project.h"
#include "disc/workshop.h"

namespace tkv::disc {

/// Makes the films of a disc, and their excerpts.
class FilmMaker {
  public:
    /// All must outlive it; it fills in the scenes and excerpts of `pages`.
    FilmMaker(const Project& project, const std::vector<Film>& films, const DiscPlan& plan,
              std::vector<PageWork>& pages, Workshop& workshop, Progress& progress);

    /// Makes a film and what the pages show of it, and answers its name in the workshop. May be
    /// called from several threads, each with films of its own.
    std::string make(std::size_t number);

    /// What it will be called.
    std::string nameOf(std::size_t number) const;

  private:
    std::vector<WantedExcerpt> wantedOf(std::size_t number);
    FilmEncoding encodingOf(std::size_t number) const;
    void copy(std::size_t number, const std::string& name);
    void encode(std::size_t number, const std::string& name, std::vector<WantedExcerpt> wanted);
    void encodeAgain(std::size_t number, FilmEncoding encoding, const std::string& output);
    static void interleave(const Film& film, const std::string& path);
    void expectFrames(std::size_t number, int written) const;
    void cut(std::size_t number, const std::string& name, const WantedExcerpt& wanted);
    int rateNow(std::size_t number);
    void noteMade(std::size_t number, const std::string& name);

    const Project& project_;
    const std::vector<Film>& films_;
    const DiscPlan& plan_;
    std::vector<PageWork>& pages_;
    Workshop& workshop_;
    Progress& progress_;

    std::mutex mutex_;
    DiscLoad load_;  // with the bytes of the films that are made or being made
};

}  // namespace tkv::disc
