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

constexpr ThumbnailLayout kGridLayout{kGrid, false, {160, 120}, {0, 0, 160, 120}, 0};

/// By the number of thumbnails, from one. The bands of two and three end 60 pixels below the top
/// of the picture; four show the picture's centre quarter at its own scale.
constexpr std::array<ThumbnailLayout, 4> kBigLayouts{{
    {kOneBig, true, {480, 360}, {0, 0, 480, 360}, 10},
    {kTwoBig, true, {480, 360}, {0, 120, 480, 180}, 10},
    {kThreeBig, true, {480, 360}, {0, 180, 480, 120}, 10},
    {kFourBig, true, {480, 360}, {120, 90, 240, 180}, 0},
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
    return isBig ? kBigLayouts[thumbnails - 1] : kGridLayout;
}

}  // namespace tkv
