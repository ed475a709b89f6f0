#include "disc/disc_maker.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <utility>

#include "disc/authoring.h"
#include "disc/disc_error.h"
#include "disc/film_maker.h"
#include "disc/kept_film.h"
#include "disc/lanes.h"
#include "disc/menu_maker.h"
#include "disc/names.h"
#include "disc/output_folder.h"
#include "disc/probe.h"
#include "disc/project_file.h"
#include "disc/report.h"
#include "disc/tools.h"
#include "disc/workshop.h"
#include "graphics/picture_faults.h"
#include "imaging/rescale.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

constexpr PixelSize kPageSize{kPageWidth, kPageHeight};

// A page as a wide display shows it, in square pixels.
constexpr PixelSize kWidePage{960, 540};

// Of the frames of an excerpt, and of what two menus are made of.
constexpr std::int64_t kExcerptBytes = 10 << 20;
constexpr std::int64_t kPageBytes = 200 << 20;

constexpr float kPictureQuality = 0.95F;

// `work`: where an earlier run may have kept what it learnt of them.
std::vector<Film> probedFilms(const Project& project, const std::string& work) {
    std::vector<Film> films(project.films.size());
    sideBySide(films.size(),
               [&](std::size_t i) { films[i] = probeFilmOnce(project.films[i].path, work); });
    return films;
}

std::string stampOf(const std::string& path) {
    const auto stamp = fileStamp(path);
    if (!stamp) throw DiscError(fmt::format("There is no file {}.", path));
    return fmt::format("{} {} {}", path, stamp->bytes, stamp->modifiedNs);
}

void requireSound(const std::string& path) {
    bool hasSound = false;
    Program program;
    program.command = {"ffprobe", "-v", "error", "-select_streams", "a:0"};
    program.command.insert(program.command.end(), {"-show_entries", "stream=codec_name", "-of",
                                                   "csv=p=0", "-i", inputName({path})});
    program.onOutput = [&](std::string_view) { hasSound = true; };
    runTool(std::move(program), fmt::format("{} cannot be heard in the menus", path));
    if (!hasSound)
        throw DiscError(fmt::format("{} holds no sound. Name another file with --music.", path));
}

// One run, from the films to the folder's new disc.
class DiscMaker {
  public:
    DiscMaker(const Options& options, std::vector<Film> films)
        : options_(options),
          project_(options.project),
          progress_(options.isQuiet ? Progress::Style::quiet : Progress::suitableStyle()),
          folder_(options.output),
          films_(std::move(films)) {}

    void run() {
        try {
            make();
        } catch (const Interrupted&) {
            const auto ready = std::ranges::count_if(
                filmNames_, [](const std::string& name) { return fs::exists(name); });
            progress_.say(
                fmt::format("Interrupted. {} of {} films {} ready; the same command goes "
                            "on from there.",
                            ready, project_.films.size(), ready == 1 ? "is" : "are"));
            throw;
        }
    }

  private:
    void make() {
        for (const Film& film : films_)
            keepAnswer(film, workshop_);
        if (!options_.isPreview) countAllFrames();
        plan_ = planDisc(project_, films_);
        pages_ = pagesOf(plan_);
        if (options_.isPreview) {
            makePreviews();
            return;
        }
        for (const std::string& line : planLines(project_, films_, plan_))
            progress_.say(line);
        makePieces();
        author();
        workshop_.removeUnused();
        tell(madeLines(options_, plan_, pages_.size(), bytesIn(folder_.path() + "/disc")));
    }

    void countAllFrames() {
        for (Film& film : films_) {
            const Progress::Task task(
                progress_, fmt::format("Looking through {}", lastComponent(film.path)), 0);
            countFramesOnce(film, workshop_);
        }
    }

    void makePreviews() {
        MenuMaker menus(menuSetting(), workshop_, progress_);
        const std::string pictures = newFolder("menus");
        sideBySide(films_.size(), [&](std::size_t i) {
            const Workshop::Turn turn(workshop_, films_[i].stamp);
            findScenes(pages_, i, films_[i], workshop_);
        });
        for (const PageWork& work : pages_) {
            std::vector<std::string> thumbnails;
            for (const Scene& scene : work.scenes)
                thumbnails.push_back(scene.picture);
            menus.drawPreview(work, thumbnails, fmt::format("{}/{}.jpg", pictures, work.name));
        }
        folder_.put(pictures, "menus");
        tell(previewLines(options_, pages_.size()));
    }

