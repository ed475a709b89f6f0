#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "disc/film/film.h"
#include "disc/project/project.h"
#include "disc/run/fault.h"
#include "system/processes.h"

namespace tkv::disc {

/// The films of a project, as far as something can be made of them: those with a fault leave it, or
/// end the run.
class FilmList {
  public:
    /// Looks for the films' files. A request for a folder becomes one for each film in it, but for
    /// what is in `output`, or where there is none one for its pictures together, and so do
    /// pictures and sounds without a film; one for a DVD becomes one for each of its titles.
    /// `keepsGoing`: does the run go on without films that have a fault? Else it ends with all that
    /// are found at once. Throws DiscError then, and where no film is left, or more than a disc
    /// holds.
    FilmList(Project project, const std::string& output, bool keepsGoing, ProgramStop& stop);

    /// What the person asks for, with the films that are left.
    const Project& project() const { return project_; }

    /// Of these films, in their order; their facts only once they are probed.
    const std::vector<FilmSource>& sources() const { return sources_; }
    const std::vector<Film>& films() const { return films_; }

    /// Why others are not among them.
    const std::vector<Fault>& leftOut() const { return leftOut_; }

    /// Probes the films side by side, and returns the names of files that are none: of folders, and
    /// of requests that stand on the command line, as a shell lists a folder, texts and pictures
    /// are passed over as long as there is a film. `probe` is called from several threads. Throws
    /// as the constructor.
    std::vector<std::string> probe(ProgramStop& stop,
                                   const std::function<Film(const FilmSource&)>& probe);

    /// Puts the pieces of recordings together, where the project says so, and returns lines on
    /// those that there are. `probe`: as before. Throws as the constructor.
    std::vector<std::string> joinClips(const std::function<Film(const FilmSource&)>& probe);

    /// Does something with each film and what is asked of it, in turn. Throws as the constructor.
    void visit(const std::function<void(Film&, FilmRequest&)>& action);

    /// Leaves out films. `faults`: one for each film, none for those that stay. Throws as the
    /// constructor.
    void leaveOut(const std::vector<std::optional<Fault>>& faults);

  private:
    std::vector<FilmRequest> requestsIn(const FilmRequest& request, const std::string& output);
    void find(const FilmRequest& request, ProgramStop& stop);
    void notePassedOver(const std::vector<std::string>& paths);
    bool goesOn(std::size_t film) const;
    void join(std::size_t first, std::size_t end,
              const std::function<Film(const FilmSource&)>& probe);
    void requireEnough() const;

    Project project_;
    bool keepsGoing_;
    std::vector<FilmSource> sources_;
    std::vector<Film> films_;
    std::vector<Fault> leftOut_;
    std::vector<std::string> passedOver_;  // in folders
};

}  // namespace tkv::disc
