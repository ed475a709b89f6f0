#include "disc/plan/plan.h"

#include <algorithm>
#include <pugixml.hpp>
#include <set>

#include "disc/author/author_file.h"
#include "disc/plan/chapters.h"
#include "disc/plan/report.h"
#include "fuzzing.h"

// Any films and wishes as a disc: every button leads to something that is there, every place can be
// reached and left, and the disc's file can be written.

using namespace tkv;
using namespace tkv::disc;
using namespace tkv::fuzz;

namespace {

constexpr FrameRate kRates[] = {{25, 1}, {24000, 1001}, {30000, 1001}, {50, 1}, {24, 1},
                                {1, 1},  {999, 1},      {60, 1},       {12, 1}};

Film filmOf(Input& input) {
    Film film;
    film.source.path = "/films/" + input.word() + ".mp4";
    film.seconds = input.flag() ? input.between(0, 300) : input.between(0, 20000);
    film.source.bytes = static_cast<std::int64_t>(input.between(0, 9e9));
    film.frames = static_cast<int>(film.seconds * 25);
    film.video.frameRate = kRates[input.below(std::size(kRates))];
    film.video.fields = static_cast<Fields>(input.below(3));
    film.video.aspect = input.between(0.1, 10);
    film.video.size = film.video.shown = {720, input.flag() ? 576 : 480};
    film.audio.resize(input.below(10));
    for (AudioTrack& track : film.audio)
        track.channels = 1 + static_cast<int>(input.below(8));
    if (input.flag()) {  // It may stand on a disc as it is.
        film.video.codec = "mpeg2video";
        film.video.pixelFormat = "yuv420p";
        film.keyframeInterval = 12;
        for (int i = 0; i * 0.48 < film.seconds && i < 1000; ++i)
            film.keyframes.push_back(i * 0.48);
    }
    for (std::size_t i = input.below(120); i > 0; --i)
        film.marks.push_back({input.between(-1, 1.2) * film.seconds, ""});
    return film;
}

Project projectOf(Input& input, const std::vector<Film>& films) {
    Project project;
    project.labels = labelsOf("en");
    if (input.flag()) project.standard = input.flag() ? Standard::pal : Standard::ntsc;
    project.size = input.flag() ? DiscSize::dvd9 : DiscSize::dvd5;
    project.chapters.source = static_cast<ChapterRule::Source>(input.below(3));
    project.chapters.seconds = input.between(2, 4000);
    project.evenVolume = input.flag();
    project.playsFirstFilm = input.flag();
    project.hasMenu = input.below(8) != 0;
    if (input.flag()) project.title = input.word();
    for (const Film& film : films) {
        FilmRequest& request = project.films.emplace_back();
        request.path = film.source.path;
        while (request.excerpts.size() < 4 && input.flag())
            request.excerpts.push_back(input.between(0, 30000));
        if (!input.flag()) continue;
        request.chapters.emplace();
        for (std::size_t i = input.below(120); i > 0; --i)
            request.chapters->push_back({input.between(0, 20000), input.word()});
    }
    return project;
}

/// Walks a disc from its first page by every button, and asks where its arrows lead.
class Walk {
  public:
    explicit Walk(const DiscPlan& plan) : plan_(plan) {
        if (!plan.pages.empty()) visit(0);
    }

    void requireAllSeen() const {
        if (plan_.pages.empty()) return;
        require(pages_.size() == plan_.pages.size(), "every page is reached");
        // The last one of an only film's pages may be reached by its label alone.
        require(films_.size() == plan_.films.size(), "every film is reached");
    }

  private:
    void visit(std::size_t number) {
        if (!pages_.insert(number).second) return;
        const MenuPage& page = plan_.pages[number];
        const std::size_t count = page.buttons.size();
        require(count > 0 && count * 2 <= 36, "a menu has 36 places");
        require(page.thumbnails.size() <= count, "thumbnails have buttons");
        for (const Button& button : page.buttons) {
            const Arrows& to = button.arrows;
            require(std::max({to.up, to.down, to.left, to.right}) < count,
                    "arrows lead to buttons");
            std::visit([this](const auto& action) { follow(action); }, button.action);
        }
    }

    void follow(const PlayFilm& to) {
        require(to.film < plan_.films.size(), "a button plays a film that is there");
        require(to.chapter < plan_.films[to.film].conversion.chapters.size(),
                "a button plays a chapter");
        films_.insert(to.film);
    }
    void follow(const PlayAll&) { require(!plan_.films.empty(), "there is a film to play"); }
    void follow(const ShowFilms& to) {
        require(to.page < plan_.filmPages.count, "a button shows a page that is there");
        visit(to.page);
    }
    void follow(const ShowChapters& to) {
        require(to.film < plan_.films.size(), "a button shows chapters of a film");
        const PageRange& pages = plan_.films[to.film].chapterPages;
        require(to.page < pages.count, "a button shows chapters that are there");
        visit(pages.first + to.page);
    }
    template <typename Other>
    void follow(const Other&) {
        require(false, "a button leads to a place");
    }

    const DiscPlan& plan_;
    std::set<std::size_t> pages_;
    std::set<std::size_t> films_;
};

void checkFilms(const DiscPlan& plan) {
    for (const DiscFilm& film : plan.films) {
        const Conversion& conversion = film.conversion;
        const std::vector<Chapter>& chapters = conversion.chapters;
        require(!chapters.empty() && chapters.front().seconds == 0, "a film has a first chapter");
        require(chapters.size() <= kMostChapters, "a film has 99 chapters at most");
        for (std::size_t i = 1; i < chapters.size(); ++i)
            require(chapters[i].seconds - chapters[i - 1].seconds >= 1.9, "chapters are apart");
        require(conversion.isCopied == (conversion.videoRate == 0),
                "what is not copied has a rate");
        if (plan.pages.empty()) continue;
        require(film.page < plan.filmPages.count &&
                    film.button < plan.pages[film.page].thumbnails.size(),
                "a film knows its button");
    }
}

void checkAuthorFile(const DiscPlan& plan) {
    DiscPieces pieces;
    pieces.clips.resize(plan.pages.size(), "m.mpg");
    pieces.films.resize(plan.films.size(), "f.mpg");
    const std::string text = authorFile(plan, pieces, "/disc");
    require(bool{pugi::xml_document().load_string(text.c_str())}, "the disc's file is XML");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    std::vector<Film> films(input.below(102));
    for (Film& film : films)
        film = filmOf(input);
    const Project project = projectOf(input, films);
    const DiscPlan plan = planDisc(project, films);
    require(plan.films.size() == films.size(), "every film is on the disc");
    checkFilms(plan);
    Walk(plan).requireAllSeen();
    if (!whyNoDisc(plan).empty()) return 0;
    require(plan.bytes > 0 && plan.bytes <= capacityOf(project.size), "the disc is not too small");
    checkAuthorFile(plan);
    return 0;
}
