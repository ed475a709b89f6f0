#include "composer/button_layout.h"

#include "composer/page_geometry.h"
#include "composer/page_texts.h"
#include "support.h"

namespace tkv::test::button_layout {

std::string line(const ButtonRect& rect) {
    return fmt::format("<button name=\"b\" x0=\"{}\" y0=\"{}\" x1=\"{}\" y1=\"{}\" />\n", rect.x0,
                       rect.y0, rect.x1, rect.y1);
}

struct Row {
    std::size_t bigThumbnails, index;  ///< 0 big ones stand for the grid, 9 for the navigation.
    ButtonRect palWide, palPanScan, ntscWide, ntscPanScan;
};

constexpr Row kRows[] = {
    {0, 0, {120, 80, 260, 188}, {36, 80, 230, 188}, {120, 68, 260, 154}, {36, 68, 230, 154}},
    {0, 1, {290, 80, 430, 188}, {264, 80, 456, 188}, {290, 68, 430, 154}, {264, 68, 456, 154}},
    {0, 2, {460, 80, 600, 188}, {490, 80, 684, 188}, {460, 68, 600, 154}, {490, 68, 684, 154}},
    {0, 3, {120, 222, 260, 330}, {36, 222, 230, 330}, {120, 186, 260, 274}, {36, 186, 230, 274}},
    {0, 4, {290, 222, 430, 330}, {264, 222, 456, 330}, {290, 186, 430, 274}, {264, 186, 456, 274}},
    {0, 5, {460, 222, 600, 330}, {490, 222, 684, 330}, {460, 186, 600, 274}, {490, 186, 684, 274}},
    {0, 6, {120, 366, 260, 474}, {36, 366, 230, 474}, {120, 306, 260, 392}, {36, 306, 230, 392}},
    {0, 7, {290, 366, 430, 474}, {264, 366, 456, 474}, {290, 306, 430, 392}, {264, 306, 456, 392}},
    {0, 8, {460, 366, 600, 474}, {490, 366, 684, 474}, {460, 306, 600, 392}, {490, 306, 684, 392}},
    // The tenth lies on the ninth.
    {0, 9, {460, 366, 600, 474}, {490, 366, 684, 474}, {460, 306, 600, 392}, {490, 306, 684, 392}},
    {1, 0, {130, 110, 590, 140}, {50, 110, 670, 474}, {130, 92, 590, 122}, {50, 92, 670, 392}},
    {2, 0, {130, 86, 590, 258}, {50, 86, 670, 258}, {130, 74, 590, 214}, {50, 74, 670, 214}},
    {2, 1, {130, 302, 590, 474}, {50, 302, 670, 474}, {130, 252, 590, 392}, {50, 252, 670, 392}},
    {3, 0, {130, 80, 590, 188}, {50, 80, 670, 188}, {130, 68, 590, 154}, {50, 68, 670, 154}},
    {3, 1, {130, 222, 590, 330}, {50, 222, 670, 330}, {130, 186, 590, 274}, {50, 186, 670, 274}},
    {3, 2, {130, 366, 590, 474}, {50, 366, 670, 474}, {130, 306, 590, 392}, {50, 306, 670, 392}},
    {4, 0, {110, 76, 350, 268}, {36, 86, 336, 258}, {110, 64, 350, 224}, {36, 74, 336, 214}},
    {4, 1, {370, 76, 610, 268}, {384, 86, 684, 258}, {370, 64, 610, 224}, {384, 74, 684, 214}},
    {4, 2, {110, 292, 350, 484}, {36, 302, 336, 474}, {110, 242, 350, 402}, {36, 252, 336, 392}},
    {4, 3, {370, 292, 610, 484}, {384, 302, 684, 474}, {370, 242, 610, 402}, {384, 252, 684, 392}},
    {9, 0, {450, 46, 610, 70}, {480, 46, 694, 70}, {450, 36, 610, 58}, {480, 36, 694, 58}},
    {9, 1, {110, 510, 270, 532}, {26, 510, 240, 532}, {110, 422, 270, 444}, {26, 422, 240, 444}},
    {9, 2, {280, 510, 440, 532}, {254, 510, 466, 532}, {280, 422, 440, 444}, {254, 422, 466, 444}},
    {9, 3, {450, 510, 610, 532}, {480, 510, 694, 532}, {450, 422, 610, 444}, {480, 422, 694, 444}},
};

TEST(ButtonLayout, ButtonsOfEveryLayoutAndRaster) {
    for (const auto& [count, index, palWide, palPanScan, ntscWide, ntscPanScan] : kRows) {
        const NavigationButton& label = kNavigationButtons[index % 4];
        const ThumbnailLayout& layout = thumbnailLayout(count > 0, count > 0 ? count : 10);
        for (const bool isPal : {true, false}) {
            const Raster to{canvasSize(MenuMode::overlay, isPal).height,
                            overlayYFactor(MenuMode::overlay, isPal)};
            ButtonMap map;
            const ButtonRects button = count == 9 ? navigationButton(label.x, label.y, to)
                                                  : thumbnailButton(layout, index, to);
            errorsOf([&] { map.add("b", button); });
            EXPECT_EQ(map.wide, line(isPal ? palWide : ntscWide)) << count << " #" << index;
            EXPECT_EQ(map.panScan, line(isPal ? palPanScan : ntscPanScan))
                << count << " #" << index;
        }
    }
}

TEST(ButtonLayout, TellsOfARowThatIsOddInDoublePrecision) {
    const Raster ntsc{480, overlayYFactor(MenuMode::overlay, false)};
    ButtonMap map;
    const ButtonRects button = thumbnailButton(thumbnailLayout(true, 4), 0, ntsc);
    EXPECT_EQ(button.wide.y0, 63);
    EXPECT_TRUE(
        errorsOf([&] { map.add("b", button); }).starts_with("nbMultipleArrondi    :-) 64\n"));
}

}  // namespace tkv::test::button_layout
