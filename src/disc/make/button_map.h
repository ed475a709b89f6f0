#pragma once

#include <optional>
#include <string>

#include "disc/plan/plan.h"

namespace tkv::disc {

/// A button map of the composer's as this disc wants it: with a picture that lies over the whole
/// page, where each arrow key leads, and names of files relative to a folder, since spumux takes no
/// path with a quotation mark or an ampersand. None when the map does not hold the page's buttons.
/// `picture`: relative to `folder`, which is absolute and holds the map's own pictures.
std::optional<std::string> finishedMap(const std::string& map, const MenuPage& page,
                                       const std::string& picture, const std::string& folder);

}  // namespace tkv::disc
