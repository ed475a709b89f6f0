#pragma once

#include <optional>
#include <string>
#include <variant>

#include "graphics/drawing.h"
#include "graphics/geometry.h"
#include "graphics/shadow.h"

namespace tkv {

enum class Alignment { left = 0, right = 1, center = 2, justified = 3 };

/// The look of a text; one sans-serif font serves all.
struct TextAttributes {
    float fontSize = 11;  ///< Pixels per em; a text without a positive size draws nothing.
    Alignment alignment = Alignment::left;
    Shadow shadow;
    Color color = kWhite;
    bool operator==(const TextAttributes&) const = default;
    auto operator<=>(const TextAttributes&) const = default;
};

/// Where a text stands, in drawing units of the canvas. At a point: the bottom-left corner of its
/// box, each line from there to the right edge of the canvas at most. In a rectangle: the first
/// line's top at the rectangle's top, lines aligned in its width; lines after the first that do not
/// fit into its height are left out. A line that is too wide is ellipsized at its end. The line
/// height is the font's ascent plus its descent, each in whole pixels: 14 at size 11.
using TextPlace = std::variant<Point, Rect>;

/// Lays a text out for a canvas, shapes it, and draws it with its shadow. `text`: any bytes; what
/// is not UTF-8 shows as U+FFFD, and what linesToDraw drops does not show. None when nothing of it
/// would show on the canvas. Throws std::bad_alloc.
std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas);

/// The letters of a text that show as boxes, since no installed font has a glyph for them. Those
/// that show nothing, such as joiners, are not among them. `text`: as for rasterizeText. Empty
/// without the module.
std::u32string lettersWithoutFont(const std::string& text);

/// The fonts in which glyphs are looked up, one per line and in order: the primary font, then the
/// fallback fonts as the user's language prefers them. Texts look the same where this is the same;
/// empty without the module. Takes some hundredths of a second.
std::string fallbackFaces();

}  // namespace tkv
