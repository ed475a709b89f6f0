#pragma once

#include <optional>
#include <string>

#include "composer/menu_request.h"

namespace tkv::disc {

/// Cuts the texts of a page at the ends of their places, with an ellipsis: captions at the edge of
/// their thumbnail, so that none runs through its neighbour, the title before the label that plays
/// all. Widths are those of the composer's own layout of the texts.
void fitTexts(MenuRequest& request);

}  // namespace tkv::disc
