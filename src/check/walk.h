// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tkv::check {

/// A key that is pressed, and what is to follow.
struct Step {
    enum class Key { button, menu, title, number, end } key = Key::button;
    int number = 0;    ///< of a button, or a film by its number; from 1
    int group = 0;     ///< of buttons: for wide displays (0) or others (1)
    std::string what;  ///< the begin of a sentence: "Button 2 of films-1"
    std::string to;    ///< as Player::spot
};

/// What a disc is to be.
struct Expectation {
    struct Film {
        std::string name;
        bool isTimed = true;
    };
    std::vector<Film> films;
    std::string start;                     ///< when it is put in
    std::vector<std::vector<Step>> walks;  ///< each from there on
};

/// From a JSON text. Throws std::runtime_error for one that is none, or lacks something.
Expectation readExpectation(const std::string& text);

struct Report {
    int faults = 0;
    int buttons = 0;  ///< that were pressed
    int pages = 0;    ///< on which they stand
};

/// Who is told of what goes on.
struct Listener {
    std::function<void(const std::string& what)> begin;   ///< of each step
    std::function<void(const std::string& line)> onLine;  ///< of each fault and doubt
};

/// Goes every walk; at its first fault one ends.
Report checkDisc(const Expectation& expected, const std::string& disc, const Listener& listener);

}  // namespace tkv::check
