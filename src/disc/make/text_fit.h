#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "composer/menu_request.h"
#include "composer/page.h"

namespace tkv::disc {

/// Of a text that is longer no page shows more.
inline constexpr std::size_t kMostCharacters = 200;

/// Cuts the texts of a page at the ends of their places, with an ellipsis: captions at the edge of
/// their thumbnail, so that none runs through its neighbour, the title before the label that plays
/// all. Widths are those of the composer's own layout of the texts.
void fitTexts(MenuRequest& request);

/// All texts of a page, where the composer sets them.
std::vector<TextLayer> textsOf(const MenuRequest& request);

/// A text's letters on the page, without their shadow; none when nothing of it shows.
std::optional<PlacedBitmap> lettersOf(TextLayer text);

}  // namespace tkv::disc
