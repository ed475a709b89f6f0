#include "disc/film_maker.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "disc/disc_error.h"
#include "disc/names.h"
#include "disc/tools.h"
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

}  // namespace

FilmMaker::FilmMaker(const Project& project, const std::vector<Film>& films, const DiscPlan& plan,
                     std::vector<PageWork>& pages, Workshop& workshop, Progress& progress)
    : project_(project),
      films_(films),
      plan_(plan),
      pages_(pages),
      workshop_(workshop),
      progress_(progress),
      load_(loadOf(plan, films)) {
    for (const TitleSet& set : plan.sets)
        progress.expect(set.seconds * (set.isCopied ? kCopyingWeight : kEncodingWeight));
}

std::string FilmMaker::make(std::size_t number) {
    const TitleSet& set = plan_.sets[number];
    const Workshop::Turn turn(workshop_, films_[number].stamp);
    const std::vector<WantedExcerpt> wanted = wantedOf(number);
    std::string name = nameOf(number);
    const double weight = set.seconds * (set.isCopied ? kCopyingWeight : kEncodingWeight);
    if (workshop_.has(name)) {
        progress_.expect(-weight);
    } else if (set.isCopied) {
        copy(number, name);
    } else {
        encode(number, name, wanted);
    }
    noteMade(number, name);
    for (const WantedExcerpt& excerpt : wanted) {
        if (!workshop_.has(excerpt.name)) cut(number, name, excerpt);
    }
    return name;
}

std::string FilmMaker::nameOf(std::size_t number) const {
    const Film& film = films_[number];
    if (plan_.sets[number].isCopied) {
        const std::string_view extension = film.hasNavigation ? ".vob" : ".mpg";
        return Workshop::nameOf("film", extension, {film.path, film.stamp, "copied"});
    }
    // What is cut from it, its loudness and what the other films leave it do not make it another.
    FilmEncoding encoding = encodingOf(number);
    std::vector<std::string> inputs = encodingCommand(film, encoding, Pass::only, "", "");
    inputs.push_back(film.stamp);
    if (project_.evenVolume) inputs.emplace_back("even volume");
    return Workshop::nameOf("film", ".mpg", inputs);
}

std::vector<WantedExcerpt> FilmMaker::wantedOf(std::size_t number) {
    const Film& film = films_[number];
    const TitleSet& set = plan_.sets[number];
    const StandardFacts facts = factsOf(plan_.standard);
    const int frames = static_cast<int>(set.seconds * facts.frameRate.perSecond());
    const std::string filmName = nameOf(number);
    findScenes(pages_, number, film, workshop_);
    std::vector<WantedExcerpt> all;
    for (PageWork& work : pages_) {
        for (std::size_t i = 0; i < work.page->excerpts.size(); ++i) {
            if (work.page->excerpts[i].film != number) continue;
            const double start = work.scenes[i].seconds / set.speed * facts.frameRate.perSecond();
            WantedExcerpt wanted;
            wanted.size = work.thumbnailSize;
            wanted.range.first =
                std::clamp(static_cast<int>(std::round(start)), 0, std::max(0, frames - 1));
            wanted.range.count =
                std::max(1, std::min(facts.menuFrames, frames - wanted.range.first));
            wanted.name = Workshop::nameOf(
                "excerpt", "",
                {filmName, fmt::format("{} {} {} {}", wanted.range.first, wanted.range.count,
                                       wanted.size.width, wanted.size.height)});
            work.excerpts[i] = wanted.name;
            all.push_back(std::move(wanted));
        }
    }
    return all;
}

FilmEncoding FilmMaker::encodingOf(std::size_t number) const {
    const TitleSet& set = plan_.sets[number];
    FilmEncoding encoding;
    encoding.standard = plan_.standard;
    encoding.videoRate = set.videoRate;
    encoding.topVideoRate = kTopRate - soundRate(films_[number]);
    encoding.keyframesAt = set.chapters;
    return encoding;
}

// A film with navigation packs is read where it is; another is put into a stream of its own.
void FilmMaker::copy(std::size_t number, const std::string& name) {
    const Film& film = films_[number];
    Progress::Task task(progress_, fmt::format("Copying {}", lastComponent(film.path)),
                        plan_.sets[number].seconds * kCopyingWeight);
    const std::string path = Workshop::unfinished(name);
    if (film.hasNavigation && film.sources.size() == 1 && !film.audio.empty()) {
        std::error_code error;
        fs::create_symlink(film.sources.front(), path, error);
        if (error) fs::copy_file(film.sources.front(), path);
    } else {
        const int frames =
            runEncoder(remuxCommand(film, path), fmt::format("{} could not be copied", film.path),
                       [&](double seconds) { task.reach(seconds / film.seconds); });
        expectFrames(number, frames);
    }
    workshop_.finish(name);
}

