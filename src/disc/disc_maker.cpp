#include "disc/disc_maker.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <utility>

#include "disc/author/authoring.h"
#include "disc/author/disc_check.h"
#include "disc/author/layer_break.h"
#include "disc/author/output_folder.h"
#include "disc/burn/burning.h"
#include "disc/burn/drive.h"
#include "disc/disc_planner.h"
#include "disc/film/ffprobe.h"
#include "disc/film/film_list.h"
#include "disc/make/cover_pictures.h"
#include "disc/make/film_maker.h"
#include "disc/make/film_subtitles.h"
#include "disc/make/menu_maker.h"
#include "disc/make/missing_letters.h"
#include "disc/make/needed_space.h"
#include "disc/make/scenes.h"
#include "disc/plan/report.h"
#include "disc/project/names.h"
#include "disc/run/parallel_tasks.h"
#include "disc/run/text_file.h"
#include "disc/run/workshop.h"
#include "graphics/sheet.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

constexpr double kDrawingWeight = 0.5;  // seconds of work for a page's picture

// A run replaces nothing that it is made of.
void requireNothingLost(const Options& options, const FilmList& films) {
    for (const FilmSource& source : films.sources()) {
        for (const std::string& file : source.files)
            requireOutside(options.output, file);
    }
    for (const std::optional<std::string>& path :
         {options.project.background, options.project.music}) {
        if (path && path != kNone) requireOutside(options.output, *path);
    }
}

FilmList safeFilms(const Options& options, ProgramStop& stop) {
    FilmList films(options.project, options.output, options.keepsGoing, stop);
    requireNothingLost(options, films);
    return films;
}

using Excerpts = std::vector<std::vector<std::string>>;  // names, of each film

// Of the page's thumbnails. `excerpts`: names for those of all films.
std::vector<std::string> thumbnailsOf(const MenuPage& page, const Excerpts& excerpts) {
    std::vector<std::string> names;
    for (const Thumbnail& thumbnail : page.thumbnails)
        names.push_back(excerpts[thumbnail.film][thumbnail.excerpt]);
    return names;
}

std::size_t lastFilmOf(const MenuPage& page) {
    return std::ranges::max(page.thumbnails, {}, &Thumbnail::film).film;
}

// The steps of one run, from the films to the folder's new disc.
class DiscMaker {
  public:
    DiscMaker(const Options& options, FilmList films, ProgressReceiver& receiver, ProgramStop& stop)
        : options_(options),
          stop_(stop),
          progress_(receiver),
          folder_(options.output),
          workshop_(folder_.workPath(), stop,
                    {options.verifies, [this](std::string_view line) { progress_.say(line); }}),
          planner_(options, std::move(films), workshop_, progress_, stop) {}

    /// Returns what is wrong with the films that were left out.
    std::vector<Fault> run() {
        try {
            make();
            if (options_.cleans) workshop_.removeAll();
            return planner_.films().leftOut();
        } catch (const Interrupted&) {
            const auto ready = std::ranges::count_if(pieces_.films, [&](const std::string& name) {
                return fs::exists(workshop_.path(name));
            });
            progress_.say(
                fmt::format("Interrupted. {} of {} films {} ready; the same command goes "
                            "on from there.",
                            ready, planner_.films().sources().size(), ready == 1 ? "is" : "are"));
            throw;
        } catch (const DiscError&) {
            folder_.requireInPlace();  // Whatever failed, did so for that.
            throw;
        }
    }

  private:
    void make() {
        if (options_.burns) lookAtDrive();
        requireSettings();
        planner_.plan();
        if (options_.burns) requireMedium(plan_.bytes);
        planner_.lookAtFilms();
        if (!options_.isPreview && isSharedOut(plan_)) planner_.shareByHardness();
        for (const std::string& line : planLines(plan_))
            progress_.say(line);
        for (const std::string& line : missingLetterLines(plan_, labels()))
            progress_.say(line);
        if (options_.isPreview) {
            makePreviews();
            tell(previewLines(options_, plan_));
            return;
        }
        progress_.expect(kMenuWeight * static_cast<double>(plan_.pages.size()) +
                         writingWeight(plan_.bytes) * (options_.makesImage ? 2 : 1) +
                         checkingWeight(plan_.bytes) +
                         (options_.burns ? burningWeight(plan_.bytes) : 0));
        while (!makePieces()) {
        }
        author();
        workshop_.removeUnused();
        made_.bytes = bytesIn(folder_.path() + "/disc");
        if (options_.burns) {
            // Beside the workshop, where its programs run.
            burn({drive_, options_.erases, "../disc.iso", made_.firstLayer}, workshop_, progress_);
            made_.drive = drive_.address();
        }
        tell(madeLines(options_, plan_, made_));
    }

