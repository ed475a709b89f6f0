#pragma once

#include <string>
#include <vector>

#include "composer/menu_request.h"
#include "disc/plan/plan.h"

namespace tkv::disc {

/// What the composer is asked to draw a page of the plan, its texts cut where their places end. All
/// paths are absolute. `background`: a picture of 16:9 in the page's pixels; empty for none.
/// `thumbnails`: pictures, or folders of frames, in the page's order. `output`: as MenuRequest has
/// it.
MenuRequest pageRequest(const MenuPage& page, Standard standard, const std::string& background,
                        const std::vector<std::string>& thumbnails, MenuMode mode,
                        const std::string& output);

/// What the composer is asked to draw the picture for the disc's case. `line`: below the title.
/// `background`: a picture; empty for none.
MenuRequest jacketRequest(const std::string& title, const std::string& line,
                          const std::string& background, const std::string& output);

}  // namespace tkv::disc
