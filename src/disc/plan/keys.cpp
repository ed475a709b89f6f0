#include "disc/plan/keys.h"

#include <cmath>
#include <tuple>

namespace tkv::disc {

namespace {

// A direction, as the turn of the page that makes it point upwards.
struct Direction {
    bool isHorizontal, isNegative;
};
constexpr Direction kUp{false, false}, kDown{false, true}, kLeft{true, true}, kRight{true, false};

Rect turned(const Rect& rect, const Direction& direction) {
    const Rect upright =
        direction.isHorizontal ? Rect{rect.y, rect.x, rect.height, rect.width} : rect;
    if (!direction.isNegative) return upright;
    return {upright.x, -upright.y - upright.height, upright.width, upright.height};
}

double middleX(const Rect& rect) {
    return rect.x + rect.width / 2;
}

double middleY(const Rect& rect) {
    return rect.y + rect.height / 2;
}

bool areInOneColumn(const Rect& a, const Rect& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width;
}

// The button to which an arrow leads from `number`: that number where there is none.
std::size_t neighbour(const std::vector<Rect>& buttons, std::size_t number,
                      const Direction& direction) {
    const Rect from = turned(buttons[number], direction);
    std::size_t found = number;
    std::tuple<bool, double, double> nearest;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        const Rect to = turned(buttons[i], direction);
        const double ahead = middleY(to) - middleY(from);
        const bool isOblique = !areInOneColumn(from, to);
        if (ahead <= 0 || (isOblique && direction.isHorizontal)) continue;
        // Of two that are as near, the first one.
        const std::tuple distance(isOblique, ahead, std::abs(middleX(to) - middleX(from)));
        if (found != number && distance >= nearest) continue;
        found = i;
        nearest = distance;
    }
    return found;
}

}  // namespace

std::vector<Arrows> arrowsOf(const std::vector<Rect>& buttons) {
    std::vector<Arrows> all;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        all.push_back({neighbour(buttons, i, kUp), neighbour(buttons, i, kDown),
                       neighbour(buttons, i, kLeft), neighbour(buttons, i, kRight)});
    }
    return all;
}

}  // namespace tkv::disc
