#pragma once

// Draws a sheet of paper that is printed at its own size:
//
//     tkv::Sheet sheet{297, 210, "Our summer"};
//     sheet.items.push_back(tkv::SheetFill{{20, 20, 50, 30}, {tkv::kOrange}});
//     if (const auto pdf = tkv::sheetPdf(sheet)) tkv::writeFile("sheet.pdf", *pdf);

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "graphics/formats.h"
#include "graphics/geometry.h"
#include "graphics/text.h"

namespace tkv {

/// A rectangle on a sheet, in millimetres from the sheet's top left corner, y downwards.
struct SheetPlace {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
};

/// A rectangle of a colour, or of several from its top to its bottom, evenly apart, that flow into
/// each other; a line, too, is one.
struct SheetFill {
    SheetPlace place;
    std::vector<Color> colors;  ///< at least one
};

/// A picture that fills a rectangle.
struct SheetPicture {
    SheetPlace place;
    Bytes jpeg;      ///< a whole file, which goes into the PDF as it is
    PixelSize size;  ///< of that picture
};

enum class SheetEdge { top, middle, bottom };

/// A text, wrapped at its words. It is set as large as it fits into its place; where it does not
/// even at its smallest, it ends in an ellipsis.
struct SheetText {
    std::string text;  ///< any bytes; as one paragraph, without what linesToDraw drops
    SheetPlace place;
    double points = 10;       ///< at the largest
    double leastPoints = 10;  ///< at the smallest
    int mostLines = 1;
    Color color = kBlack;
    Alignment alignment = Alignment::left;  ///< the sheet's left, also of right-to-left scripts
    SheetEdge edge = SheetEdge::top;        ///< of the place, at which the lines stand
    bool isBold = false;
    bool isTurned = false;  ///< by a quarter turn clockwise: its lines run down the place
};

using SheetItem = std::variant<SheetFill, SheetPicture, SheetText>;

struct Sheet {
    double width = 0;              ///< of the paper, in millimetres
    double height = 0;             ///< the same
    std::string title;             ///< of the document; may be empty
    std::vector<SheetItem> items;  ///< the later ones above the earlier
};

/// The sheet as a PDF file of one page that holds its fonts; the same bytes for the same sheet.
/// None without the desktop module, and where the drawing library fails. Throws std::bad_alloc.
std::optional<Bytes> sheetPdf(const Sheet& sheet);

}  // namespace tkv