    // The films side by side, and each menu as soon as its films are there.
    void makePieces() {
        FilmMaker maker(project_, films_, plan_, pages_, workshop_, progress_);
        for (std::size_t film = 0; film < films_.size(); ++film)
            filmNames_.push_back(maker.nameOf(film));
        folder_.requireSpace(bytesNeeded());
        progress_.expect(kMenuWeight * static_cast<double>(pages_.size()) +
                         writingWeight(plan_.bytes) * (options_.makesImage ? 2 : 1));
        MenuMaker menus(menuSetting(), workshop_, progress_);
        Lanes lanes(films_.size(), [&](std::size_t film) { return maker.make(film); });
        try {
            sortClips(makeMenus(menus, lanes));
            for (std::size_t film = 0; film < films_.size(); ++film)
                pieces_.films.push_back(lanes.wait(film));
        } catch (const Interrupted&) {
            // Another film's fault may have stopped this one.
            lanes.rethrow();
            throw;
        }
        const std::string jacket = Workshop::unfinished("jacket.jpg");
        menus.drawJacket(plan_.title, jacketLine(project_, plan_), jacketBackground(), jacket);
        folder_.put(jacket, "jacket.jpg");
    }

    // Each menu's film, in the order of the pages.
    std::vector<std::string> makeMenus(MenuMaker& menus, Lanes& lanes) {
        std::vector<std::string> clips(pages_.size());
        if (pages_.empty()) return clips;
        const std::string pictures = newFolder("menus");
        for (const std::size_t page : pagesByLastFilm()) {
            const PageWork& work = pages_[page];
            for (const Excerpt& excerpt : work.page->excerpts)
                lanes.wait(excerpt.film);
            clips[page] = menus.make(work);
            menus.drawPreview(work, work.excerpts, fmt::format("{}/{}.jpg", pictures, work.name));
        }
        menus.finish();
        folder_.put(pictures, "menus");
        return clips;
    }

    void author() {
        for (const Film& film : films_) {
            std::vector<std::string> languages;
            for (const AudioTrack& track : film.audio)
                languages.push_back(track.language);
            languages.resize(std::min(languages.size(), kMostTracks));
            pieces_.soundLanguages.push_back(std::move(languages));
        }
        pieces_.language = project_.labels.language;
        const std::string disc = Workshop::unfinished("disc");
        const std::string image = Workshop::unfinished("disc.iso");
        authorDisc(plan_, pieces_, disc, progress_);
        if (options_.makesImage) makeImage(disc, volumeLabel(plan_.title), image, progress_);
        folder_.put(disc, "disc");
        if (options_.makesImage) {
            folder_.put(image, "disc.iso");
        } else {
            folder_.drop("disc.iso");
        }
    }

    // The pieces, the disc and the image hold the same bytes.
    std::int64_t bytesNeeded() const {
        std::int64_t bytes = plan_.bytes * (options_.makesImage ? 3 : 2);
        for (const PageWork& work : pages_)
            bytes += kExcerptBytes * static_cast<std::int64_t>(work.excerpts.size());
        if (!pages_.empty()) bytes += kPageBytes;
        for (const std::string& name : filmNames_) {
            std::error_code error;
            const auto made = fs::file_size(name, error);
            if (!error) bytes -= static_cast<std::int64_t>(made);
        }
        return bytes;
    }

    std::vector<std::size_t> pagesByLastFilm() const {
        std::vector<std::size_t> order(pages_.size());
        std::iota(order.begin(), order.end(), 0);
        std::ranges::stable_sort(order, {}, [&](std::size_t page) {
            const auto& excerpts = pages_[page].page->excerpts;
            return std::ranges::max(excerpts, {}, &Excerpt::film).film;
        });
        return order;
    }

    // As the plan has the pages: those of the films, then those of each film's chapters.
    void sortClips(const std::vector<std::string>& clips) {
        auto next = clips.begin();
        const auto take = [&](std::size_t count) {
            next += static_cast<std::ptrdiff_t>(count);
            return std::vector(next - static_cast<std::ptrdiff_t>(count), next);
        };
        pieces_.pages = take(plan_.pages.size());
        for (const TitleSet& set : plan_.sets)
            pieces_.chapterPages.push_back(take(set.pages.size()));
    }

