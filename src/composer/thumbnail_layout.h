#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "composer/page.h"
#include "composer/page_geometry.h"

namespace tkv {

/// Where a thumbnail stands on the page, and how its caption is aligned: 'l', 'c' or 'r'.
struct ThumbnailPlace {
    int x;
    int y;
    char alignment;
};

/// How the buttons of a layout lie on its thumbnails. The 16:9 button spans the columns `left` to
/// `right`, the 4:3 button the pan-scan columns of these, both from the place's x; the defaults are
/// those of the bands of one to three big thumbnails.
struct ButtonShape {
    int rowsAbove;             ///< From the place's y to the top, on the page.
    bool topInDouble = false;  ///< Is the top's row computed in double precision?
    int left = 20, right = 480;
    int inset = 10;  ///< Rows of the 16:9 button below the top and above the bottom.
    int strip = 0;   ///< Rows of a 16:9 button that is only a strip; 0 for a whole one.
    int cut = 80;    ///< Columns that the 4:3 map takes as cropped on the left.
    double panScanWidth = 640;
    bool panScanWidthInDouble = false;
    bool wholeAreaY = true, wholeAreaHeight = true;  ///< Is the debug area truncated to whole rows?
};

/// One arrangement of thumbnails.
struct ThumbnailLayout {
    std::span<const ThumbnailPlace> places;
    bool isBig;
    Size scaledTo;  ///< What a thumbnail's picture is resized to, whatever its aspect ratio.
    Rect source;    ///< The part of that which is shown, at its own size.
    int shiftX;     ///< From the place's x to the picture's left edge.
    int rightCaptionWidth;  ///< Units, of a caption that is aligned to the right.
    ButtonShape button;

    /// Place `index`, 0 or above; indices beyond the last place give the last one.
    const ThumbnailPlace& place(std::size_t index) const;

    /// The picture that place `index` shows.
    PictureLayer picture(const std::string& file, std::size_t index) const;
};

/// Main menus of one to four thumbnails have a big layout each, all other pages the grid of nine.
const ThumbnailLayout& thumbnailLayout(bool isMainMenu, std::size_t thumbnails);

}  // namespace tkv
