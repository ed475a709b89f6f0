#include <unistd.h>

#include <algorithm>
#include <regex>

#include "composer/dvd_menu_picture.h"
#include "composer/overlay.h"
#include "support.h"
#include "system/resources.h"

namespace tkv::test::overlays {

const std::string kTail = "</spu>\n</stream>\n</subpictures>";

struct Overlay : testing::Test {
    void SetUp() override {
        request.mode = MenuMode::overlay;
        request.output = folder.file("menu.png");
    }

    std::string head(const std::string& standard) const {
        return fmt::format(
            "\xEF\xBB\xBF<subpictures format=\"{}\">\n<stream>\n<spu start=\"00:00:00.0\"\n"
            "highlight=\"{}\"\nselect=\"{}\"\ntransparent=\"FFFFFF\"\nforce=\"yes\"\n"
            "xoffset=\"0\" yoffset=\"0\"\nautoorder=\"rows\"\n>\n",
            standard, folder.file("overlayHighlight.png"), folder.file("overlaySelect.png"));
    }

    static std::string button(const char* name, int x0, int y0, int x1, int y1) {
        return fmt::format("<button name=\"{}\" x0=\"{}\" y0=\"{}\" x1=\"{}\" y1=\"{}\" />\n", name,
                           x0, y0, x1, y1);
    }

    /// `spumux` puts both maps into a clip of their raster without a complaint.
    void expectMultiplexed() const {
        const std::string standard = request.isPal ? "pal" : "ntsc", clip = clips.file(standard);
        if (!fs::exists(clip))
            run("ffmpeg -nostdin -f lavfi -i color -t 1 -target " + standard + "-dvd " + clip);
        for (const char* map : {"menu_169.txt", "menu_43.txt"}) {
            const std::string told =
                run("spumux " + folder.file(map) + " <" + clip + " >/dev/null");
            EXPECT_NE(told.find("INFO: 1 subtitles added"), std::string::npos) << told;
            EXPECT_FALSE(std::regex_search(told, std::regex("WARN|ERR"))) << told;
        }
    }

