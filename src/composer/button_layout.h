#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "composer/thumbnail_layout.h"
#include "graphics/geometry.h"

// Where the buttons of a menu lie in the video raster. Page positions grow upwards from the bottom
// left; raster rows are counted downwards from the top.

namespace tkv {

/// A button's rectangle in the video raster: columns x0 to x1, rows y0 to y1 from the top left.
struct ButtonRect {
    int x0;
    int y0;
    int x1;
    int y1;
    bool operator==(const ButtonRect&) const = default;
};

/// One button on a 16:9 display and on a 4:3 display in pan-scan mode.
struct ButtonRects {
    ButtonRect wide;
    ButtonRect panScan;
    bool operator==(const ButtonRects&) const = default;
};

/// The raster that page rows are mapped into.
struct Raster {
    int height;     ///< Rows: 576 or 480.
    float yFactor;  ///< Rows of the raster for one row of the page.
};

/// The button of the thumbnail at `index` in its layout; coordinates not yet rounded to even.
ButtonRects thumbnailButton(const ThumbnailLayout& layout, std::size_t index, const Raster& raster);

/// The button of a navigation label at a page position; coordinates not yet rounded to even.
ButtonRects navigationButton(int x, int y, const Raster& raster);

/// What a thumbnail and a navigation button cover on the overlay canvas, for its debug picture.
Rect thumbnailArea(const ThumbnailLayout& layout, std::size_t index, const Raster& raster);
Rect navigationArea(int x, int y, const Raster& raster);

/// The lines of the buttons in the map of each display.
struct ButtonMap {
    std::string wide;
    std::string panScan;

    /// Appends a button's lines, its coordinates rounded to even numbers.
    void add(std::string_view name, const ButtonRects& button);
};

}  // namespace tkv
