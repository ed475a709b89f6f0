#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "composer/navigation.h"
#include "composer/page.h"
#include "composer/thumbnail_layout.h"

namespace tkv {

/// A text as it is drawn in that letter case.
std::string inCase(const std::string& text, LetterCase letterCase);

/// The style of every text on a page: ellipsized at its end, with a soft black drop shadow.
/// `alignment`: 'r' right, 'c' centred, 'j' justified, any other or none left. `colour`: none means
/// white. `size`: pixels; a negative one means 11.
TextAttributes captionTextAttributes(const std::optional<Color>& colour,
                                     std::optional<char> alignment, float size);

/// The caption of the thumbnail at `index` in its layout: left captions stand at a point, the
/// others in a rectangle.
TextLayer captionText(const std::string& caption, const ThumbnailLayout& layout, std::size_t index);

/// The page's title; an empty text when there is none.
TextLayer titleText(const std::optional<std::string>& title);

/// The button's label on the page.
TextLayer navigationText(const NavigationButton& button, const std::string& label);

}  // namespace tkv