    MenuSetting menuSetting() {
        MenuSetting setting;
        setting.standard = plan_.standard;
        setting.rate = plan_.menuRate;
        const bool isGiven = project_.background && project_.background != kNone;
        if (isGiven) setting.background = givenBackground();
        if (project_.music && project_.music != kNone) {
            requireSound(*project_.music);
            setting.sound.input = inputName({*project_.music});
            setting.soundStamp = stampOf(*project_.music);
        }
        if (plan_.pages.empty()) return setting;
        if (!project_.background) setting.background = blurredBackground();
        if (!project_.music && !films_.front().audio.empty()) {
            setting.sound = {inputName(films_.front().sources), excerptOfFirstFilm().from};
            setting.soundStamp = films_.front().stamp;
        }
        return setting;
    }

    // Cut to the shape of a wide display and squeezed into the page, which is shown stretched.
    std::string givenBackground() {
        const std::string& path = *project_.background;
        return workshop_.result(
            Workshop::nameOf("background", ".jpg", {stampOf(path)}), [&](const std::string& made) {
                const std::string cut = made + ".png";
                if (!imgRescale(path, cut, kWidePage.width, kWidePage.height, 0, kFillAndCrop, 1) ||
                    !imgRescale(cut, made, kPageSize.width, kPageSize.height, 0, kStretch,
                                kPictureQuality)) {
                    throw DiscError(fmt::format("{} cannot stand behind the menus: {}.", path,
                                                whyNoPicture(path, std::nullopt)));
                }
            });
    }

    std::string blurredBackground() {
        const std::string scene =
            findScene(films_.front(), excerptOfFirstFilm(), kPageSize, workshop_).picture;
        const double aspect = films_.front().video.aspect;
        return workshop_.result(
            Workshop::nameOf("background", ".jpg", backgroundCommand(scene, aspect, kPageSize, "")),
            [&](const std::string& path) {
                runTool({backgroundCommand(scene, aspect, kPageSize, path), "", "", {}, {}},
                        "The menus' background could not be made");
            });
    }

    std::string jacketBackground() {
        if (project_.background == kNone) return "";
        if (project_.background) return *project_.background;
        return findScene(films_.front(), excerptOfFirstFilm(), kWidePage, workshop_).picture;
    }

    Excerpt excerptOfFirstFilm() const {
        if (!plan_.pages.empty()) return plan_.pages.front().excerpts.front();
        return {0, films_.front().seconds * 0.1, films_.front().seconds};
    }

    static std::string newFolder(const std::string& name) {
        fs::create_directory(Workshop::unfinished(name));
        return Workshop::unfinished(name);
    }

    void tell(const std::vector<std::string>& lines) {
        if (options_.isQuiet) return;
        progress_.clear();
        for (const std::string& line : lines)
            fmt::print("{}\n", printable(line));
    }

    const Options& options_;
    const Project& project_;
    Progress progress_;
    OutputFolder folder_;
    Workshop workshop_;
    std::vector<Film> films_;
    DiscPlan plan_;
    std::vector<std::string> filmNames_;  // in the workshop
    std::vector<PageWork> pages_;
    DiscPieces pieces_;
};

}  // namespace

void writeProjectFile(const Options& options) {
    requirePrograms({"ffprobe"});
    const std::string folder = parentFolder(options.projectFile);
    const std::string text =
        projectFileText(options.project, probedFilms(options.project, ""), folder);
    if (fs::exists(options.projectFile)) {
        throw DiscError(fmt::format("{} is there already. Name another file with --write.",
                                    options.projectFile));
    }
    std::ofstream file(options.projectFile);
    file << text << std::flush;
    if (!file) throw DiscError(fmt::format("{} cannot be written.", options.projectFile));
    if (options.isQuiet) return;
    fmt::print("Written: {0}\nMake the disc with: tkvDvdDisc {0} -o FOLDER\n",
               shellWord(options.projectFile));
}

void makeDisc(const Options& options) {
    requirePrograms({"ffmpeg", "ffprobe", "spumux", "dvdauthor"});
    if (options.makesImage) requirePrograms({"genisoimage"});
    // The jacket's date is in the language of the menus. There is no other thread yet.
    setenv("LC_ALL", options.project.labels.language.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
    // A folder is made only for films that are there.
    DiscMaker(options, probedFilms(options.project, options.output + "/work")).run();
    if (options.cleans) fs::remove_all(options.output + "/work");
}

}  // namespace tkv::disc
