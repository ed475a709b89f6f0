#include "composer/frame_writer.h"

#include "support.h"

namespace tkv::test::frames {

/// Pages that repeat after `length`.
Page pageOf(int number, int length) {
    return {{number % length, 0}, {}};
}

struct Frames : testing::Test {
    /// Draws nothing where `isStuck`, like a file that cannot be overwritten.
    /// All files get one time, as on file systems that count seconds.
    PageWriter draw = [this](const Page& page, const std::string& path, bool* isWritten) {
        drawn.push_back(fs::path(path).filename());
        *isWritten = !isStuck;
        if (!isStuck) folder.write(drawn.back(), std::to_string(page.canvas.width));
        fs::last_write_time(path, {});
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

TEST_F(Frames, AreNotCopiedFromAFileThatIsAnotherFrameToo) {
    folder.write("001.jpg", "an old frame");
    folder.write("002.jpg", "0");
    for (const auto& [name, other] : {std::pair{"003.jpg", "001.jpg"}, {"007.jpg", "002.jpg"}})
        fs::create_hard_link(folder.file(other), folder.file(name));
    FrameWriter writer(folder.path(), EqualPages::copied, draw);
    for (int number = 0; number < 13; ++number) {
        writer.write(pageOf(number, 5), number);
        EXPECT_EQ(content(number), std::to_string(number % 5));
    }
}

}  // namespace tkv::test::frames