    // What stands in it may be another disc by the time that this one is made, and is looked at
    // again then.
    void lookAtDrive() {
        drive_ = findDrive(options_.drive);
        requireOutside(options_.output, drive_.path);
        const Progress::Task task(progress_, "Looking at " + drive_.address(), 0);
        medium_ = lookAt(drive_, options_.erases, workshop_.tools());
        requireMedium(0);
    }

    void requireMedium(std::int64_t bytes) const {
        const std::string why = whyNotBurnable(drive_, medium_, bytes, options_.erases);
        if (!why.empty()) throw DiscError(why, "--burn");
        if (medium_.isDualLayer() && bytes > capacityOf(DiscSize::dvd5))
            requirePrograms({"growisofs"});
    }

    // What the person gives besides films is looked at before them.
    void requireSettings() {
        const std::optional<std::string>& music = options_.project.music;
        if (music && music != kNone) requireSound(*music, workshop_.tools());
        const std::optional<std::string>& background = options_.project.background;
        if (background && background != kNone) cutBackground(*background, workshop_);
    }

    void makePreviews() {
        MenuMaker menus = menuMaker();
        const std::string pictures = workshop_.newFolder("menus");
        Excerpts stills(plan_.films.size());
        sideBySide(stills.size(), stop_, [&](std::size_t number) {
            const DiscFilm& film = plan_.films[number];
            const Workshop::Lock lock(workshop_, film.film.source.stamp);
            stills[number] = stillExcerpts(film, findScenes(film, workshop_), workshop_);
        });
        progress_.expect(kDrawingWeight * static_cast<double>(plan_.pages.size()));
        for (const MenuPage& page : plan_.pages) {
            const Progress::Task task(progress_, "Drawing " + page.name, kDrawingWeight);
            menus.drawPreview(page, thumbnailsOf(page, stills), pictureOf(page, pictures));
        }
        folder_.put(pictures, "menus");
    }

    // The films side by side, and each menu as soon as its films are there. False when some of them
    // could not be made: they are not in the plan any more.
    bool makePieces() {
        pieces_ = {};
        for (const DiscFilm& film : plan_.films) {
            pieces_.films.push_back(filmName(film));
            pieces_.palettes.push_back(subtitlePalette(film, workshop_));
        }
        folder_.requireSpace(neededSpace(plan_, pieces_.films, options_.makesImage, workshop_));
        FilmMaker maker(plan_, workshop_, progress_);
        MenuMaker menus = menuMaker();
        Excerpts excerpts(plan_.films.size());
        std::vector<std::optional<Fault>> faults(plan_.films.size());
        ParallelTasks films(plan_.films.size(), stop_, [&](std::size_t film) {
            const auto make = [&] { excerpts[film] = maker.make(plan_.films[film]); };
            if (!options_.keepsGoing) return make();
            faults[film] = faultOf(make);
        });
        try {
            makeMenus(menus, films, faults, excerpts);
            for (std::size_t film = 0; film < plan_.films.size(); ++film)
                films.wait(film);
        } catch (const Interrupted&) {
            // Another film's fault may have stopped this one.
            films.rethrow();
            throw;
        }
        planner_.leaveOut(faults);
        if (plan_.films.size() < faults.size()) return false;

        const std::string jacket = Workshop::unfinished("jacket.jpg");
        menus.drawJacket(plan_.title, jacketLine(plan_, labels().minutes),
                         makeJacketPicture(planner_.setting(), plan_, workshop_), jacket);
        folder_.put(jacket, "jacket.jpg");
        makeCover();
        return true;
    }

