#pragma once

#include <array>
#include <cstdint>
#include <vector>

// struct ASS_Image, as libass declares it.
struct ass_image;

namespace tkv::disc {

/// Pixels of a subpicture have four values, each of which has a colour.
inline constexpr std::size_t kSubpictureColors = 4;

/// Subtitles as a disc has them: pixels of four values, of which 0 shows the film.
struct SubtitlePicture {
    int x = 0, y = 0, width = 0, height = 0;  ///< in the raster, from the top left; all even
    std::vector<std::uint8_t> pixels;         ///< row by row, from the top; none: nothing is shown
    std::array<std::uint32_t, kSubpictureColors> colors{};  ///< RRGGBB, of the values above 0

    bool isEmpty() const { return pixels.empty(); }
    bool operator==(const SubtitlePicture&) const = default;
};

using SubtitleColors = std::array<std::uint32_t, kSubpictureColors>;

/// Premultiplied, each from 0 to 1.
struct SubtitlePixel {
    float red = 0, green = 0, blue = 0, alpha = 0;
};

/// The mean of two colours RRGGBB.
std::uint32_t colorBetween(std::uint32_t a, std::uint32_t b);

/// The pixels of a picture, whose place, size and colours are known, as the nearest of its colours,
/// or of none. Rows and columns at its edges in which nothing is shown are left out.
SubtitlePicture quantised(SubtitlePicture picture, const std::vector<SubtitlePixel>& pixels);

/// What libass has drawn, in the colour of its outlines, that of its letters, and one between the
/// two; where letters have a second colour, that takes the place of the one between.
SubtitlePicture pictureOf(const ass_image* images);

}  // namespace tkv::disc
