#include "platform/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "composer/page_texts.h"
#include "support.h"

namespace tkv::test {
namespace {

constexpr PixelSize kCanvas{720, 540};

TextAttributes plain(float size, Alignment alignment = Alignment::left) {
    return {size, alignment, Shadow{withAlpha(kBlack, 0)}, kWhite};
}

/// The pixels of the canvas that are lit, as columns and rows from the top left.
struct Ink {
    int left = kCanvas.width, top = kCanvas.height, right = 0, bottom = 0;
};

Ink inkOf(const std::string& text, const TextAttributes& attributes, const TextPlace& place) {
    Ink ink;
    const auto placed = rasterizeText(text, attributes, place, kCanvas);
    if (!placed) return ink;
    for (int y = 0; y < placed->pixels.height(); ++y) {
        for (int x = 0; x < placed->pixels.width(); ++x) {
            if (pixel(placed->pixels, x, y).alpha < 40) continue;
            ink.left = std::min(ink.left, placed->left + x);
            ink.right = std::max(ink.right, placed->left + x + 1);
            ink.top = std::min(ink.top, placed->top + y);
            ink.bottom = std::max(ink.bottom, placed->top + y + 1);
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
    for (const Alignment alignment : {Alignment::left, Alignment::right, Alignment::center}) {
        const Ink cut = inkOf(longText, plain(11, alignment), rect);
        EXPECT_GE(cut.left, 99);
        EXPECT_LE(cut.right, 281);
        EXPECT_GT(cut.right - cut.left, 165) << "as much as fits";
    }
    // What is shown ends in three dots on the baseline, whatever was cut off.
    EXPECT_EQ(inkOf(longText, plain(11), rect).right,
              inkOf(longText + "gH", plain(11), rect).right);

    const Ink left = inkOf("word", plain(11, Alignment::left), rect);
    const Ink right = inkOf("word", plain(11, Alignment::right), rect);
    const Ink center = inkOf("word", plain(11, Alignment::center), rect);
    EXPECT_NEAR(left.left, 100, 1.5);
    EXPECT_NEAR(right.right, 280, 1.5);
    EXPECT_NEAR(center.left - 100, 280 - center.right, 2.5);
    // A second line that does not fit is left out, one that fits is not.
    EXPECT_EQ(inkOf("H\ng", plain(11), rect).bottom, h.bottom);
    EXPECT_GT(inkOf("H\ng", plain(11), Rect{100, 184, 180, 30}).bottom, h.bottom + 10);
}

TEST(Text, RightIsThePagesRightForEveryScript) {
    const Rect rect{100, 200, 300, 40};
    for (const char* text : {"right", "שלום", "مرحبا"}) {
        EXPECT_NEAR(inkOf(text, plain(20, Alignment::right), rect).right, 400, 3) << text;
        EXPECT_NEAR(inkOf(text, plain(20, Alignment::left), rect).left, 100, 3) << text;
    }
}

TEST(Text, ScriptsAreShapedAndOrdered) {
    const auto width = [](const std::string& text) {
        const Ink ink = inkOf(text, plain(40), Point{20, 200});
        return ink.right - ink.left;
    };
    // Joined Arabic letters are narrower than the same letters kept apart.
    EXPECT_LT(width("ببب"), width("ب\u200Cب\u200Cب") - 5);
    // A Hebrew word starts on the right: only its first letter, shin, reaches down to the baseline,
    // the yods after it hang above.
    const auto word = rasterizeText("שיייי", plain(40), Point{20, 200}, kCanvas);
    const Ink ink = inkOf("שיייי", plain(40), Point{20, 200});
    int lowest[2] = {0, 0};
    for (int x = ink.left; x < ink.right; ++x) {
        for (int row = ink.bottom - 4; row < ink.bottom; ++row) {
            lowest[x * 2 < ink.left + ink.right ? 0 : 1] +=
                pixel(word->pixels, x - word->left, row - word->top).alpha;
        }
    }
    EXPECT_EQ(lowest[0], 0);
    EXPECT_GT(lowest[1], 1000);
    // Scripts that the font lacks come from others, not as boxes: two signs differ.
    for (const auto& [one, other] : {std::pair{"夏", "海"}, {"の", "を"}, {"🎉", "🚢"}}) {
        const auto first = rasterizeText(one, plain(40), Point{20, 200}, kCanvas);
        const auto second = rasterizeText(other, plain(40), Point{20, 200}, kCanvas);
        ASSERT_TRUE(first && second) << one;
        bool differs = first->pixels.size() != second->pixels.size();
        for (int y = 0; !differs && y < first->pixels.height(); ++y) {
            differs =
                !std::equal(first->pixels.row(y), first->pixels.row(y) + first->pixels.width(),
                            second->pixels.row(y));
        }
        EXPECT_TRUE(differs) << one << " looks like " << other;
    }
    const auto emoji = rasterizeText("🎉", plain(40), Point{20, 200}, kCanvas);
    bool coloured = false;
    for (int y = 0; y < emoji->pixels.height(); ++y) {
        for (int x = 0; x < emoji->pixels.width(); ++x) {
            const Rgba p = pixel(emoji->pixels, x, y);
            coloured |= p.alpha > 200 && std::abs(p.red - p.blue) > 60;
        }
    }
    EXPECT_TRUE(coloured);
}

TEST(Text, CastsASoftShadowBelow) {
    // A bar as wide as a page: its shadow only fades upwards and downwards.
    const TextAttributes style{40, Alignment::left, Shadow{kBlack, 0, -1.5, 5.0}, kWhite};
    const auto placed = rasterizeText("████████", style, Point{100, 200}, kCanvas);
    ASSERT_TRUE(placed);
    const Ink bar = inkOf("████████", plain(40), Point{100, 200});
    const int column = (bar.left + bar.right) / 2 - placed->left;
    const auto alphaAt = [&](int row) {
        return pixel(placed->pixels, column, row - placed->top).alpha;
    };
    EXPECT_EQ(pixel(placed->pixels, column, bar.top + 5 - placed->top), (Rgba{255, 255, 255, 255}));
    EXPECT_EQ(pixel(placed->pixels, column, bar.bottom + 1 - placed->top).red, 0) << "black";
    // Gaussian of deviation 2.5 moved down by 1.5: half strength 1.5 pixels below the edge.
    for (int below = 0; below < 9; ++below) {
        const double distance = below + 0.5 - 1.5;
        const double expected = 255 * 0.5 * std::erfc(distance / 2.5 / std::sqrt(2.0));
        EXPECT_NEAR(alphaAt(bar.bottom + below), expected, 6) << below;
        EXPECT_GE(alphaAt(bar.bottom + below), alphaAt(bar.top - 1 - below)) << below;
    }
    // The shadow of a translucent text is as much weaker.
    TextAttributes faint = style;
    faint.color.alpha = 0.5F;
    const auto half = rasterizeText("████████", faint, Point{100, 200}, kCanvas);
    EXPECT_NEAR(pixel(half->pixels, column, bar.bottom + 2 - half->top).alpha,
                alphaAt(bar.bottom + 2) / 2, 4);
}

TEST(Text, StrangeTextsDrawWhatTheyCan) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float size : {0.0F, -3.0F, nan}) {
        EXPECT_FALSE(rasterizeText("text", plain(size), Point{10, 10}, kCanvas)) << size;
    }
    EXPECT_FALSE(rasterizeText("", plain(11), Point{10, 10}, kCanvas));
    EXPECT_FALSE(rasterizeText("   ", plain(11), Point{10, 10}, kCanvas));
    EXPECT_FALSE(rasterizeText("off the page", plain(11), Point{900, 10}, kCanvas));
    EXPECT_TRUE(rasterizeText("caf\xE9 \xFF\xFE", plain(11), Point{10, 10}, kCanvas));
    for (const char* unit : {"w", "été ", "ש", "夏", "a\n", "\u2029"}) {
        std::string text;
        while (text.size() < 100000)
            text += unit;
        for (const TextPlace& place :
             {TextPlace{Point{130, 200}}, TextPlace{Rect{10, 10, 180, 14}}}) {
            const auto placed = rasterizeText(text, plain(11), place, kCanvas);
            if (!placed) continue;  // The first of many lines at a point stands above the page.
            EXPECT_LE(placed->pixels.width(), kCanvas.width + 40);
            EXPECT_LE(placed->pixels.height(), kCanvas.height + 40);
        }
    }
}

TEST(TextStyle, OfCaptions) {
    const struct {
        std::optional<char> letter;
        Alignment alignment;
    } letters[] = {{'l', Alignment::left},      {'r', Alignment::right}, {'c', Alignment::center},
                   {'j', Alignment::justified}, {'x', Alignment::left},  {{}, Alignment::left}};
    for (const auto& [letter, alignment] : letters) {
        EXPECT_EQ(captionTextAttributes(kOrange, letter, 10.6F),
                  (TextAttributes{10.6F, alignment, {kBlack, 0, -1.5, 5.0}, kOrange}));
    }
    EXPECT_EQ(captionTextAttributes({}, {}, -1).fontSize, 11);
    EXPECT_EQ(captionTextAttributes({}, {}, -1).color, kWhite);
    EXPECT_EQ(captionTextAttributes({}, {}, 0).fontSize, 0);
    EXPECT_TRUE(std::isnan(
        captionTextAttributes({}, {}, std::numeric_limits<float>::quiet_NaN()).fontSize));
}

}  // namespace
}  // namespace tkv::test
