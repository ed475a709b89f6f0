#include "graphics/text.h"

#include "fuzzing.h"
#include "graphics/drawing.h"
#include "system/unicode.h"

// Any bytes as a text: its letter case, its lines, and how it is drawn.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

void checkCase(const std::string& text) {
    const std::string valid = validUtf8(text);
    require(isUtf8(valid) && validUtf8(valid) == valid, "a text is made valid once");
    require(characterCount(valid) <= valid.size(), "characters are counted");
    for (const std::string& made : {upperCased(text), capitalized(text), latinLetters(text),
                                    printable(text), firstColumns(printable(text), 20)})
        require(isUtf8(made), "a text stays valid");
    require(upperCased(upperCased(text)) == upperCased(text), "capitals stay");
    for (const std::string& line : linesToDraw(text))
        require(isUtf8(line) && line.find('\n') == std::string::npos, "a line is one");
}

TextPlace placeOf(Input& input) {
    const Point corner{input.between(-60, 220), input.between(-60, 160)};
    if (input.flag()) return corner;
    return Rect{corner.x, corner.y, input.between(0, 200), input.between(0, 80)};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    scratchFolder();
    Input input(data, size);
    constexpr PixelSize kCanvas{160, 100};
    TextAttributes look;
    look.fontSize = static_cast<float>(input.between(0, 60));
    look.alignment = static_cast<Alignment>(input.below(4));
    look.shadow = {kBlack, input.between(-9, 9), input.between(-9, 9), input.between(0, 12)};
    const TextPlace place = placeOf(input);
    const std::string text = input.rest();
    checkCase(text);
    const auto placed = rasterizeText(text, look, place, kCanvas);
    if (!placed) return 0;
    requireSound(placed->pixels);
    const int reach = 2 * shadowReach(look.shadow);
    require(placed->pixels.width() <= kCanvas.width + reach &&
                placed->pixels.height() <= kCanvas.height + reach,
            "a text is no larger than its canvas and its shadow");
    Bitmap canvas = Bitmap::create(kCanvas).value();
    require(blend(canvas, *placed, 0.7), "a text can be drawn");
    requireSound(canvas);
    return 0;
}
