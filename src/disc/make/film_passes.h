#pragma once

#include <string>

#include "disc/make/film_encoding.h"
#include "disc/plan/plan.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// What is said where something could not be done with a film: "… could not be encoded".
Failure failing(const DiscFilm& film, std::string_view what);

/// Throws DiscError when of a disc's film much less is written than planned.
void expectFrames(const DiscFilm& film, int written);

/// Encodes one film for a disc, as often as it takes. Outputs are names in the workshop.
class FilmPasses {
  public:
    /// All must outlive it. `log`: the name of what the first of two passes writes.
    FilmPasses(const DiscFilm& film, std::string log, const Workshop& workshop,
               Progress::Task& task);

    /// In one pass, which misses its rate where the film is hard or short.
    void encodeOnce(EncoderRun run, const std::string& output);

    /// In two, which keep to it; the first is not repeated. False when ffmpeg gives the second up,
    /// as it does when the rate is too low for what is next to noise.
    bool encodeTwice(EncoderRun run, const std::string& output);

    /// A sentence on the places that could not be decoded; mostly empty.
    const std::string& damage() const { return damage_; }

  private:
    void encode(const EncoderRun& run, const std::string& output, double from);

    const DiscFilm& film_;
    std::string log_;
    const Workshop& workshop_;
    Progress::Task& task_;
    bool hasLog_ = false;
    std::string damage_;
};

}  // namespace tkv::disc
