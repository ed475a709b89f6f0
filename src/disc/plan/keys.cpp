#include "disc/plan/keys.h"

#include <cmath>
#include <tuple>

namespace tkv::disc {

namespace {

double middle(double start, double length) {
    return start + length / 2;
}

// A button as a line of buttons sees it that is looked along upwards: how far ahead another is, and
// how far aside.
struct View {
    Rect from;

    bool isBeside(const Rect& to) const {
        return to.x < from.x + from.width && from.x < to.x + to.width;
    }
    double ahead(const Rect& to) const {
        return middle(to.y, to.height) - middle(from.y, from.height);
    }
    double aside(const Rect& to) const {
        return std::abs(middle(to.x, to.width) - middle(from.x, from.width));
    }
};

// The rectangle after a turn of the page that brings a direction upwards.
struct Turn {
    bool isSideways, isBackwards;

    Rect operator()(const Rect& rect) const {
        const Rect turned = isSideways ? Rect{rect.y, rect.x, rect.height, rect.width} : rect;
        if (!isBackwards) return turned;
        return {turned.x, -turned.y - turned.height, turned.width, turned.height};
    }
};

enum class Beyond { nothing, nextRow };

// The button to which an arrow leads from `number`.
std::size_t neighbour(const std::vector<Rect>& buttons, std::size_t number, Turn turn,
                      Beyond beyond) {
    const View view{turn(buttons[number])};
    std::size_t found = number;
    std::tuple<bool, double, double> best;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        const Rect to = turn(buttons[i]);
        const bool isOblique = !view.isBeside(to);
        if (view.ahead(to) <= 0 || (isOblique && beyond == Beyond::nothing)) continue;
        // Of a row of which two are as near, the first one.
        const std::tuple distance(isOblique, view.ahead(to), view.aside(to));
        if (found != number && distance >= best) continue;
        found = i;
        best = distance;
    }
    return found;
}

}  // namespace

std::vector<Arrows> arrowsOf(const std::vector<Rect>& buttons) {
    std::vector<Arrows> all;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        all.push_back({neighbour(buttons, i, {false, false}, Beyond::nextRow),
                       neighbour(buttons, i, {false, true}, Beyond::nextRow),
                       neighbour(buttons, i, {true, true}, Beyond::nothing),
                       neighbour(buttons, i, {true, false}, Beyond::nothing)});
    }
    return all;
}

}  // namespace tkv::disc
