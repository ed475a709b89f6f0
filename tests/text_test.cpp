#include "graphics/text.h"

#include <cmath>
#include <regex>

#include "composer/page_texts.h"
#include "support.h"

namespace tkv::test::texts {

using enum Alignment;

constexpr PixelSize kCanvas{720, 540};

TextAttributes plain(float size, Alignment alignment = left) {
    return {size, alignment, Shadow{withAlpha(kBlack, 0)}, kWhite};
}

/// The pixels of the canvas that are lit, as columns and rows from the top left.
struct Ink {
    int left = kCanvas.width, top = kCanvas.height, right = 0, bottom = 0;
};

Ink inkOf(const std::string& text, const TextAttributes& attributes, const TextPlace& place) {
    Ink ink;
    const auto placed = rasterizeText(text, attributes, place, kCanvas);
    for (int y = 0; y < placed->pixels.height(); ++y) {
        for (int x = 0; x < placed->pixels.width(); ++x) {
            if (pixel(placed->pixels, x, y).alpha < 40) continue;
            ink = {std::min(ink.left, placed->left + x), std::min(ink.top, placed->top + y),
                   std::max(ink.right, placed->left + x + 1),
                   std::max(ink.bottom, placed->top + y + 1)};
        }
    }
    return ink;
}

bool sameDrawing(const std::optional<PlacedBitmap>& a, const std::optional<PlacedBitmap>& b) {
    return a && b && a->left == b->left && a->top == b->top &&
           a->pixels.size() == b->pixels.size() && worstDifference(a->pixels, b->pixels) == 0;
}

TEST(Text, StandsAtAPointOnTheBottomOfItsLineBox) {
    // DejaVu Sans: ascent 0.928, descent 0.236, capitals 0.729 of the size. The box of size 100 is
    // 93 + 24 pixels high and ends at row 540 - 50.
    const Ink h = inkOf("H", plain(100), Point{200, 50});
    EXPECT_EQ(h.bottom, 490 - 24);
    EXPECT_NEAR(h.top, 490 - 24 - 72.9, 1);
    EXPECT_NEAR(h.left, 210, 2);
    // Two lines stand on top of each other, the last at the bottom.
    const Ink two = inkOf("H\nH", plain(100), Point{200, 50});
    EXPECT_EQ(two.bottom, h.bottom);
    EXPECT_EQ(two.top, h.top - 117);
}

TEST(Text, OfARowStandsOnOneBaselineBelowItsThumbnails) {
    for (const auto& [alignment, place] : {std::pair{left, TextPlace(Point{130, 208})},
                                           {right, Rect{350, 208, 160, 14}},
                                           {center, Rect{270, 208, 180, 14}}}) {
        EXPECT_EQ(inkOf("H", plain(11, alignment), place).bottom, 540 - 208 - 3);
        // Where all is in another face it stands where the point is in the page's own.
        for (const std::string others : {"夏", "🎉", "\u0BF8", "ཀྵྨ"})
            EXPECT_EQ(inkOf(others, plain(40, alignment), place).top,
                      inkOf(others + ".", plain(40, alignment), place).top)
                << others;
    }
    // An accent comes no nearer than a fifth of a row.
    const auto accents = rasterizeText("ÉÀÊÅÑŮЙ", plain(11), Rect{270, 208, 180, 14}, kCanvas);
    EXPECT_EQ(accents->top, 540 - 221 - 1);
    for (int x = 0; x < accents->pixels.width(); ++x)
        EXPECT_LT(pixel(accents->pixels, x, 0).alpha, 64);
}

TEST(Text, IsPlacedByWhatShowsAndByNoDirection) {
    for (const auto& [text, same] : {std::pair{"\n \r\n\u3000H", "H"},
                                     {"H\n\u2028\n", "H"},
                                     {" \tH\u00A0 ", "H"},
                                     {"\x01H\x1B\x7F\u0090", "H"},
                                     {"H \r\nHH\v", "H\nHH"},
                                     {"H\u2029\u0085 H", "H\n\n H"},
                                     {"Hello\nש", "Hello\n\u200Eש"},
                                     {"שלום\nH\nש", "\u200Eשלום\nH\n\u200Eש"}}) {
        for (const TextPlace& place :
             {TextPlace(Point{200, 50}), TextPlace(Rect{200, 50, 300, 60})}) {
            EXPECT_TRUE(sameDrawing(rasterizeText(text, plain(16, right), place, kCanvas),
                                    rasterizeText(same, plain(16, right), place, kCanvas)))
                << same;
        }
    }
}

TEST(Text, StartsAtTheTopOfARectangleAndIsCutToItsWidth) {
    const Rect rect{100, 200, 180, 14};
    const Ink h = inkOf("H", plain(11), rect);
    EXPECT_NEAR(h.bottom, 540 - 214 + 0.928 * 11, 1);

    const std::string longText(300, 'm');
    for (const Alignment alignment : {left, right, center}) {
        const Ink cut = inkOf(longText, plain(11, alignment), rect);
        EXPECT_GE(cut.left, 99);
        EXPECT_LE(cut.right, 281);
        EXPECT_GT(cut.right - cut.left, 165) << "as much as fits";
        const int spare = alignment == left ? cut.left - 100 : 280 - cut.right;
        EXPECT_NEAR(alignment == center ? cut.left - 100 : 1, spare, 1) << "where it is aligned";
    }
    // At a point a line is cut at the page's edge.
    const std::string two = longText + "g\n" + longText;
    EXPECT_TRUE(sameDrawing(rasterizeText(two, plain(11), Point{500, 200}, kCanvas),
                            rasterizeText(two, plain(11), Rect{500, 200, 220, 28}, kCanvas)));
    // What is shown ends in three dots on the baseline, whatever was cut off.
    EXPECT_EQ(inkOf(longText, plain(11), rect).right,
              inkOf(longText + "gH", plain(11), rect).right);
    const Ink centered = inkOf("word", plain(11, center), rect);
    EXPECT_NEAR(centered.left - 100, 280 - centered.right, 2.5);
    // Right is the page's right for every script.
    for (const char* text : {"right", "שלום", "مرحبا"}) {
        EXPECT_NEAR(inkOf(text, plain(11, right), rect).right, 280, 3) << text;
        EXPECT_NEAR(inkOf(text, plain(11, left), rect).left, 100, 3) << text;
    }
    // A second line that does not fit is left out, one that fits is not.
    EXPECT_EQ(inkOf("H\ng", plain(11), rect).bottom, h.bottom);
    EXPECT_GT(inkOf("H\ng", plain(11), Rect{100, 184, 180, 30}).bottom, h.bottom + 10);
}

TEST(Text, ScriptsAreShapedAndOrdered) {
    const auto drawn = [](const char* text) {
        return std::move(rasterizeText(text, plain(40), Point{20, 200}, kCanvas).value().pixels);
    };
    // Joined Arabic letters are narrower than the same letters kept apart.
    EXPECT_LT(drawn("ببب").width(), drawn("ب\u200Cب\u200Cب").width() - 5);
    // A Hebrew word starts on the right: only its first letter, shin, reaches down to the baseline,
    // the yods after it hang above.
    const Bitmap word = drawn("שיייי");
    int lowest[2] = {0, 0};
    for (int x = 0; x < word.width(); ++x)
        lowest[x * 2 / word.width()] += pixel(word, x, word.height() - 2).alpha;
    EXPECT_EQ(lowest[0], 0);
    EXPECT_GT(lowest[1], 300);
    // Scripts that the font lacks come from others, not as boxes: two signs differ.
    for (const auto& [one, other] : {std::pair{"夏", "海"}, {"の", "を"}, {"🎉", "🚢"}}) {
        const Bitmap first = drawn(one), second = drawn(other);
        EXPECT_TRUE(first.size() != second.size() || worstDifference(first, second) > 0) << one;
    }
    const Bitmap emoji = drawn("🎉");
    const Rgba middle = pixel(emoji, emoji.width() / 2, emoji.height() / 2);
    EXPECT_GT(std::abs(middle.red - middle.blue), 60) << "in colour";
    for (const char* sign : {"🎉", "█"}) {
        TextAttributes faint = plain(40);
        faint.color.alpha = 0.4F;
        const auto placed = rasterizeText(sign, faint, Point{20, 200}, kCanvas);
        const Bitmap& pixels = placed->pixels;
        const Rgba center = pixel(pixels, pixels.width() / 2, pixels.height() / 2);
        EXPECT_NEAR(center.alpha, 102, 1) << sign;
    }
}

TEST(Text, CastsASoftShadowBelow) {
    // A bar as wide as a page: its shadow only fades upwards and downwards.
    const std::string text = "████████";
    const TextAttributes style{40, left, Shadow{kBlack, 0, -1.5, 5.0}, kWhite};
    const auto placed = rasterizeText(text, style, Point{100, 200}, kCanvas);
    ASSERT_TRUE(placed);
    const Ink bar = inkOf(text, plain(40), Point{100, 200});
    const int column = (bar.left + bar.right) / 2 - placed->left;
    const auto at = [&](int row) { return pixel(placed->pixels, column, row - placed->top); };
    EXPECT_EQ(at(bar.top + 5), (Rgba{255, 255, 255, 255}));
    EXPECT_EQ(at(bar.bottom + 1).red, 0) << "black";
    // Gaussian of deviation 2.5 moved down by 1.5: half strength 1.5 pixels below the edge.
    for (int below = 0; below < 9; ++below) {
        const double expected = 127.5 * std::erfc((below - 1.0) / 2.5 / std::sqrt(2.0));
        EXPECT_NEAR(at(bar.bottom + below).alpha, expected, 6) << below;
        EXPECT_GE(at(bar.bottom + below).alpha, at(bar.top - 1 - below).alpha) << below;
    }
}

TEST(Module, HasNoVariableOfTheProgram) {
    const fs::path lib = fs::path(toolPath()).parent_path().parent_path() / "lib";
    // What both had would be set in one and read in the other. (Caches in functions may be there.)
    EXPECT_EQ(run("nm -C " + quoted(lib / "tkvDvdMenuImg/tkv_desktop.so") +
                  " | grep -E ' [bBdD] tkv::(.anonymous namespace.::)?[a-z][A-Za-z]*$' || true"),
              "");
}

TEST(Program, LooksForLibrariesBesideItselfAlone) {
    EXPECT_TRUE(
        std::regex_search(run("readelf -d " + quoted(toolPath())),
                          std::regex(R"(R(UN)?PATH.*\[\$ORIGIN/\.\./lib/tkvDvdMenuImg\])")));
}

TEST(Text, StrangeTextsDrawWhatTheyCan) {
    for (const float size : {0.0F, -3.0F, std::nanf("")})
        EXPECT_FALSE(rasterizeText("text", plain(size), Point{10, 10}, kCanvas)) << size;
    EXPECT_FALSE(rasterizeText(" \n\x01", plain(11), Point{10, 10}, kCanvas));
    for (const Point& off : {Point{900, 10}, {10, 900}})
        EXPECT_FALSE(rasterizeText("off the page", plain(11), off, kCanvas));
    EXPECT_TRUE(rasterizeText("caf\xE9 \xFF\xFE", plain(11), Point{10, 10}, kCanvas));
}

}  // namespace tkv::test::texts
