#include "disc/make/highlight.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

namespace tkv::disc {

namespace {

// Light between dark lines is seen on every picture, whatever is on it. A subpicture has four
// values: nothing, light, dark, and the dot that keeps players from cutting it to nothing.
//
// White itself is what button maps call transparent.
constexpr std::uint32_t kHighlighted = 0xFFFEFEFE;
constexpr std::uint32_t kSelected = 0xFFFF8000;  // The labels' orange.
constexpr std::uint32_t kDark = 0xCC000000;
constexpr std::uint32_t kNothing = 0;

/// A line within all four edges, in rows and columns. On an interlaced display one of a single row
/// would flicker.
struct FrameLine {
    bool isLight;
    int width;
    int above;  ///< its width along the upper edge
};

// From the edge inwards. A label's capitals have their accents close to its upper edge, and its
// lower edge may touch a thumbnail.
constexpr FrameLine kThumbnailLines[] = {{false, 2, 2}, {true, 4, 4}, {false, 2, 2}};
constexpr FrameLine kLabelLines[] = {{false, 2, 0}, {true, 2, 2}};

std::span<const FrameLine> linesOf(bool isThumbnail) {
    if (isThumbnail) return kThumbnailLines;
    return kLabelLines;
}

constexpr std::uint32_t lightOf(ButtonState state) {
    return state == ButtonState::highlighted ? kHighlighted : kSelected;
}

void fill(Bitmap& picture, const ButtonRect& rect, std::uint32_t pixel) {
    const int left = std::max(rect.x0, 0);
    const int right = std::min(rect.x1, picture.width());
    const int bottom = std::min(rect.y1, picture.height());
    for (int y = std::max(rect.y0, 0); y < bottom && left < right; ++y)
        std::fill(picture.row(y) + left, picture.row(y) + right, pixel);
}

// spumux gives whatever is beside the buttons the first value of a button, and some players light a
// column and a row beside them.
void openCorners(Bitmap& picture, const ButtonRect& rect) {
    for (const int x : {rect.x0, rect.x1 - 1}) {
        for (const int y : {rect.y0, rect.y1 - 1})
            fill(picture, {x, y, x + 1, y + 1}, kNothing);
    }
}

}  // namespace

std::optional<Bitmap> highlightPicture(std::span<const ButtonRect> buttons, std::size_t thumbnails,
                                       Standard standard, ButtonState state) {
    std::optional<Bitmap> picture = Bitmap::create({kRasterWidth, factsOf(standard).rasterHeight});
    if (!picture) return std::nullopt;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        ButtonRect rest = buttons[i];
        for (const auto& [isLight, width, above] : linesOf(i < thumbnails)) {
            fill(*picture, rest, isLight ? lightOf(state) : kDark);
            rest = {rest.x0 + width, rest.y0 + above, rest.x1 - width, rest.y1 - width};
        }
        fill(*picture, rest, kNothing);
        openCorners(*picture, buttons[i]);
    }
    return picture;
}

std::string highlightStyle() {
    std::string style = fmt::format("{:X} {:X} {:X}", kHighlighted, kSelected, kDark);
    for (const bool isThumbnail : {true, false}) {
        for (const auto& [isLight, width, above] : linesOf(isThumbnail))
            style += fmt::format(" {} {} {}", isLight ? "light" : "dark", width, above);
        style += ';';
    }
    return style;
}

}  // namespace tkv::disc