    TempFolder folder, clips;
    MenuRequest request;
};

TEST_F(Overlay, WritesEveryLineToTheLetterAndADebugPicture) {
    expectTranscript(folder, "overlay.txt");
    const Bitmap debug = decodePicture(request.output).value();
    EXPECT_EQ(pixel(debug, 110, 576 - 378 - 1), (Rgba{255, 128, 0, 255})) << "thumbnail's corner";
    EXPECT_EQ(pixel(debug, 270, 576 - 378 - 128).alpha, 0);
    for (const auto& [row, alpha] : {std::pair{528, 0}, {529, 255}, {531, 255}, {532, 0}})
        EXPECT_EQ(pixel(debug, 439, row).alpha, alpha) << "label's bar of three rows";
}

TEST(Format, IsNamedFromVersion7On) {
    for (const auto& [version, isPal, attribute] : {std::tuple{0.0F, true, ""},
                                                    {0.06F, true, ""},
                                                    {0.0699F, false, ""},
                                                    {0.07F, true, "format=\"PAL\""},
                                                    {0.0702F, false, "format=\"NTSC\""}})
        EXPECT_EQ(formatAttribute(version, isPal), attribute) << version;
}

TEST_F(Overlay, WritesTheLinesOfOddPlacesToTheLetter) {
    expectTranscript(folder, "overlay_places.txt");
}

TEST_F(Overlay, QuietRunsWriteOneButtonAtLeastAndNothingAtTheOutputPath) {
    for (const auto& [isPal, y0, y1] : {std::tuple{true, 80, 188}, {false, 68, 154}}) {
        request.isPal = isPal;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        EXPECT_EQ(namesIn(folder.path()), (Strings{"menu_43.txt", "menu_169.txt",
                                                   "overlayHighlight.png", "overlaySelect.png"}));
        EXPECT_EQ(readText(folder.file("menu_169.txt")),
                  head(isPal ? "PAL" : "NTSC") + button("BT_0", 120, y0, 260, y1) + kTail);
        for (const auto& [name, color] :
             {std::pair{"overlayHighlight.png", "#FF80004D"}, {"overlaySelect.png", "#FF800099"}}) {
            // A bitmap of our own would not hold the colour exactly.
            const std::string seen =
                run("identify -format '%wx%h ' " + folder.file(name) + "; " + magick() +
                    folder.file(name) + " -depth 8 -unique-colors txt: | tail -n +2");
            EXPECT_TRUE(seen.starts_with(isPal ? "720x576 0,0: " : "720x480 0,0: ")) << seen;
            EXPECT_NE(seen.find(color), std::string::npos) << seen;
            EXPECT_EQ(std::ranges::count(seen, '\n'), 1) << "one colour only: " << seen;
        }
    }
}

TEST_F(Overlay, ButtonsFollowTheThumbnailsAndTheMultiplexerTakesThem) {
    request.dvdBt_readAll = request.dvdBt_menuPrev = "label";
    request.dvdBt_menuMain = request.dvdBt_menuNext = "label";
    const std::string labels =
        button("dvdBt_readAll", 450, 46, 610, 70) + button("dvdBt_menuPrev", 110, 510, 270, 532) +
        button("dvdBt_menuMain", 280, 510, 440, 532) + button("dvdBt_menuNext", 450, 510, 610, 532);
    const std::string bar = button("BT_0", 130, 110, 590, 140);
    const std::string small = button("BT_0", 120, 80, 260, 188);
    for (const auto& [isMainMenu, thumbs, first, last] :
         {std::tuple{false, 0, small, small},
          {false, 1, small, small},
          {false, 9, small, button("BT_8", 460, 366, 600, 474)},
          {false, 10, small, button("BT_9", 460, 366, 600, 474)},
          {true, 0, bar, bar},
          {true, 1, bar, bar},
          {true, 2, button("BT_0", 130, 86, 590, 258), button("BT_1", 130, 302, 590, 474)},
          {true, 3, button("BT_0", 130, 80, 590, 188), button("BT_2", 130, 366, 590, 474)},
          {true, 4, button("BT_0", 110, 76, 350, 268), button("BT_3", 370, 292, 610, 484)},
          {true, 5, small, button("BT_4", 290, 222, 430, 330)}}) {
        SCOPED_TRACE(fmt::format("{} thumbnails, main menu: {}", thumbs, isMainMenu));
        request.isMainMenu = isMainMenu;
        request.thumbs = Strings(static_cast<std::size_t>(thumbs), "");
        for (const bool isPal : {false, true}) {
            request.isPal = isPal;
            errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
            expectMultiplexed();
        }
        const std::string map = readText(folder.file("menu_169.txt"));
        EXPECT_TRUE(map.starts_with(head("PAL") + first)) << map;
        EXPECT_TRUE(map.ends_with(last + labels + kTail)) << map;
    }
}

TEST_F(Overlay, LeavesNoMapThatIsNotWhole) {
    const std::string lines = run(fmt::format("cd {}; ulimit -f 0; {} -mode 2 -isPal 1 -o m.png",
                                              folder.path(), quoted(toolPath())));
    EXPECT_NE(lines.find("overlay Select      ? 0\n"), std::string::npos) << lines;
    EXPECT_EQ(namesIn(folder.path()), Strings{});
    // What was there before and may not be opened stays.
    const std::string secret = folder.write("menu_43.txt", "x");
    fs::permissions(secret, fs::perms::none);
    if (geteuid() == 0) {
        constexpr uid_t kNobody = 65534;
        ASSERT_EQ(chown(folder.path().c_str(), kNobody, kNobody), 0);
        ASSERT_EQ(seteuid(kNobody), 0);
    }
    errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    ASSERT_EQ(seteuid(getuid()), 0);
    EXPECT_EQ(fs::file_size(secret), 1);
}

}  // namespace tkv::test::overlays
