#include "composer/thumbnail_layout.h"

#include <algorithm>
#include <array>

namespace tkv {

namespace {

constexpr std::array<ThumbnailPlace, 9> kGrid{{
    {110, 355, 'l'},
    {280, 355, 'c'},
    {450, 355, 'r'},  //
    {110, 221, 'l'},
    {280, 221, 'c'},
    {450, 221, 'r'},  //
    {110, 87, 'l'},
    {280, 87, 'c'},
    {450, 87, 'r'},
}};
constexpr std::array<ThumbnailPlace, 1> kOneBig{{{110, 87, 'l'}}};
constexpr std::array<ThumbnailPlace, 2> kTwoBig{{{110, 288, 'l'}, {110, 87, 'l'}}};
constexpr std::array<ThumbnailPlace, 3> kThreeBig{
    {{110, 355, 'l'}, {110, 221, 'l'}, {110, 87, 'l'}}};
constexpr std::array<ThumbnailPlace, 4> kFourBig{
    {{110, 288, 'l'}, {370, 288, 'r'}, {110, 87, 'l'}, {370, 87, 'r'}}};

constexpr ThumbnailLayout kGridLayout{.places = kGrid,
                                      .isBig = false,
                                      .scaledTo = {160, 120},
                                      .source = {0, 0, 160, 120},
                                      .shiftX = 0,
                                      .rightCaptionWidth = 160,
                                      .button = {.rowsAbove = 120,
                                                 .left = 10,
                                                 .right = 150,
                                                 .cut = kCropPanscan,
                                                 .panScanWidth = kPanScanOf160}};

/// By the number of thumbnails, from one. The bands of two and three end 60 pixels below the top
/// of the picture; four show the picture's centre quarter at its own scale. A single one has a
/// strip of 30 rows for a button on wide displays, and the buttons of four are not inset there:
/// both are intended.
///
/// What is computed in double precision here changes no button on either raster. But on that of 480
/// rows the top of the upper two of four comes to row 63, and in single precision to 64: the odd
/// one is rounded, and that line is always logged, so it is part of the interface.
constexpr std::array<ThumbnailLayout, 4> kBigLayouts{{
    {.places = kOneBig,
     .isBig = true,
     .scaledTo = {480, 360},
     .source = {0, 0, 480, 360},
     .shiftX = 10,
     .rightCaptionWidth = 160,
     .button = {.rowsAbove = 360, .strip = 30, .wholeAreaHeight = false}},
    {.places = kTwoBig,
     .isBig = true,
     .scaledTo = {480, 360},
     .source = {0, 120, 480, 180},
     .shiftX = 10,
     .rightCaptionWidth = 160,
     .button = {.rowsAbove = 180, .topInDouble = true}},
    {.places = kThreeBig,
     .isBig = true,
     .scaledTo = {480, 360},
     .source = {0, 180, 480, 120},
     .shiftX = 10,
     .rightCaptionWidth = 160,
     .button = {.rowsAbove = 120}},
    {.places = kFourBig,
     .isBig = true,
     .scaledTo = {480, 360},
     .source = {120, 90, 240, 180},
     .shiftX = 0,
     .rightCaptionWidth = 240,
     .button = {.rowsAbove = 180,
                .topInDouble = true,
                .left = 0,
                .right = 240,
                .inset = 0,
                .cut = kCropPanscan,
                .panScanWidth = 320.00000953674316,
                .panScanWidthInDouble = true,
                .wholeAreaY = false}},
}};

}  // namespace

const ThumbnailPlace& ThumbnailLayout::place(std::size_t index) const {
    return places[std::min(index, places.size() - 1)];
}

PictureLayer ThumbnailLayout::picture(const std::string& file, std::size_t index) const {
    const ThumbnailPlace& at = place(index);
    const Rect destination{static_cast<double>(at.x + shiftX), static_cast<double>(at.y),
                           source.width, source.height};
    PictureLayer layer = wholePicture(file, destination, 1.0F);
    layer.scaledTo = scaledTo;
    layer.source = source;
    return layer;
}

const ThumbnailLayout& thumbnailLayout(bool isMainMenu, std::size_t thumbnails) {
    const bool isBig = isMainMenu && thumbnails >= 1 && thumbnails <= kBigLayouts.size();
    // cppcheck-suppress returnTempReference  ; both are constants of one type
    return isBig ? kBigLayouts[thumbnails - 1] : kGridLayout;
}

}  // namespace tkv
