#include "disc/make/film_maker.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

#include "disc/make/film_loudness.h"
#include "disc/make/film_passes.h"
#include "disc/make/film_subtitles.h"
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

// As much time as one pass do two take.
constexpr double kTwoPasses = 1.7;

// A film that comes out larger than planned by more takes what others need.
constexpr double kTolerance = 1.03;

double weightOf(const Conversion& conversion) {
    if (conversion.isCopied) return conversion.seconds * kCopyingWeight;
    return conversion.seconds * kEncodingWeight * (conversion.isExact ? kTwoPasses : 1);
}

Progress::Task taskFor(Progress& progress, std::string_view doing, const DiscFilm& film,
                       double weight) {
    return {progress, fmt::format("{} {}", doing, shortName(film.request)), weight};
}

// What is to be told of a film whenever it goes onto a disc.
std::string damageName(const std::string& film) {
    return Workshop::nameOf("damage", ".txt", {film});
}

// The index of the subtitles that are drawn for a film, once they are made; empty without any.
std::string indexOf(const DiscFilm& film) {
    const std::string folder = subtitlesName(film);
    return folder.empty() ? "" : subtitleIndex(folder);
}

// Whether a copied film's bytes stay what they are: it has navigation packs, and nothing is to be
// added to its streams or left out of them.
bool staysWhole(const DiscFilm& film) {
    const Film& source = film.film;
    if (!source.hasNavigation || source.audio.empty() || source.picksSound) return false;
    const auto& title = source.source.title;
    const bool hasOwn = title && !title->subtitles.empty();
    return hasOwn ? film.conversion.keepsSubtitles : film.subtitles.empty();
}

// Joins the parts of a source: those of a DVD's title are one stream.
void join(const FilmSource& source, const std::string& output, const ProgramStop& stop,
          Progress::Task& task) {
    std::ofstream made(output, std::ios::binary);
    std::string bytes(std::size_t{4} << 20U, '\0');
    std::int64_t done = 0;
    for (const FilePart& part : partsOf(source)) {
        std::ifstream file(part.path, std::ios::binary);
        file.seekg(part.first);
        for (std::int64_t left = part.end - part.first; left > 0;) {
            if (stop.isStopped()) throw Interrupted();
            const auto count =
                std::min<std::int64_t>(left, static_cast<std::int64_t>(bytes.size()));
            if (!file.read(bytes.data(), count)) failOn(part.path, "read");
            if (!made.write(bytes.data(), count)) failOn(output, "written");
            left -= count;
            done += count;
            task.reach(static_cast<double>(done) / static_cast<double>(source.bytes));
        }
    }
    if (!made.flush()) failOn(output, "written");
}

}  // namespace

std::string filmName(const DiscFilm& film) {
    const Conversion& conversion = film.conversion;
    const FilmSource& source = film.film.source;
    if (conversion.isCopied) {
        const std::string_view extension = film.film.hasNavigation ? ".vob" : ".mpg";
        std::vector<std::string> inputs{source.path, source.stamp, "copied"};
        if (!staysWhole(film)) {
            inputs.push_back("in streams " + indexOf(film));
            for (const DiscTrack& track : conversion.tracks)
                inputs.push_back(std::to_string(track.index));
        }
        return Workshop::nameOf("film", extension, inputs);
    }
    EncoderRun run;
    run.videoRate = conversion.videoRate;
    run.subtitles = indexOf(film);
    Arguments inputs = encodingCommand(film.film, conversion, run, "");
    inputs.push_back(source.stamp);
    if (conversion.evensLoudness) inputs.emplace_back("even volume");
    if (conversion.isExact) inputs.emplace_back("two passes");
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
    // They are wanted for the disc's colours, too.
    if (const std::string note = makeSubtitles(film, workshop_); !note.empty())
        progress_.say(note + ".");
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

// A film that stays whole is read where it is, if it is one file; another is put into a stream of
// its own.
void FilmMaker::copy(const DiscFilm& film, const std::string& name) {
    const Film& source = film.film;
    Progress::Task task = taskFor(progress_, "Copying", film, weightOf(film.conversion));
    const std::string made = Workshop::unfinished(name);
    const std::string path = workshop_.path(made);
    if (staysWhole(film) && (source.source.files.size() > 1 || !source.source.parts.empty())) {
        join(source.source, path, workshop_.tools().stop(), task);
    } else if (staysWhole(film)) {
        std::error_code error;
        fs::create_symlink(source.source.files.front(), path, error);
        if (error) fs::copy_file(source.source.files.front(), path);
    } else {
        const int frames = workshop_.tools().encode(
            remuxCommand(source, film.conversion, indexOf(film), made), failing(film, "copied"),
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
    run.subtitles = indexOf(film);
    std::erase_if(wanted,
                  [&](const WantedExcerpt& excerpt) { return workshop_.has(excerpt.name); });
    ExcerptBatch excerpts(std::move(wanted), name, workshop_);
    run.excerpts = excerpts.outputs();
    const std::string made = Workshop::unfinished(name);
    FilmPasses passes(film, made + "-pass", workshop_, task);
    const bool isExact = conversion.isExact || run.videoRate < conversion.bestVideoRate();
    const bool isTwice = isExact && passes.encodeTwice(run, made);
    if (!isTwice) passes.encodeOnce(run, made);
    if (const std::string& sentence = passes.damage(); !sentence.empty()) {
        const std::string damaged = damageName(name);
        writeText(workshop_.path(Workshop::unfinished(damaged)), sentence);
        workshop_.finish(damaged);
    }
    const int rate = fittingRate(film, run.videoRate, bytesOf(made));
    if (rate < run.videoRate && isTwice == isExact) {
        run.videoRate = rate;
        run.excerpts.clear();
        const std::string again = made + "-again.mpg";
        if (passes.encodeTwice(run, again)) fs::rename(workshop_.path(again), workshop_.path(made));
    }
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
    workshop_.tools().encode(interleaveCommand(encoded, film.conversion, indexOf(film), output),
                             failing(film, "put together"));
    fs::remove(workshop_.path(encoded));
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
            excerptCommand(name, film.film, film.conversion, range, wanted.shape.picture(),
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

// The rate for a film that came out `bytes` large at `rate`: a lower one if others lack the room.
int FilmMaker::fittingRate(const DiscFilm& film, int rate, std::int64_t bytes) {
    const std::lock_guard lock(mutex_);
    DiscLoad::Film& load = load_.films[film.number];
    const auto planned = static_cast<double>(std::exchange(load.bytes, bytes));
    const auto made = static_cast<double>(bytes);
    double room = made - static_cast<double>(shareRates(load_, plan_.size).missing);
    if (rate < film.conversion.bestVideoRate() && made > kTolerance * planned)
        room = std::min(room, planned);
    if (room >= made) return rate;
    const int whole = rate + load.soundRate;
    const auto fitting = static_cast<int>(whole * room / made) - load.soundRate;
    return std::clamp(fitting, kLowestVideoRate, rate);
}

void FilmMaker::noteMade(const DiscFilm& film, const std::string& name) {
    const std::lock_guard lock(mutex_);
    load_.films[film.number].bytes = bytesOf(name);
}

std::int64_t FilmMaker::bytesOf(const std::string& name) const {
    return static_cast<std::int64_t>(fs::file_size(workshop_.path(name)));
}

}  // namespace tkv::disc
