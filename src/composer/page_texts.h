#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "composer/menu_request.h"
#include "composer/page.h"
#include "composer/thumbnail_layout.h"

namespace tkv {

/// The style of every text on a page: cut at the tail, with a soft black shadow below.
/// `alignment`: 'r' right, 'c' centred, 'j' justified, any other or none left. `colour`: none means
/// white. `size`: pixels; a negative one means 11.
TextAttributes captionTextAttributes(const std::optional<Color>& colour,
                                     std::optional<char> alignment, float size);

/// The caption of a thumbnail at `place`: left captions stand at a point, the others in a
/// rectangle, right ones in a wider one beside four big thumbnails.
TextLayer captionText(const std::string& caption, const ThumbnailPlace& place, bool fourBig);

/// The page's title; an empty text when there is none.
TextLayer titleText(const std::optional<std::string>& title);

/// Of a navigation label and its button, on the page.
inline constexpr int kNavigationWidth = 160;

/// A button that leads to another menu, and where its label stands.
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

/// The button's label on the page.
TextLayer navigationText(const NavigationButton& button, const std::string& label);

}  // namespace tkv
