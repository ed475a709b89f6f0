#include "disc/author/disc_walks.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "disc/project/names.h"

namespace tkv::disc {

namespace {

using Json = nlohmann::json;

// The page that an action shows, among all of the plan; none when that depends on the viewer.
std::optional<std::size_t> shownPage(const DiscPlan& plan, const Action& action) {
    if (const auto* films = std::get_if<ShowFilms>(&action)) return films->page;
    if (const auto* chapters = std::get_if<ShowChapters>(&action))
        return plan.films[chapters->film].ownPages().first + chapters->page;
    return {};
}

// A page, as the checking program calls it.
std::string spotName(const DiscPlan& plan, std::size_t page) {
    const MenuPage& shown = plan.pages[page];
    if (!shown.film) return shown.name;
    return fmt::format("film-{}-page-{}", *shown.film + 1,
                       page - plan.films[*shown.film].ownPages().first + 1);
}

// Where somebody is who presses keys, if the disc does what the plan says.
class Viewer {
  public:
    explicit Viewer(const DiscPlan& plan) : plan_(&plan), playsAll_(plan.pages.empty()) {
        follow(plan.start);
    }

    // A page, or else a film.
    std::optional<std::size_t> page() const { return page_; }
    std::size_t film() const { return page_ ? plan_->pages[*page_].film.value_or(0) : film_; }

    // As the checking program calls it.
    std::string spot() const {
        if (isStopped_) return "the disc's end";
        if (page_) return fmt::format("{}, button {}", spotName(*plan_, *page_), button_ + 1);
        return fmt::format("film {}, chapter {}", film_ + 1, chapter_ + 1);
    }

    void press(std::size_t button) {
        const MenuPage& page = plan_->pages[*page_];
        const Action& action = page.buttons[button].action;
        if (!page.film) films_ = {*page_, button};
        if (page.film && std::holds_alternative<PlayFilm>(action)) chapters_ = {*page_, button};
        follow(action);
    }
    void pressMenu() { follow(plan_->films[film()].keys.menu); }
    void pressTitle() { follow(plan_->titleKey); }
    void ask(std::size_t film) { follow(PlayFilm{film, 0}); }

    // Of the film.
    void end() {
        const FilmKeys& keys = plan_->films[film_].keys;
        follow(playsAll_ && keys.next ? Action(*keys.next) : keys.end);
    }

  private:
    using Place = std::pair<std::size_t, std::size_t>;  // a page, and its highlighted button

    void follow(const Action& action) {
        if (const auto* played = std::get_if<PlayFilm>(&action)) {
            page_.reset();
            film_ = played->film;
            chapter_ = played->chapter;
        } else if (std::holds_alternative<PlayAll>(action)) {
            playsAll_ = true;
            follow(PlayFilm{0, 0});
        } else if (const auto* shown = std::get_if<ShowFilms>(&action)) {
            showFilms({shown->page, shown->button});
        } else if (const auto* chapters = std::get_if<ShowChapters>(&action)) {
            showChapters({*shownPage(*plan_, action), chapters->button});
        } else if (std::holds_alternative<SetSound>(action) ||
                   std::holds_alternative<SetSubtitles>(action)) {
            follow(ownMenu(*plan_, film()));
        } else if (std::holds_alternative<StopDisc>(action)) {
            isStopped_ = true;
        } else if (std::holds_alternative<BackToChapters>(action) ||
                   (std::holds_alternative<BackToStart>(action) && chapters_)) {
            showChapters(chapters_.value_or(Place(plan_->films[film()].ownPages().first, 0)));
        } else {
            showFilms(films_);
        }
    }

    void showFilms(Place place) {
        films_ = place;
        chapters_.reset();
        show(place);
    }

    void showChapters(Place place) {
        chapters_ = place;
        show(place);
    }

    void show(Place place) {
        page_ = place.first;
        button_ = place.second;
        playsAll_ = false;
    }

    const DiscPlan* plan_;
    std::optional<std::size_t> page_;
    std::size_t button_ = 0;
    std::size_t film_ = 0, chapter_ = 0;
    Place films_{0, 0};              // where the viewer was last
    std::optional<Place> chapters_;  // the same, where the film was started there
    bool playsAll_;
    bool isStopped_ = false;
};

// A walk that is being written down.
class Walk {
  public:
    explicit Walk(const DiscPlan& plan) : plan_(plan), viewer_(plan) {}

    const Viewer& viewer() const { return viewer_; }
    Json steps() && { return std::move(steps_); }

    void press(std::size_t button, int group = 0) {
        const MenuPage& page = plan_.pages[*viewer_.page()];
        const std::string what =
            fmt::format("Button {} of {} ({}){}", button + 1, page.name, page.buttons[button].text,
                        group == 0 ? "" : " on 4:3 displays");
        viewer_.press(button);
        add({{"key", "button"}, {"number", button + 1}, {"group", group}}, what);
    }

