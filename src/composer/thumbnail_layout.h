#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "composer/page.h"

namespace tkv {

/// Where a thumbnail stands on the page, and how its caption is aligned: 'l', 'c' or 'r'.
struct ThumbnailPlace {
    int x;
    int y;
    char alignment;
};

/// One arrangement of thumbnails.
struct ThumbnailLayout {
    std::span<const ThumbnailPlace> places;
    bool isBig;
    Size scaledTo;  ///< What a thumbnail's picture is resized to, whatever its shape.
    Rect source;    ///< The part of that which is shown, at its own size.
    int shiftX;     ///< From the place's x to the picture's left edge.

    /// Place `index`, 0 or above; all places beyond the last fall on the last.
    const ThumbnailPlace& place(std::size_t index) const;

    /// The picture that place `index` shows.
    PictureLayer picture(const std::string& file, std::size_t index) const;
};

/// Main menus of one to four thumbnails have a big layout each, all other pages the grid of nine.
const ThumbnailLayout& thumbnailLayout(bool isMainMenu, std::size_t thumbnails);

}  // namespace tkv
