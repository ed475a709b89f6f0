#pragma once

#include "composer/menu_request.h"

namespace tkv {

/// Composes the menu page that the request describes and writes what its mode names at its output
/// path. Of what is absent or cannot be read, the page shows nothing.
/// True when the output could be made. Logs its progress, most of it only while the verbose flag is
/// set. Throws nothing but std::bad_alloc.
bool dvdMenuPicture(const MenuRequest& request);

}  // namespace tkv
