#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "composer/button_layout.h"
#include "disc/project/standard.h"
#include "graphics/bitmap.h"

namespace tkv::disc {

/// How a player shows a button: highlighted when the arrow keys have reached it, selected while it
/// is pressed.
enum class ButtonState { highlighted, selected };

/// What a player lays over the page where a button is in that state: a frame within the edges of
/// each of the buttons, and nothing elsewhere, so that nothing of a thumbnail or label is hidden.
/// `buttons`: in the raster of the standard, columns and rows from the top left, x1 and y1 not
/// included; the first `thumbnails` of them are thumbnails, the others labels. Pixels are fully
/// opaque or fully transparent. None when there is no memory for it.
std::optional<Bitmap> highlightPicture(std::span<const ButtonRect> buttons, std::size_t thumbnails,
                                       Standard standard, ButtonState state);

/// Differs where the frames of equal buttons do: a part of the names of results that show them.
std::string highlightStyle();

}  // namespace tkv::disc
