#pragma once

#include <string>
#include <variant>
#include <vector>

#include "graphics/geometry.h"
#include "graphics/text.h"
#include "system/files.h"

// A page as data: what stands where, in the order of drawing. Positions are in pixels of the
// canvas, origin at the bottom-left corner. Pages with equal layers are the same picture.

namespace tkv {

/// A rectangle of one colour that replaces what is below it.
struct FillLayer {
    Rect area;
    Color color;
    bool operator==(const FillLayer&) const = default;
    auto operator<=>(const FillLayer&) const = default;
};

/// A picture file, scaled to `scaledTo`; its part `source` (in units of that size) is drawn at
/// `opacity` into `destination`, over what is below. A file that is no picture draws nothing.
struct PictureLayer {
    std::string file;  ///< Tilde expanded.
    FileStamp stamp;   ///< The state of the file that is meant.
    Size scaledTo;
    Rect source;
    Rect destination;
    float opacity = 1;
    bool isNamed = false;  ///< By the request itself: when it shows nothing, a line says why.
    bool operator==(const PictureLayer&) const = default;
    auto operator<=>(const PictureLayer&) const = default;
};

enum class LetterCase { asItIs, capitalized, upper };

/// A text with its shadow. An empty one draws nothing.
struct TextLayer {
    std::string text;
    LetterCase letterCase = LetterCase::asItIs;
    TextAttributes attributes;
    TextPlace place;
    PixelSize laidOutOn{};  ///< The canvas that `place` means; of no size: the page's own.
    bool operator==(const TextLayer&) const = default;
    auto operator<=>(const TextLayer&) const = default;
};

using Layer = std::variant<FillLayer, PictureLayer, TextLayer>;

/// A whole page; the canvas is transparent before its first layer.
struct Page {
    PixelSize canvas;
    std::vector<Layer> layers;
    bool operator==(const Page&) const = default;
    auto operator<=>(const Page&) const = default;
};

/// The page on a canvas of another size: pictures and fills take other places, and texts are scaled
/// as they were laid out.
Page scaledTo(Page page, PixelSize canvas);

/// The layer of a picture that the request itself names.
PictureLayer named(PictureLayer layer);

/// A layer that shows the whole of a picture file in `destination`, scaled to it.
PictureLayer wholePicture(const std::string& path, const Rect& destination, float opacity);

}  // namespace tkv
