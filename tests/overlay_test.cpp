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

TEST_F(Overlay, NamesStandBesideTheOutput) {
    const ScopedVariable home("HOME", folder.path());
    request.output = "~/v1.0 \"a&b\"/tilde";
    fs::create_directories(folder.file("v1.0 \"a&b\""));
    errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    EXPECT_TRUE(fs::exists(folder.file("v1.0 \"a&b\"/tilde_43.txt")));
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
