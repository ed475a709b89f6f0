#include "disc/make/film_passes.h"

#include <fmt/format.h>

#include <utility>

#include "disc/make/film_damage.h"
#include "disc/make/slide_feed.h"
#include "disc/project/names.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace {

// Of the time that two passes take.
constexpr double kFirstPart = 0.45;

}  // namespace

Failure failing(const DiscFilm& film, std::string_view what) {
    return {film.request.path, fmt::format("{} could not be {}", film.request.path, what), ""};
}

void expectFrames(const DiscFilm& film, int written) {
    const Conversion& conversion = film.conversion;
    const double seconds = written / conversion.frameRate().perSecond();
    if (seconds >= conversion.seconds * 0.99 - 0.5) return;
    throw DiscError(fmt::format("Only {} of the {} of {} could be read. Is the file damaged?",
                                timeText(seconds), timeText(conversion.seconds), film.request.path),
                    film.request.path);
}

FilmPasses::FilmPasses(const DiscFilm& film, std::string log, const Workshop& workshop,
                       Progress::Task& task)
    : film_(film), log_(std::move(log)), workshop_(workshop), task_(task) {}

void FilmPasses::encodeOnce(EncoderRun run, const std::string& output) {
    run.pass = Pass::only;
    encode(run, output, 0);
}

bool FilmPasses::encodeTwice(EncoderRun run, const std::string& output) {
    run.passLog = log_;
    if (!hasLog_) {
        run.pass = Pass::first;
        encode(run, output, 0);
        hasLog_ = true;
    }
    run.pass = Pass::second;
    try {
        encode(run, output, kFirstPart);
    } catch (const DiscError&) {
        return false;
    }
    return true;
}

void FilmPasses::encode(const EncoderRun& run, const std::string& output, double from) {
    const double seconds = film_.conversion.seconds;
    const double part = run.pass == Pass::first ? kFirstPart : 1 - from;
    FilmDamage damage(film_.film.lost > 0);
    const int frames = encodeFilm(
        film_, wholeOf(film_), workshop_.tools(),
        encodingCommand(film_.film, film_.conversion, run, output), failing(film_, "encoded"),
        [&](double written) {
            task_.reach(from + part * written / seconds);
            damage.reach(written);
        },
        [&](std::string_view line) { damage.take(line); });
    expectFrames(film_, frames);
    damage_ = damage.sentence(film_.request.path);
}

}  // namespace tkv::disc
