#pragma once

#include <functional>

#include "composer/menu_request.h"
#include "graphics/bitmap.h"

namespace tkv {

/// Composes the menu page that the request describes and writes what its mode names at its output
/// path. Of what is absent or cannot be read, the page shows nothing.
/// True when the output could be made. Logs its progress, most of it only while the verbose flag is
/// set. Throws nothing but std::bad_alloc.
bool dvdMenuPicture(const MenuRequest& request);

/// Is given a frame of a menu; true to get the next.
using FrameTaker = std::function<bool(const Bitmap& frame)>;

/// Composes the frames of an animated menu as dvdMenuPicture does, for a caller who needs no files:
/// gives each to `take`, 720 x 540 opaque pixels whose rows follow each other without a gap.
/// The request's mode does not matter; a background that is cut is put beside its output path.
/// True when all frames were drawn and taken. Logs and throws as dvdMenuPicture.
bool drawMenuFrames(const MenuRequest& request, const FrameTaker& take);

}  // namespace tkv