    void makeCover() {
        const Progress::Task task(progress_, "Drawing the cover", 0);
        const std::string cover = Workshop::unfinished("cover.pdf");
        const auto pdf = sheetPdf(
            coverSheet(plan_, labels(),
                       makeCoverPictures(planner_.setting(), plan_, options_.paper, workshop_),
                       options_.paper));
        made_.hasCover = pdf.has_value();
        if (!pdf) {
            folder_.drop("cover.pdf");
            progress_.say("There is no cover.pdf: it could not be drawn.");
            return;
        }
        const std::string path = workshop_.path(cover);
        if (!writeFile(path, *pdf)) failOn(path, "written");
        folder_.put(cover, "cover.pdf");
    }

    void makeMenus(MenuMaker& menus, ParallelTasks& films,
                   const std::vector<std::optional<Fault>>& faults, const Excerpts& excerpts) {
        if (plan_.pages.empty()) return;
        pieces_.clips.resize(plan_.pages.size());
        const std::string pictures = workshop_.newFolder("menus");
        for (const std::size_t number : pagesByLastFilm()) {
            const MenuPage& page = plan_.pages[number];
            for (const Thumbnail& thumbnail : page.thumbnails)
                films.wait(thumbnail.film);
            const auto isFaulty = [&](const Thumbnail& each) {
                return faults[each.film].has_value();
            };
            if (std::ranges::any_of(page.thumbnails, isFaulty)) continue;
            const std::vector<std::string> thumbnails = thumbnailsOf(page, excerpts);
            pieces_.clips[number] = menus.make(page, thumbnails);
            menus.drawPreview(page, thumbnails, pictureOf(page, pictures));
        }
        menus.finish();
        folder_.put(pictures, "menus");
    }

    void author() {
        const std::string disc = Workshop::unfinished("disc");
        const std::string image = Workshop::unfinished("disc.iso");
        authorDisc(plan_, pieces_, disc, workshop_, progress_);
        made_.firstLayer = setLayerBreak(disc, workshop_);
        checkDisc(plan_, disc, folder_, workshop_, progress_);
        if (options_.makesImage)
            makeImage(disc, volumeLabel(plan_.title), image, workshop_, progress_);
        folder_.put(disc, "disc");
        if (options_.makesImage) {
            folder_.put(image, "disc.iso");
        } else {
            folder_.drop("disc.iso");
        }
    }

    MenuMaker menuMaker() {
        const bool hasBackground =
            !plan_.pages.empty() || planner_.setting().background == BackgroundKind::picture;
        return {planner_.setting(),
                hasBackground ? makeBackground(planner_.setting(), plan_, workshop_) : "",
                workshop_, progress_};
    }

    static std::string pictureOf(const MenuPage& page, const std::string& folder) {
        return fmt::format("{}/{}.jpg", folder, page.name);
    }

    std::vector<std::size_t> pagesByLastFilm() const {
        std::vector<std::size_t> order(plan_.pages.size());
        std::iota(order.begin(), order.end(), 0);
        std::ranges::stable_sort(order, {},
                                 [&](std::size_t page) { return lastFilmOf(plan_.pages[page]); });
        return order;
    }

    void tell(const std::vector<std::string>& lines) {
        for (const std::string& line : lines)
            progress_.tellResult(line);
    }

    const Labels& labels() const { return options_.project.labels; }

    const Options& options_;
    ProgramStop& stop_;
    Progress progress_;
    OutputFolder folder_;
    Workshop workshop_;
    DiscPlanner planner_;
    const DiscPlan& plan_ = planner_.disc();
    DiscPieces pieces_;
    MadeDisc made_;
    Drive drive_;
    Medium medium_;
};

}  // namespace

Outcome makeDisc(const Options& options, ProgressReceiver& receiver, ProgramStop& stop) {
    return outcomeOf([&] {
        requirePrograms({"ffmpeg", "ffprobe"});
        if (!options.isPreview) requirePrograms({"spumux", "dvdauthor"});
        if (!options.isPreview && options.makesImage) requirePrograms({"genisoimage"});
        if (options.burns) requirePrograms({"xorriso"});
        return DiscMaker(options, safeFilms(options, stop), receiver, stop).run();
    });
}

}  // namespace tkv::disc
