#include "composer/frame_writer.h"

#include "support.h"

namespace tkv::test::frames {

/// Pages that repeat after `length`.
Page pageOf(int number, int length) {
    return {{number % length, 0}, {}};
}

struct Frames : testing::Test {
    /// Draws nothing where `isStuck`, like a file that cannot be overwritten.
    PageWriter draw = [this](const Page& page, const std::string& path) {
        drawn.push_back(fs::path(path).filename());
        if (!isStuck) folder.write(drawn.back(), std::to_string(page.canvas.width));
        return true;
    };
    std::string content(int number) {
        return readText(folder.file(fmt::format("{:03}.jpg", number)));
    }

    TempFolder folder;
    Strings drawn;
    bool isStuck = false;
};

TEST_F(Frames, OfEqualPagesAreDrawnOnce) {
    for (const auto& [equalPages, draws] :
         {std::pair{EqualPages::copied, 21U}, {EqualPages::drawnAgain, 100U}}) {
        FrameWriter writer(folder.path(), equalPages, draw);
        drawn.clear();
        for (int number = 0; number < 100; ++number) {
            writer.write(pageOf(number, 21), number);
            ASSERT_EQ(content(number), std::to_string(number % 21));
        }
        EXPECT_EQ(drawn.size(), draws);
    }
}

TEST_F(Frames, AreNotCopiedFromAFileThatIsNotThePage) {
    folder.write("000.jpg", "an old frame");
    FrameWriter writer(folder.path(), EqualPages::copied, draw);
    isStuck = true;
    writer.write(pageOf(0, 1), 0);
    isStuck = false;
    for (const int number : {1, 2})
        writer.write(pageOf(number, 1), number);
    folder.write("001.jpg", "replaced by somebody");
    writer.write(pageOf(3, 1), 3);
    EXPECT_EQ(drawn, (Strings{"000.jpg", "001.jpg", "003.jpg"}));
    for (const int number : {2, 3})
        EXPECT_EQ(content(number), "0");
}

}  // namespace tkv::test::frames
