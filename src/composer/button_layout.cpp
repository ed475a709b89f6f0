#include "composer/button_layout.h"

#include <fmt/format.h>

#include "composer/navigation.h"
#include "composer/page_geometry.h"
#include "utils/numbers.h"

namespace tkv {

namespace {

// Conversions to int truncate towards zero. Products and sums are computed in single precision,
// except for the two that a shape names.

/// The raster row of a vertical page position.
int rowOf(int y, const Raster& raster) {
    return static_cast<int>(static_cast<float>(raster.height) -
                            static_cast<float>(y) * raster.yFactor);
}

int topRow(const ButtonShape& shape, int y, const Raster& raster) {
    const int top = y + shape.rowsAbove;
    if (!shape.topInDouble) return rowOf(top, raster);
    return static_cast<int>(raster.height - double{raster.yFactor} * top);
}

/// The column on a 4:3 display of what is `fromCut` columns right of the cropped part.
float panScanColumn(int fromCut) {
    return static_cast<float>(fromCut) * kRatioPanscan;
}

int panScanRight(float left, double width) {
    return static_cast<int>(left + static_cast<float>(width));
}

std::string lineOf(std::string_view name, const ButtonRect& rect) {
    constexpr auto even = [](int value) { return nbMultipleArrondi(value, 2); };
    // Sequenced, since each rounding writes a line.
    const int x0 = even(rect.x0);
    const int y0 = even(rect.y0);
    const int x1 = even(rect.x1);
    const int y1 = even(rect.y1);
    return fmt::format("<button name=\"{}\" x0=\"{}\" y0=\"{}\" x1=\"{}\" y1=\"{}\" />\n", name, x0,
                       y0, x1, y1);
}

}  // namespace

ButtonRects thumbnailButton(const ThumbnailLayout& layout, std::size_t index,
                            const Raster& raster) {
    constexpr int kInset = 10;
    const ButtonShape& shape = layout.button;
    const ThumbnailPlace& place = layout.place(index);
    const int top = topRow(shape, place.y, raster);
    const int bottom = rowOf(place.y, raster);
    const int wideTop = top + shape.inset;
    const int wideBottom = shape.strip > 0 ? wideTop + shape.strip : bottom - shape.inset;
    const float left = panScanColumn(place.x - shape.cut);
    const int right = shape.panScanWidthInDouble
                          ? static_cast<int>(double{left} + shape.panScanWidth)
                          : panScanRight(left, shape.panScanWidth);
    return {{place.x + shape.left, wideTop, place.x + shape.right, wideBottom},
            {static_cast<int>(left) + kInset, top + kInset, right - kInset, bottom - kInset}};
}

ButtonRects navigationButton(int x, int y, const Raster& raster) {
    const int row = rowOf(y, raster);
    const float left = panScanColumn(x - kCropPanscan);
    return {{x, row - 19, x + kNavigationWidth, row + 4},
            {static_cast<int>(left), row - 19, panScanRight(left, kPanScanOf160), row + 4}};
}

Rect thumbnailArea(const ThumbnailLayout& layout, std::size_t index, const Raster& raster) {
    const ThumbnailPlace& place = layout.place(index);
    const auto scaled = [&](double units) { return static_cast<float>(units) * raster.yFactor; };
    const auto whole = [](float units) { return static_cast<double>(static_cast<int>(units)); };
    const ButtonShape& shape = layout.button;
    const float y = scaled(place.y);
    const float height = scaled(layout.source.height);
    return {static_cast<double>(place.x + layout.shiftX), shape.wholeAreaY ? whole(y) : double{y},
            layout.source.width, shape.wholeAreaHeight ? whole(height) : double{height}};
}

Rect navigationArea(int x, int y, const Raster& raster) {
    const int row = static_cast<int>(static_cast<float>(y) * raster.yFactor);
    return {static_cast<double>(x), static_cast<double>(row - 4), kNavigationWidth, 3};
}

void ButtonMap::add(std::string_view name, const ButtonRects& button) {
    wide += lineOf(name, button.wide);
    panScan += lineOf(name, button.panScan);
}

}  // namespace tkv
