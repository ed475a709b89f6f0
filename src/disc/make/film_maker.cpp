#include "disc/make/film_maker.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "disc/make/film_damage.h"
#include "disc/make/film_loudness.h"
#include "disc/make/pulldown.h"
#include "disc/make/scenes.h"
#include "disc/project/names.h"
#include "disc/run/fault.h"
#include "disc/run/text_file.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Seconds of work for a second of film, and for one excerpt of its own.
constexpr double kEncodingWeight = 0.15;
constexpr double kCopyingWeight = 0.01;
constexpr double kCuttingWeight = 1;

// A film that comes out larger than planned by more is encoded once more, if there is no room.
constexpr double kTolerance = 1.03;

double weightOf(const Conversion& conversion) {
    return conversion.seconds * (conversion.isCopied ? kCopyingWeight : kEncodingWeight);
}

// What is said where something could not be done with a film: "… could not be encoded".
Failure failing(const DiscFilm& film, std::string_view what) {
    return {film.request.path, fmt::format("{} could not be {}", film.request.path, what), ""};
}

Progress::Task taskFor(Progress& progress, std::string_view doing, const DiscFilm& film,
                       double weight) {
    return {progress, fmt::format("{} {}", doing, lastComponent(film.request.path)), weight};
}

// What is to be told of a film whenever it goes onto a disc.
std::string damageName(const std::string& film) {
    return Workshop::nameOf("damage", ".txt", {film});
}

void expectFrames(const DiscFilm& film, int written) {
    const Conversion& conversion = film.conversion;
    const double seconds = written / conversion.frameRate().perSecond();
    if (seconds >= conversion.seconds * 0.99 - 0.5) return;
    throw DiscError(fmt::format("Only {} of the {} of {} could be read. Is the file damaged?",
                                timeText(seconds), timeText(conversion.seconds), film.request.path),
                    film.request.path);
}

}  // namespace

std::string filmName(const DiscFilm& film) {
    const Conversion& conversion = film.conversion;
    const FilmSource& source = film.film.source;
    if (conversion.isCopied) {
        const std::string_view extension = film.film.hasNavigation ? ".vob" : ".mpg";
        return Workshop::nameOf("film", extension, {source.path, source.stamp, "copied"});
    }
    EncoderRun run;
    run.videoRate = conversion.videoRate;
    Arguments inputs = encodingCommand(film.film, conversion, run, "");
    inputs.push_back(source.stamp);
    if (conversion.evensLoudness) inputs.emplace_back("even volume");
    return Workshop::nameOf("film", ".mpg", inputs);
}

FilmMaker::FilmMaker(const DiscPlan& plan, Workshop& workshop, Progress& progress)
    : plan_(plan), workshop_(workshop), progress_(progress), load_(loadOf(plan)) {
    for (const DiscFilm& film : plan.films)
        progress.expect(weightOf(film.conversion));
}

std::vector<std::string> FilmMaker::make(const DiscFilm& film) {
    const Workshop::Lock lock(workshop_, film.film.source.stamp);
    const std::string name = filmName(film);
    const std::vector<WantedExcerpt> wanted =
        wantedExcerpts(film, name, findScenes(film, workshop_));
    if (workshop_.has(name)) {
        progress_.expect(-weightOf(film.conversion));
    } else if (film.conversion.isCopied) {
        copy(film, name);
    } else {
        encode(film, name, wanted);
    }
    if (workshop_.has(damageName(name))) progress_.say(readText(workshop_.path(damageName(name))));
    noteMade(film, name);
    std::vector<std::string> names;
    for (const WantedExcerpt& excerpt : wanted) {
        if (!workshop_.has(excerpt.name)) cut(film, name, excerpt);
        names.push_back(excerpt.name);
    }
    return names;
}

// A film with navigation packs is read where it is; another is put into a stream of its own.
void FilmMaker::copy(const DiscFilm& film, const std::string& name) {
    const Film& source = film.film;
    Progress::Task task = taskFor(progress_, "Copying", film, weightOf(film.conversion));
    const std::string made = Workshop::unfinished(name);
    const std::string path = workshop_.path(made);
    if (source.hasNavigation && source.source.files.size() == 1 && !source.audio.empty()) {
        std::error_code error;
        fs::create_symlink(source.source.files.front(), path, error);
        if (error) fs::copy_file(source.source.files.front(), path);
    } else {
        const int frames = workshop_.tools().encode(
            remuxCommand(source, film.conversion, made), failing(film, "copied"),
            [&](double seconds) { task.reach(seconds / source.seconds); });
        expectFrames(film, frames);
    }
    workshop_.finish(name);
}

