#pragma once

#include "composer/background.h"
#include "composer/menu_request.h"
#include "composer/page.h"

namespace tkv {

/// The cover picture of a disc: background, title, today's date, icon and one line of text.
Page composeJacket(const MenuRequest& request, const Background& background);

}  // namespace tkv
