// SPDX-License-Identifier: GPL-2.0-or-later
#include "check/walk.h"

#include <fmt/format.h>

#include <exception>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "check/player.h"
#include "check/title_set.h"

namespace tkv::check {

namespace {

using nlohmann::json;

Step stepFrom(const json& text) {
    static const std::map<std::string, Step::Key> keys{{"button", Step::Key::button},
                                                       {"menu", Step::Key::menu},
                                                       {"title", Step::Key::title},
                                                       {"number", Step::Key::number},
                                                       {"end", Step::Key::end}};
    Step step;
    step.key = keys.at(text.at("key"));
    step.number = text.value("number", 0);
    step.group = text.value("group", 0);
    step.what = text.at("what");
    step.to = text.at("to");
    return step;
}

void go(Player& player, const Step& step) {
    switch (step.key) {
        case Step::Key::button:
            player.press(step.number, step.group);
            break;
        case Step::Key::menu:
            player.press(DVD_MENU_Root);
            break;
        case Step::Key::title:
            player.press(DVD_MENU_Title);
            break;
        case Step::Key::number:
            player.playFilm(step.number);
            break;
        case Step::Key::end:
            player.leaveAtEnd();
            break;
    }
}

class Checker {
  public:
    Checker(const Expectation& expected, const std::string& disc, const Listener& listener)
        : expected_(expected), disc_(disc), listener_(listener) {}

    Report check() {
        checkSet("The menus of the films", 0, true);
        int number = 0;
        for (const Expectation::Film& film : expected_.films) {
            ++number;
            checkSet(fmt::format("Film {}, {}", number, film.name), number, film.isTimed);
        }
        attempt("The disc", [&] {
            Player player(disc_);
            for (const std::vector<Step>& steps : expected_.walks)
                walk(player, steps);
        });
        std::set<std::string> pages;
        for (const auto& [page, button] : pressed_)
            pages.insert(page);
        report_.buttons = static_cast<int>(pressed_.size());
        report_.pages = static_cast<int>(pages.size());
        return report_;
    }

  private:
    // Where a player may stutter is told, and no fault: a film can be too hard for any disc.
    void checkSet(const std::string& what, int number, bool isTimed) {
        attempt(what, [&] {
            const std::string stutter = checkTitleSet(disc_ + "/VIDEO_TS", number, isTimed);
            if (!stutter.empty())
                listener_.onLine(fmt::format("{}: {}. A player may stutter there.", what, stutter));
        });
    }

    template <typename Part>
    bool attempt(const std::string& what, Part part) {
        listener_.begin(what);
        try {
            part();
            return true;
        } catch (const std::exception& error) {
            tell(fmt::format("{}: {}.", what, error.what()));
            return false;
        }
    }

    void walk(Player& player, const std::vector<Step>& steps) {
        if (!attempt("The disc's start", [&] { player.start(); }) ||
            !isAt(player, "The disc's start", expected_.start))
            return;
        for (const Step& step : steps) {
            const std::string from = player.place();
            if (!attempt(step.what, [&] { go(player, step); }) || !isAt(player, step.what, step.to))
                return;
            if (step.key == Step::Key::button) pressed_.emplace(from, step.number);
        }
    }

    bool isAt(Player& player, const std::string& what, const std::string& to) {
        const std::string spot = player.spot();
        if (spot == to) return true;
        tell(fmt::format("{} leads to {} instead of {}.", what, spot, to));
        return false;
    }

    // Walks have ways in common: each fault is told once.
    void tell(const std::string& fault) {
        if (!told_.insert(fault).second) return;
        ++report_.faults;
        listener_.onLine(fault);
    }

    const Expectation& expected_;
    const std::string& disc_;
    const Listener& listener_;
    Report report_;
    std::set<std::string> told_;
    std::set<std::pair<std::string, int>> pressed_;
};

}  // namespace

Expectation readExpectation(const std::string& text) {
    const json read = json::parse(text);
    Expectation expected;
    expected.start = read.at("start");
    for (const json& film : read.at("films"))
        expected.films.push_back({film.at("name"), film.at("timed")});
    for (const json& walk : read.at("walks")) {
        std::vector<Step>& steps = expected.walks.emplace_back();
        for (const json& step : walk)
            steps.push_back(stepFrom(step));
    }
    return expected;
}

Report checkDisc(const Expectation& expected, const std::string& disc, const Listener& listener) {
    return Checker(expected, disc, listener).check();
}

}  // namespace tkv::check