    void pressMenu() {
        const std::string what = fmt::format("The Menu key in {}", viewer_.spot());
        viewer_.pressMenu();
        add({{"key", "menu"}}, what);
    }

    void pressTitle() {
        const std::string what = fmt::format("The Title key in {}", viewer_.spot());
        viewer_.pressTitle();
        add({{"key", "title"}}, what);
    }

    void ask(std::size_t film) {
        viewer_.ask(film);
        add({{"key", "number"}, {"number", film + 1}},
            fmt::format("Film {}, asked for by its number,", film + 1));
    }

    void end() {
        const std::size_t film = viewer_.film();
        const std::string what =
            fmt::format("The end of film {} ({})", film + 1, shortName(plan_.films[film].request));
        viewer_.end();
        add({{"key", "end"}}, what);
    }

  private:
    void add(Json step, const std::string& what) {
        step["what"] = what;
        step["to"] = viewer_.spot();
        steps_.push_back(std::move(step));
    }

    const DiscPlan& plan_;
    Viewer viewer_;
    Json steps_ = Json::array();
};

class DiscWalks {
  public:
    explicit DiscWalks(const DiscPlan& plan) : plan_(plan) {}

    Json all() && {
        addWalk([](Walk&) {});
        if (plan_.pages.empty()) {
            addFilms();
        } else {
            findRoutes();
            for (std::size_t page = 0; page < plan_.pages.size(); ++page)
                addPage(page);
            addPlayingAll();
        }
        return std::move(walks_);
    }

  private:
    template <typename Way>
    void addWalk(Way way) {
        Walk walk(plan_);
        way(walk);
        walks_.push_back(std::move(walk).steps());
    }

    // The buttons that lead from the first page to every other.
    void findRoutes() {
        routes_.resize(plan_.pages.size());
        std::vector<std::size_t> found{0};
        for (std::size_t i = 0; i < found.size(); ++i) {
            const std::size_t page = found[i];
            const std::vector<Button>& buttons = plan_.pages[page].buttons;
            for (std::size_t button = 0; button < buttons.size(); ++button) {
                const auto next = shownPage(plan_, buttons[button].action);
                if (!next || *next == 0 || !routes_[*next].empty()) continue;
                routes_[*next] = routes_[page];
                routes_[*next].push_back(button);
                found.push_back(*next);
            }
        }
    }

    void goTo(Walk& walk, std::size_t page) const {
        if (!walk.viewer().page()) walk.pressTitle();
        for (const std::size_t button : routes_[page])
            walk.press(button);
    }

    void addPage(std::size_t page) {
        for (std::size_t button = 0; button < plan_.pages[page].buttons.size(); ++button) {
            for (const int group : {0, 1}) {
                addWalk([&](Walk& walk) {
                    goTo(walk, page);
                    walk.press(button, group);
                    if (!walk.viewer().page() && group == 0) walk.end();
                });
            }
            addKeys([&](Walk& walk) {
                goTo(walk, page);
                walk.press(button);
            });
        }
    }

    // The keys where a walk leads to.
    template <typename Way>
    void addKeys(Way way) {
        addWalk([&](Walk& walk) {
            way(walk);
            walk.pressTitle();
        });
        addWalk([&](Walk& walk) {
            way(walk);
            const auto page = walk.viewer().page();
            const bool isOfFilms = page && !plan_.pages[*page].film;
            if (!isOfFilms) walk.pressMenu();
        });
    }

    void addPlayingAll() {
        const std::vector<Button>& buttons = plan_.pages.front().buttons;
        for (std::size_t button = 0; button < buttons.size(); ++button) {
            if (!std::holds_alternative<PlayAll>(buttons[button].action)) continue;
            for (const DiscFilm& film : plan_.films) {
                addWalk([&](Walk& walk) {
                    goTo(walk, 0);
                    walk.press(button);
                    walk.ask(film.number);
                    walk.end();
                });
            }
        }
    }

    // Of a disc without menus.
    void addFilms() {
        for (const DiscFilm& film : plan_.films) {
            const auto ask = [&](Walk& walk) { walk.ask(film.number); };
            addWalk([&](Walk& walk) {
                ask(walk);
                walk.end();
            });
            addKeys(ask);
        }
    }

    const DiscPlan& plan_;
    std::vector<std::vector<std::size_t>> routes_;
    Json walks_ = Json::array();
};

}  // namespace

std::string discWalks(const DiscPlan& plan) {
    Json films = Json::array();
    for (const DiscFilm& film : plan.films) {
        // When a copied film's packs come is its author's matter.
        films.push_back({{"name", shortName(film.request)}, {"timed", !film.conversion.isCopied}});
    }
    const Json walks{{"films", std::move(films)},
                     {"start", Viewer(plan).spot()},
                     {"walks", DiscWalks(plan).all()}};
    return walks.dump(1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace tkv::disc
