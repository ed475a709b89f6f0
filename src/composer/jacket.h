#pragma once

#include <ctime>

#include "composer/background.h"
#include "composer/menu_request.h"
#include "composer/page.h"

namespace tkv {

/// The cover picture of a disc: background, title, the local date of `today`, icon and one line of
/// text.
Page composeJacket(const MenuRequest& request, const Background& background, std::time_t today);

}  // namespace tkv
