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

TEST(Text, StandsAtAPointOnTheBottomOfItsLineBox) {
    // DejaVu Sans: ascent 0.928, descent 0.236, capitals 0.729 of the size. The box of 100 pixels
    // ends at row 540 - 50, its baseline 23.6 above that.
    const Ink h = inkOf("H", plain(100), Point{200, 50});
    EXPECT_NEAR(h.bottom, 490 - 23.6, 1);
    EXPECT_NEAR(h.top, 490 - 23.6 - 72.9, 1);
    EXPECT_NEAR(h.left, 210, 2);
    // Two lines stand on top of each other, the last at the bottom.
    const Ink two = inkOf("H\nH", plain(100), Point{200, 50});
    EXPECT_EQ(two.bottom, h.bottom);
    EXPECT_NEAR(two.top, h.top - 116.4, 1.5);
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
    }
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
    // Writable data: what both had would be set in one and read in the other.
    EXPECT_EQ(run("nm -C " + quoted(lib / "tkvDvdMenuImg/tkv_desktop.so") +
                  " | grep ' [bBdD] .*tkv::' | grep -v tkv::desktop:: || true"),
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
    EXPECT_FALSE(rasterizeText("   ", plain(11), Point{10, 10}, kCanvas));
    EXPECT_FALSE(rasterizeText("off the page", plain(11), Point{900, 10}, kCanvas));
    EXPECT_TRUE(rasterizeText("caf\xE9 \xFF\xFE", plain(11), Point{10, 10}, kCanvas));
}

}  // namespace tkv::test::texts
