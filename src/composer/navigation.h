#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "composer/menu_request.h"

namespace tkv {

/// Page columns that a navigation button takes.
inline constexpr int kNavigationWidth = 160;

/// A button that leads to another menu, and the bottom-left corner of its label on the page.
struct NavigationButton {
    std::string_view name;
    std::optional<std::string> MenuRequest::*label;
    int x;
    int y;
};

/// In the order in which they are drawn and numbered.
inline constexpr std::array<NavigationButton, 4> kNavigationButtons{{
    {"dvdBt_readAll", &MenuRequest::dvdBt_readAll, 450, 479},
    {"dvdBt_menuPrev", &MenuRequest::dvdBt_menuPrev, 110, 45},
    {"dvdBt_menuMain", &MenuRequest::dvdBt_menuMain, 280, 45},
    {"dvdBt_menuNext", &MenuRequest::dvdBt_menuNext, 450, 45},
}};

}  // namespace tkv