void FilmMaker::encode(const DiscFilm& film, const std::string& name,
                       std::vector<WantedExcerpt> wanted) {
    const Conversion& conversion = film.conversion;
    Progress::Task task = taskFor(progress_, "Encoding", film, weightOf(conversion));
    EncoderRun run;
    run.videoRate = rateNow(film);
    run.gain = gainOf(film);
    std::erase_if(wanted,
                  [&](const WantedExcerpt& excerpt) { return workshop_.has(excerpt.name); });
    ExcerptBatch excerpts(std::move(wanted), name, workshop_);
    run.excerpts = excerpts.outputs();
    FilmDamage damage(film.film.lost > 0);
    const std::string made = Workshop::unfinished(name);
    const int frames = workshop_.tools().encode(
        encodingCommand(film.film, conversion, run, made), failing(film, "encoded"),
        [&](double seconds) {
            task.reach(seconds / conversion.seconds);
            damage.reach(seconds);
        },
        Descriptor(-1), [&](std::string_view line) { damage.take(line); });
    expectFrames(film, frames);
    if (const std::string sentence = damage.sentence(film.request.path); !sentence.empty()) {
        const std::string damaged = damageName(name);
        writeText(workshop_.path(Workshop::unfinished(damaged)), sentence);
        workshop_.finish(damaged);
    }
    encodeAgain(film, std::move(run), made);
    interleave(film, made);
    // Whatever multiplexes it anew would give it other times.
    if (conversion.isPulledDown) pullDown(workshop_.path(made), workshop_.tools().stop());
    workshop_.finish(name);
    excerpts.handOut();
}

double FilmMaker::gainOf(const DiscFilm& film) const {
    if (!film.conversion.evensLoudness || film.film.audio.empty()) return 0;
    const std::string& path = film.request.path;
    return gainFromAnswer(workshop_.tools().run(
        loudnessCommand(film.film),
        {path, fmt::format("The loudness of {} could not be measured", path), ""}));
}

void FilmMaker::interleave(const DiscFilm& film, const std::string& output) const {
    if (film.conversion.isSoundWhole) return;
    const std::string encoded = output + "-encoded.mpg";
    fs::rename(workshop_.path(output), workshop_.path(encoded));
    workshop_.tools().encode(interleaveCommand(encoded, film.conversion, output),
                             failing(film, "put together"));
    fs::remove(workshop_.path(encoded));
}

// In two passes the encoder keeps to the rate, which hard material makes it miss in one.
void FilmMaker::encodeAgain(const DiscFilm& film, EncoderRun run, const std::string& output) {
    const Conversion& conversion = film.conversion;
    const auto planned = filmBytes(conversion.seconds, run.videoRate + conversion.soundRate);
    const bool isAtBest = run.videoRate >= std::min(kBestVideoRate, conversion.topVideoRate);
    const auto bytes = static_cast<double>(fs::file_size(workshop_.path(output)));
    if (isAtBest || bytes <= kTolerance * static_cast<double>(planned)) return;
    run.excerpts.clear();
    run.passLog = output + "-pass";
    const std::string again = output + "-again.mpg";
    try {
        int frames = 0;
        for (const Pass pass : {Pass::first, Pass::second}) {
            run.pass = pass;
            frames = workshop_.tools().encode(encodingCommand(film.film, conversion, run, again),
                                              failing(film, "encoded"));
        }
        expectFrames(film, frames);
    } catch (const DiscError&) {
        // ffmpeg gives a second pass up when the rate is too low for what is next to noise. The
        // first result is whole.
        return;
    }
    fs::rename(workshop_.path(again), workshop_.path(output));
}

void FilmMaker::cut(const DiscFilm& film, const std::string& name, const WantedExcerpt& wanted) {
    const std::string& path = film.request.path;
    progress_.expect(kCuttingWeight);
    const Progress::Task task = taskFor(progress_, "Cutting an excerpt of", film, kCuttingWeight);
    const std::string why = fmt::format("No excerpt of {} could be cut", path);
    std::vector<Pictures> parts;
    for (const FrameRange& range : wanted.parts) {
        const std::string folder =
            workshop_.newFolder(fmt::format("{}-{}", wanted.name, parts.size()));
        workshop_.tools().encode(
            excerptCommand(name, film.conversion, range, wanted.shape.picture(),
                           joinPath(folder, kFramePattern)),
            {path, why, ""});
        parts.push_back(picturesIn(folder, 0, range.count, workshop_));
        if (parts.back().empty()) throw DiscError(why + ".", path);
    }
    writeExcerpt(parts, wanted.shape, wanted.lead, workshop_.newFolder(wanted.name), workshop_);
    workshop_.finish(wanted.name);
    for (std::size_t i = 0; i < parts.size(); ++i)
        fs::remove_all(workshop_.path(Workshop::unfinished(fmt::format("{}-{}", wanted.name, i))));
}

// What is left of the disc is shared anew with every film that begins.
int FilmMaker::rateNow(const DiscFilm& film) {
    const std::lock_guard lock(mutex_);
    const int rate = shareRates(load_, plan_.size).video[film.number];
    DiscLoad::Film& load = load_.films[film.number];
    load.bytes = filmBytes(load.seconds, rate + load.soundRate);
    return rate;
}

void FilmMaker::noteMade(const DiscFilm& film, const std::string& name) {
    const std::lock_guard lock(mutex_);
    load_.films[film.number].bytes = static_cast<std::int64_t>(fs::file_size(workshop_.path(name)));
}

}  // namespace tkv::disc
