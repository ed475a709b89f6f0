#include "composer/button_layout.h"

#include <fmt/format.h>

#include <array>

#include "utils/numbers.h"

namespace tkv {

namespace {

// Conversions to int cut towards zero. Products and sums are made in single precision, but for the
// two in double precision below, which players' buttons have always been placed by.

/// The row of a page height.
int rowOf(int y, const Raster& raster) {
    return static_cast<int>(static_cast<float>(raster.height) -
                            static_cast<float>(y) * raster.yFactor);
}

/// The row of the top of a picture of 180 rows; in double precision.
int rowOf180Above(int y, const Raster& raster) {
    return static_cast<int>(raster.height - (y + 180.0) * double{raster.yFactor});
}

int rowOf120Above(int y, const Raster& raster) {
    return rowOf(y + 120, raster);
}
int rowOf360Above(int y, const Raster& raster) {
    return rowOf(y + 360, raster);
}

/// The column on a 4:3 display of what stands `fromCut` columns right of the part cut off.
float panScanColumn(int fromCut) {
    return static_cast<float>(fromCut) * kRatioPanscan;
}

int rightOfWhole(float left) {
    return static_cast<int>(left + 640.0F);
}
/// In double precision.
int rightOfHalf(float left) {
    return static_cast<int>(double{left} + 320.00000953674316);
}
int rightOfThird(float left) {
    return static_cast<int>(left + 213.33334F);
}

/// How the buttons of a layout lie on its thumbnails.
struct ButtonShape {
    int (*top)(int y, const Raster& raster);
    int left, right;  ///< Of the 16:9 button, from the place's x.
    int inset;        ///< Of the 16:9 button, below the top and above the bottom.
    int strip;        ///< Rows of a 16:9 button that is but a strip; 0 for a whole one.
    int cut;          ///< Columns that the 4:3 map takes for cut off on the left.
    int (*panScanRight)(float left);
};

/// A single big thumbnail has a strip of 30 rows for a button on wide displays, and the buttons of
/// four are not inset there: both are intended.
constexpr ButtonShape kOneBig{rowOf360Above, 20, 480, 10, 30, 80, rightOfWhole};
constexpr ButtonShape kTwoBig{rowOf180Above, 20, 480, 10, 0, 80, rightOfWhole};
constexpr ButtonShape kThreeBig{rowOf120Above, 20, 480, 10, 0, 80, rightOfWhole};
constexpr ButtonShape kFourBig{rowOf180Above, 0, 240, 0, 0, kCropPanscan, rightOfHalf};
constexpr ButtonShape kGrid{rowOf120Above, 10, 150, 10, 0, kCropPanscan, rightOfThird};
constexpr std::array kBigShapes{kOneBig, kTwoBig, kThreeBig, kFourBig};

const ButtonShape& shapeOf(const ThumbnailLayout& layout) {
    return layout.isBig ? kBigShapes[layout.places.size() - 1] : kGrid;
}

std::string lineOf(std::string_view name, const ButtonRect& rect) {
    constexpr auto even = [](int value) { return nbMultipleArrondi(value, 2); };
    // One after the other: each rounding writes a line.
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
    const ButtonShape& shape = shapeOf(layout);
    const ThumbnailPlace& place = layout.place(index);
    const int top = shape.top(place.y, raster);
    const int bottom = rowOf(place.y, raster);
    const int wideTop = top + shape.inset;
    const int wideBottom = shape.strip > 0 ? wideTop + shape.strip : bottom - shape.inset;
    const float left = panScanColumn(place.x - shape.cut);
    return {{place.x + shape.left, wideTop, place.x + shape.right, wideBottom},
            {static_cast<int>(left) + kInset, top + kInset, shape.panScanRight(left) - kInset,
             bottom - kInset}};
}

ButtonRects navigationButton(int x, int y, const Raster& raster) {
    const int row = rowOf(y, raster);
    const float left = panScanColumn(x - kCropPanscan);
    return {{x, row - 19, x + 160, row + 4},
            {static_cast<int>(left), row - 19, rightOfThird(left), row + 4}};
}

Rect thumbnailArea(const ThumbnailLayout& layout, std::size_t index, const Raster& raster) {
    const ThumbnailPlace& place = layout.place(index);
    const auto scaled = [&](double units) { return static_cast<float>(units) * raster.yFactor; };
    const auto whole = [](float units) { return static_cast<double>(static_cast<int>(units)); };
    // One big thumbnail's height and four's positions are not cut to whole rows.
    const bool isOne = layout.isBig && layout.places.size() == 1;
    const bool isFour = layout.isBig && layout.places.size() == 4;
    const float y = scaled(place.y);
    const float height = scaled(layout.source.height);
    return {static_cast<double>(place.x + layout.shiftX), isFour ? double{y} : whole(y),
            layout.source.width, isOne ? double{height} : whole(height)};
}

Rect navigationArea(int x, int y, const Raster& raster) {
    const int row = static_cast<int>(static_cast<float>(y) * raster.yFactor);
    return {static_cast<double>(x), static_cast<double>(row - 4), 160, 3};
}

void ButtonMap::add(std::string_view name, const ButtonRects& button) {
    wide += lineOf(name, button.wide);
    panScan += lineOf(name, button.panScan);
}

}  // namespace tkv
