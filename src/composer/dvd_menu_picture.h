#pragma once

// Composes menu pages:
//
//     tkv::MenuRequest menu;
//     menu.mode = tkv::MenuMode::preview;
//     menu.title = "Chapters";
//     menu.thumbs = {"/films/sailing", "/films/city.jpg"};
//     menu.output = "preview.png";
//     const bool isWritten = tkv::dvdMenuPicture(menu);

#include <functional>

#include "composer/menu_request.h"
#include "graphics/bitmap.h"

namespace tkv {

/// Composes the menu page that the request describes and writes what its mode names at its output
/// path. What is missing or cannot be read is left out of the page.
/// True when the output could be made. Logs its progress, most of it only while the verbose flag is
/// set. Throws nothing but std::bad_alloc.
bool dvdMenuPicture(const MenuRequest& request);

/// Callback for a frame of a menu; returns true to get the next one.
using FrameTaker = std::function<bool(const Bitmap& frame)>;

/// Composes the frames of an animated menu as dvdMenuPicture does, for a caller who needs no files:
/// calls `take` with each, 720 x 540 opaque pixels, rows tightly packed.
/// The request's mode does not matter; a cropped background is written beside its output path.
/// True when all frames were drawn and taken. Logs and throws as dvdMenuPicture.
bool drawMenuFrames(const MenuRequest& request, const FrameTaker& take);

}  // namespace tkv
