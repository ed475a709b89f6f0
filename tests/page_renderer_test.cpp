#include "composer/page_renderer.h"

#include <cstring>

#include "imaging/rescale_modes.h"
#include "support.h"

namespace tkv::test::rendering {

/// Draws `passes` pages, each with two pictures of loops of 3 and 7 and a text, and answers how
/// often a layer was made ready. Each takes 400 bytes.
int preparations(std::size_t budget, int passes) {
    int count = 0;
    PageRenderer renderer(budget, [&](const Layer&, PixelSize) {
        ++count;
        return PlacedBitmap{Bitmap::create({10, 10}).value()};
    });
    for (int pass = 0; pass < passes; ++pass) {
        Page page{{20, 20}, {TextLayer{"title", {}, {}, Point{}}}};
        for (const int loop : {3, 7}) {
            PictureLayer layer;
            layer.file = fmt::format("{}/{}", loop, pass % loop);
            page.layers.emplace_back(layer);
        }
        EXPECT_TRUE(renderer.render(page));
    }
    return count;
}

TEST(PageRenderer, PreparesALayerOnceAsLongAsTheBudgetLasts) {
    EXPECT_EQ(preparations(PageRenderer::kDefaultBudget, 210), 11);
    EXPECT_EQ(preparations(std::size_t{11} * 400, 210), 11);
    EXPECT_EQ(preparations(0, 210), 2 * 210 + 2) << "nothing can be kept but what lies below all";
    // The text and the first frames of both loops, three of them of each, are kept: of the second
    // loop frames 3 to 6 are made again in each round.
    EXPECT_EQ(preparations(std::size_t{7} * 400, 210), 7 + 4 * 30);
}

/// A page of rectangles that overlap; each letter stands for one.
Page pageOf(std::string_view letters, PixelSize canvas = {30, 20}) {
    Page page{canvas, {}};
    for (const char letter : letters) {
        const int at = letter - 'a';
        const auto tone = static_cast<float>(at) / 26;
        const double left = at;
        page.layers.emplace_back(FillLayer{{left, left, 12, 12}, {tone, 1 - tone, 0.5F, 1}});
    }
    return page;
}

TEST(PageRenderer, DrawsEachPageAsIfItWereTheFirst) {
    PageRenderer renderer;
    std::vector<Page> pages;
    for (const char* letters : {"abc", "abd", "abe", "abe", "ab", "b", "bce", "bcf", "xcf", "xcg",
                                "ycg", "", "ycg", "ycgh", "ycgi"})
        pages.push_back(pageOf(letters));
    for (const char* letters : {"ycgi", "ycgj"})
        pages.push_back(pageOf(letters, {20, 30}));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const Bitmap drawn = renderer.render(pages[i]).value();
        const Bitmap alone = PageRenderer().render(pages[i]).value();
        ASSERT_EQ(drawn.size(), alone.size());
        const std::size_t bytes = alone.rowBytes() * static_cast<std::size_t>(alone.height());
        EXPECT_EQ(std::memcmp(drawn.row(0), alone.row(0), bytes), 0) << "page " << i;
    }
}

TEST(PageRenderer, ScalesPicturesOfASmallerPageOnce) {
    const PixelSize page{720, 540}, small{640, 360};
    const std::string file = checkoutPath("examples/media/harbour.jpg");
    const Page picture{page, {wholePicture(file, {0, 0, 720, 540}, 1)}};
    const Bitmap once = PageRenderer().render(scaledTo(picture, small)).value();
    const Bitmap whole = decodePicture(file).value();
    EXPECT_EQ(worstDifference(once, imgRescaleStretch(&whole, 640, 360, 72, false).value()), 0);

    // Texts and rectangles stand where they would in the page's own picture.
    const Page other{
        page,
        {FillLayer{{0, 0, 720, 540}, kBlack}, FillLayer{{90, 60, 270, 120}, {0.5F, 0, 0, 1}},
         TextLayer{"Les vacances", {}, {40, {}, {}, kWhite}, Point{100, 300}}}};
    const Bitmap large = PageRenderer().render(other).value();
    EXPECT_LE(worstDifference(PageRenderer().render(scaledTo(other, small)).value(),
                              imgRescaleStretch(&large, 640, 360, 72, false).value()),
              20);
}

TEST(PageRenderer, AnswersNoneForAPageInError) {
    // cairo draws on no side above 32,767 pixels.
    const std::string bar = fmt::format("{:█>2000}", "");
    const Layer text = TextLayer{bar, {}, {30, {}, {}, kWhite}, Point{}};
    EXPECT_FALSE(PageRenderer().render({{40000, 30}, {FillLayer{{0, 0, 9, 9}, kBlack}}}));
    EXPECT_FALSE(PageRenderer().render({{40000, 30}, {text}}));
    EXPECT_FALSE(prepareLayer(text, {40000, 30})->isWhole);

    // Without memory for a moment only one page fails.
    bool isWhole = false;
    PageRenderer renderer(1000, [&](const Layer&, PixelSize) {
        return PlacedBitmap{Bitmap::create({10, 10}).value(), 0, 0, std::exchange(isWhole, true)};
    });
    EXPECT_FALSE(renderer.render({{20, 20}, {text}}));
    EXPECT_TRUE(renderer.render({{20, 20}, {text}}));
}

}  // namespace tkv::test::rendering