void FilmMaker::encode(std::size_t number, const std::string& name,
                       std::vector<WantedExcerpt> wanted) {
    const Film& film = films_[number];
    const TitleSet& set = plan_.sets[number];
    const std::string title = lastComponent(film.path);
    Progress::Task task(progress_, fmt::format("Encoding {}", title),
                        set.seconds * kEncodingWeight);

    FilmEncoding encoding = encodingOf(number);
    encoding.videoRate = rateNow(number);
    if (project_.evenVolume && !film.audio.empty()) {
        encoding.gain = gainFromAnswer(
            runTool({loudnessCommand(film), "", "", {}, {}},
                    fmt::format("The loudness of {} could not be measured", film.path)));
    }

    std::erase_if(wanted,
                  [&](const WantedExcerpt& excerpt) { return workshop_.has(excerpt.name); });
    ExcerptBatch excerpts(std::move(wanted), name);
    encoding.excerpts = excerpts.outputs();
    const std::string path = Workshop::unfinished(name);
    const int frames = runEncoder(encodingCommand(film, encoding, Pass::only, "", path),
                                  fmt::format("{} could not be encoded", film.path),
                                  [&](double seconds) { task.reach(seconds / set.seconds); });
    expectFrames(number, frames);
    encodeAgain(number, encoding, path);
    interleave(film, path);

    excerpts.handOut(workshop_);
    workshop_.finish(name);
}

void FilmMaker::interleave(const Film& film, const std::string& path) {
    const auto first = film.audio.begin();
    const auto last = first + std::min<std::ptrdiff_t>(std::ssize(film.audio), kMostTracks);
    if (first != last && std::all_of(first, last, [](const auto& track) { return track.isWhole; }))
        return;
    const std::string encoded = path + "-encoded.mpg";
    fs::rename(path, encoded);
    runEncoder(interleaveCommand(encoded, path),
               fmt::format("{} could not be put together", film.path));
    fs::remove(encoded);
}

// In two passes the encoder keeps to the rate, which hard material makes it miss in one.
void FilmMaker::encodeAgain(std::size_t number, FilmEncoding encoding, const std::string& output) {
    const Film& film = films_[number];
    const TitleSet& set = plan_.sets[number];
    const auto planned = filmBytes(set.seconds, encoding.videoRate + soundRate(film));
    const bool isAtBest = encoding.videoRate >= std::min(kBestVideoRate, encoding.topVideoRate);
    const auto bytes = static_cast<double>(fs::file_size(output));
    if (isAtBest || bytes <= kTolerance * static_cast<double>(planned)) return;
    encoding.excerpts.clear();
    const std::string passLog = output + "-pass";
    int frames = 0;
    for (const Pass pass : {Pass::first, Pass::second}) {
        frames = runEncoder(encodingCommand(film, encoding, pass, passLog, output),
                            fmt::format("{} could not be encoded", film.path));
    }
    expectFrames(number, frames);
}

void FilmMaker::expectFrames(std::size_t number, int written) const {
    const Film& film = films_[number];
    const TitleSet& set = plan_.sets[number];
    const double rate = factsOf(plan_.standard).frameRate.perSecond();
    const double seconds = written / rate;
    if (seconds >= set.seconds * 0.99 - 0.5) return;
    throw DiscError(fmt::format("Only {} of the {} of {} could be read. Is the file damaged?",
                                timeText(seconds), timeText(set.seconds), film.path));
}

void FilmMaker::cut(std::size_t number, const std::string& name, const WantedExcerpt& wanted) {
    const Film& film = films_[number];
    const double rate = factsOf(plan_.standard).frameRate.perSecond();
    progress_.expect(kCuttingWeight);
    const Progress::Task task(progress_,
                              fmt::format("Cutting an excerpt of {}", lastComponent(film.path)),
                              kCuttingWeight);
    const std::string folder = Workshop::unfinished(wanted.name);
    fs::create_directory(folder);
    runEncoder(
        excerptCommand({name}, plan_.sets[number].isWide, plan_.standard, wanted.range.first / rate,
                       wanted.range.count, wanted.size, joinPath(folder, "%06d.jpg")),
        fmt::format("No excerpt of {} could be cut", film.path));
    if (fs::is_empty(folder))
        throw DiscError(fmt::format("No excerpt of {} could be cut.", film.path));
    workshop_.finish(wanted.name);
}

// What is left of the disc is shared anew with every film that begins.
int FilmMaker::rateNow(std::size_t number) {
    const std::lock_guard lock(mutex_);
    const int rate = shareRates(load_, project_.size).video[number];
    DiscLoad::Film& film = load_.films[number];
    film.bytes = filmBytes(film.seconds, rate + film.soundRate);
    return rate;
}

void FilmMaker::noteMade(std::size_t number, const std::string& name) {
    const std::lock_guard lock(mutex_);
    load_.films[number].bytes = static_cast<std::int64_t>(fs::file_size(name));
}

}  // namespace tkv::disc
