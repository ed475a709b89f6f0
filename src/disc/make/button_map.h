#pragma once

#include <optional>
#include <string>
#include <vector>

#include "composer/button_layout.h"
#include "disc/plan/plan.h"

namespace tkv::disc {

/// The buttons of a page in the order of the page, in the raster's columns and rows from the top
/// left, for wide displays and for those of 4:3.
struct PageButtons {
    std::vector<ButtonRect> wide;
    std::vector<ButtonRect> panScan;
};

/// Where the composer's two button maps have the buttons, but for that of a single big thumbnail,
/// which is a strip on wide displays there: here it reaches to the thumbnail's lower edge, as on
/// others. None when a map does not hold the page's buttons. `folder`: absolute; the maps' own
/// pictures are below it.
std::optional<PageButtons> pageButtons(const std::string& wideMap, const std::string& panScanMap,
                                       const MenuPage& page, const std::string& folder);

/// The pictures of a subpicture: what lies over the whole page, over a highlighted button and over
/// a selected one. By names relative to the folder where spumux runs, since it takes no path with a
/// quotation mark or an ampersand.
struct SubpictureNames {
    std::string image;
    std::string highlight;
    std::string select;
};

/// A button map of the composer's as this disc wants it: with these pictures, with the buttons at
/// these places, and with where each arrow key leads. None when the map does not hold the page's
/// buttons. `buttons`: as many as the page's. `folder`: as above.
std::optional<std::string> finishedMap(const std::string& map, const MenuPage& page,
                                       const std::vector<ButtonRect>& buttons,
                                       const SubpictureNames& pictures, const std::string& folder);

}  // namespace tkv::disc
