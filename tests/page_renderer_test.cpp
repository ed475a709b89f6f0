#include "composer/page_renderer.h"

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
    EXPECT_EQ(preparations(0, 210), 630) << "nothing can be kept";
    // The text and the first frames of both loops, three of them of each, are kept: of the second
    // loop frames 3 to 6 are made again in each round.
    EXPECT_EQ(preparations(std::size_t{7} * 400, 210), 7 + 4 * 30);
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
