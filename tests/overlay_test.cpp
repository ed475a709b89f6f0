#include "composer/dvd_menu_picture.h"
#include "platform/resources.h"
#include "support.h"

namespace tkv::test::overlays {

const std::string kTail = "</spu>\n</stream>\n</subpictures>";

struct Overlay : testing::Test {
    void SetUp() override {
        request.mode = MenuMode::overlay;
        request.output = folder.file("menu.png");
    }

    std::string head(const std::string& format) const {
        return fmt::format(
            "\xEF\xBB\xBF<subpictures format=\"{}\">\n<stream>\n<spu start=\"00:00:00.0\"\n"
            "highlight=\"{}\"\nselect=\"{}\"\ntransparent=\"FFFFFF\"\nforce=\"yes\"\n"
            "xoffset=\"0\" yoffset=\"0\"\nautoorder=\"rows\"\n>\n",
            format, folder.file("overlayHighlight.png"), folder.file("overlaySelect.png"));
    }

    static std::string button(const char* name, int x0, int y0, int x1, int y1) {
        return fmt::format("<button name=\"{}\" x0=\"{}\" y0=\"{}\" x1=\"{}\" y1=\"{}\" />\n", name,
                           x0, y0, x1, y1);
    }

    TempFolder folder;
    MenuRequest request;
};

TEST_F(Overlay, WritesMapsPicturesAndEveryLine) {
    request.bkg = folder.write("background.png", "never looked at");
    request.thumbs = Strings{"no such thumbnail"};
    request.dvdBt_menuMain = "menu";
    request.dvdBt_menuNext = "";
    const std::string map169 = folder.write("menu_169.txt", "an earlier map");
    const std::string wide =
        button("BT_0", 120, 80, 260, 188) + button("dvdBt_menuMain", 280, 510, 440, 532);
    const std::string panScan =
        button("BT_0", 36, 80, 230, 188) + button("dvdBt_menuMain", 254, 510, 466, 532);
    const std::string lines = verboseErrorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    for (const auto& [name, map] : {std::pair{"menu_169.txt", wide}, {"menu_43.txt", panScan}})
        EXPECT_EQ(readText(folder.file(name)), head("PAL") + map + kTail);

    const std::string start = fmt::format(
        "dvdMenuPicture       : deb\n"
        "args : 0, 2, {}, nil, nil, nil, menu, , (\n    \"no such thumbnail\"\n), (\n), {}, 1\n"
        "overlayYFactor=1.066667\npourcentage    : 0.0\npass                : 0/749\n"
        "dvdMenuPicture       : thumbnails'n'captions = 1 && 0\n"
        "dvdMenuPicture       : [thumbsA objectAtIndex:0]='no such thumbnail' -> "
        "currentThPathStr='nil'\nth#0 : x=110, y=355\nthumbImg ? nil\n"
        "x=110, y=355, w=160, h=120, overlayYFactor=1.066667, cropPanscan=90, "
        "ratioPanscan=1.333333\narrondiInferieur     : 78\n"
        "nbMultipleArrondi    : arrondir au dessus\nnbMultipleArrondi    :-) 80\n",
        *request.bkg, request.output);
    EXPECT_EQ(lines.substr(0, start.size()), start);
    for (const std::string& part : Strings{
             "dvdMenuPicture       : nav - #2: menu x=280 y=45\narrondiInferieur     : 508\n",
             "spuTxtStr  post-nav : " + wide + "dstPathStr post-nav : " + request.output + "\n" +
                 "overlay Highlight   ? 1\noverlay Select      ? 1\ntaskArrayPipes      - begin\n",
             "deb : " + head("PAL").substr(3) + "mid : " + wide + "end : " + kTail + "\n",
             "File current        : exists: " + map169 +
                 "\nrmCocoa             - pre-fin\nrmCocoa             - end - " + map169 + "\n",
             "a creer…\nFixed BOM           :-) " + map169 + "\necrit               :-) " + map169,
             "ecrit               :-) " + folder.file("menu_43.txt") +
                 "\nimgRescale          - deb, srcPathStrOrImg = path ? 0, image ? 1\n"
                 "imgRescale          : size = 720 x 576\nimgRescale          :-) modeInt=0\n"
                 "imgExport - end\npourcentage    : 100.0\n"}) {
        EXPECT_NE(lines.find(part), std::string::npos) << part << "\nnot in\n" << lines;
    }

    const Bitmap debug = decodePicture(request.output).value();
    EXPECT_EQ(pixel(debug, 110, 576 - 378 - 1), (Rgba{255, 128, 0, 255})) << "thumbnail's corner";
    EXPECT_EQ(pixel(debug, 270, 576 - 378 - 128).alpha, 0);
    EXPECT_EQ(pixel(debug, 439, 576 - 44 - 3), (Rgba{255, 128, 0, 255})) << "label's bar";
}

TEST_F(Overlay, QuietRunsWriteOneButtonAtLeastAndNothingAtTheOutputPath) {
    for (const auto& [isPal, y0, y1] : {std::tuple{true, 80, 188}, {false, 68, 154}}) {
        request.isPal = isPal;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        EXPECT_EQ(namesIn(folder.path()), (Strings{"menu_43.txt", "menu_169.txt",
                                                   "overlayHighlight.png", "overlaySelect.png"}));
        EXPECT_EQ(readText(folder.file("menu_169.txt")),
                  head(isPal ? "PAL" : "NTSC") + button("BT_0", 120, y0, 260, y1) + kTail);
        for (const auto& [name, alpha] :
             {std::pair{"overlayHighlight.png", 77}, {"overlaySelect.png", 153}}) {
            const Bitmap picture = decodePicture(folder.file(name)).value();
            ASSERT_EQ(picture.size(), (PixelSize{720, isPal ? 576 : 480}));
            EXPECT_LE(worstDifference(picture, painted(picture.size(), {255, 128, 0, alpha})), 1);
        }
    }
}

TEST_F(Overlay, ButtonsFollowTheThumbnails) {
    const std::string bar = button("BT_0", 130, 110, 590, 140);
    const std::string small = button("BT_0", 120, 80, 260, 188);
    for (const auto& [isMainMenu, thumbs, first, last] :
         {std::tuple{false, 0, small, small},
          {false, 1, small, small},
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
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        const std::string map = readText(folder.file("menu_169.txt"));
        EXPECT_TRUE(map.starts_with(head("PAL") + first)) << map;
        EXPECT_TRUE(map.ends_with(last + kTail)) << map;
    }
}

TEST_F(Overlay, NamesStandBesideTheOutput) {
    const ScopedVariable home("HOME", folder.path());
    const std::string place = folder.file("v1.0 \"a&b\"");
    fs::create_directory(place);
    for (const char* name : {"plain", "dotted.name.jpg"}) {
        request.output = "~/v1.0 \"a&b\"/" + std::string(name);
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    }
    EXPECT_EQ(namesIn(place),
              (Strings{"dotted.name_43.txt", "dotted.name_169.txt", "overlayHighlight.png",
                       "overlaySelect.png", "plain_43.txt", "plain_169.txt"}));
    // In the map the paths stand as they are.
    EXPECT_NE(
        readText(place + "/plain_43.txt").find("select=\"" + place + "/overlaySelect.png\"\n"),
        std::string::npos);
}

TEST_F(Overlay, FoldersThatCannotBeWrittenAreTold) {
    // Nobody, not even the superuser, can make files in the first.
    for (const std::string& place : {std::string("/proc/self"), folder.file("none")}) {
        request.output = place + "/menu.png";
        const std::string lines = errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        for (const char* line : {"overlay Highlight   ? 0\noverlay Select      ? 0\n",
                                 "Impossible to create destination file !\n"})
            EXPECT_NE(lines.find(line), std::string::npos) << lines;
    }
    EXPECT_EQ(namesIn(folder.path()), Strings{});
}

TEST_F(Overlay, MultiplexersBefore07AreNotToldTheFormat) {
    // The tool itself, moved beside an older multiplexer.
    const std::string tool = folder.file("bin/tkvDvdMenuImg");
    fs::create_directory(folder.file("bin"));
    fs::copy_file(fs::canonical("/proc/self/exe").parent_path() / "tkvDvdMenuImg", tool);
    const std::string spumux =
        folder.write("share/tkvDvdMenuImg/tools/spumux", "#!/bin/sh\necho spumux, version 0.6.9\n");
    fs::permissions(spumux, fs::perms::all);
    run(tool + " -mode 2 -o " + request.output);
    EXPECT_EQ(readText(folder.file("menu_169.txt")).find("<subpictures >\n"), 3U);
}

}  // namespace tkv::test::overlays
