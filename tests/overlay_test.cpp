#include "composer/dvd_menu_picture.h"
#include "platform/picture_file.h"
#include "platform/resources.h"
#include "support.h"

namespace tkv::test {
namespace {

const std::string kTail = "</spu>\n</stream>\n</subpictures>";

class Overlay : public testing::Test {
  protected:
    void SetUp() override {
        request.mode = MenuMode::overlay;
        request.isPal = true;
        request.output = folder.file("menu.png");
    }

    std::string head(const std::string& format) const {
        return fmt::format(
            "<subpictures format=\"{}\">\n<stream>\n<spu start=\"00:00:00.0\"\n"
            "highlight=\"{}\"\nselect=\"{}\"\ntransparent=\"FFFFFF\"\nforce=\"yes\"\n"
            "xoffset=\"0\" yoffset=\"0\"\nautoorder=\"rows\"\n>\n",
            format, folder.file("overlayHighlight.png"), folder.file("overlaySelect.png"));
    }

    TempFolder folder;
    MenuRequest request;
};

TEST_F(Overlay, WritesMapsPicturesAndEveryLine) {
    request.bkg = folder.write("background.png", "never looked at");
    request.thumbs = Strings{"no such thumbnail"};
    request.dvdBt_menuMain = "menu";
    request.dvdBt_menuNext = "";
    folder.write("menu_169.txt", "an earlier map");
    const std::string wide =
        "<button name=\"BT_0\" x0=\"120\" y0=\"80\" x1=\"260\" y1=\"188\" />\n"
        "<button name=\"dvdBt_menuMain\" x0=\"280\" y0=\"510\" x1=\"440\" y1=\"532\" />\n";
    const std::string panScan =
        "<button name=\"BT_0\" x0=\"36\" y0=\"80\" x1=\"230\" y1=\"188\" />\n"
        "<button name=\"dvdBt_menuMain\" x0=\"254\" y0=\"510\" x1=\"466\" y1=\"532\" />\n";
    const std::string lines = verboseErrorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    for (const auto& [name, map] : {std::pair{"menu_169.txt", wide}, {"menu_43.txt", panScan}})
        EXPECT_EQ(readText(folder.file(name)), "\xEF\xBB\xBF" + head("PAL") + map + kTail);

    const std::string start = fmt::format(
        "dvdMenuPicture       : deb\n"
        "args : 0, 2, {}, nil, nil, nil, menu, , (\n    \"no such thumbnail\"\n), (\n), {}, 1\n"
        "overlayYFactor=1.066667\npourcentage    : 0.0\npass                : 0/749\n"
        "dvdMenuPicture       : thumbnails'n'captions = 1 && 0\n"
        "dvdMenuPicture       : [thumbsA objectAtIndex:0]='no such thumbnail' -> "
        "currentThPathStr='nil'\n"
        "th#0 : x=110, y=355\nthumbImg ? nil\n"
        "x=110, y=355, w=160, h=120, overlayYFactor=1.066667, cropPanscan=90, "
        "ratioPanscan=1.333333\n"
        "arrondiInferieur     : 78\n"
        "nbMultipleArrondi    : arrondir au dessus\nnbMultipleArrondi    :-) 80\n",
        *request.bkg, request.output);
    EXPECT_EQ(lines.substr(0, start.size()), start);
    for (const std::string& part : Strings{
             "dvdMenuPicture       : nav - count: 4\n"
             "dvdMenuPicture       : nav - #2: menu x=280 y=45\narrondiInferieur     : 508\n",
             "spuTxtStr  post-nav : " + wide + "dstPathStr post-nav : " + request.output + "\n" +
                 "overlay Highlight   ? 1\noverlay Select      ? 1\ntaskArrayPipes      - begin\n",
             "deb : " + head("PAL") + "mid : " + wide + "end : " + kTail + "\n",
             "ecrit               :-) " + folder.file("menu_169.txt") + "\n",
             "ecrit               :-) " + folder.file("menu_43.txt") +
                 "\nimgRescale          - deb, srcPathStrOrImg = path ? 0, image ? 1\n"
                 "imgRescale          : size = 720 x 576\nimgRescale          :-) modeInt=0\n"
                 "imgExport - end\npourcentage    : 100.0\n"}) {
        EXPECT_NE(lines.find(part), std::string::npos) << part << "\nnot in\n" << lines;
    }

    const auto debug = decodePicture(request.output);
    ASSERT_TRUE(debug);
    EXPECT_EQ(pixel(*debug, 110, 576 - 378 - 1), (Rgba{255, 128, 0, 255})) << "thumbnail's corner";
    EXPECT_EQ(pixel(*debug, 270, 576 - 378 - 128).alpha, 0);
    EXPECT_EQ(pixel(*debug, 439, 576 - 44 - 3), (Rgba{255, 128, 0, 255})) << "label's bar";
}

TEST_F(Overlay, QuietRunsWriteNothingAtTheOutputPath) {
    for (const bool isPal : {true, false}) {
        request.isPal = isPal;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        EXPECT_EQ(namesIn(folder.path()), (Strings{"menu_43.txt", "menu_169.txt",
                                                   "overlayHighlight.png", "overlaySelect.png"}));
        EXPECT_EQ(readText(folder.file("menu_43.txt")).find(head(isPal ? "PAL" : "NTSC")), 3U);
        for (const auto& [name, alpha] :
             {std::pair{"overlayHighlight.png", 77}, {"overlaySelect.png", 153}}) {
            const auto picture = decodePicture(folder.file(name));
            ASSERT_TRUE(picture);
            ASSERT_EQ(picture->size(), (PixelSize{720, isPal ? 576 : 480}));
            EXPECT_LE(worstDifference(*picture, painted(picture->size(), {255, 128, 0, alpha})), 1);
        }
    }
}

TEST_F(Overlay, ButtonsFollowThePage) {
    const struct {
        bool isMainMenu;
        std::optional<Strings> thumbs;
        const char* first;  ///< How the wide map's first button starts.
        std::size_t buttons;
    } cases[] = {
        {false, {}, "x0=\"120\" y0=\"80\"", 1},
        {true, Strings{}, "x0=\"130\" y0=\"110\"", 1},
        {true, Strings(4, ""), "x0=\"110\" y0=\"76\"", 4},
        {true, Strings(5, ""), "x0=\"120\" y0=\"80\"", 5},
        {false, Strings(10, ""), "x0=\"120\" y0=\"80\"", 10},
    };
    for (const auto& c : cases) {
        request.isMainMenu = c.isMainMenu;
        request.thumbs = c.thumbs;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        const std::string map = readText(folder.file("menu_169.txt"));
        EXPECT_NE(map.find(">\n<button name=\"BT_0\" " + std::string(c.first)), std::string::npos);
        for (std::size_t i = 0; i <= c.buttons; ++i)
            EXPECT_EQ(map.find(fmt::format("\"BT_{}\"", i)) != std::string::npos, i < c.buttons);
    }
}

TEST_F(Overlay, NamesStandBesideTheOutput) {
    const ScopedVariable home("HOME", folder.path());
    const std::string parent = folder.file("v1.0 \"a&b\"");
    fs::create_directories(parent);
    for (const auto& [output, map] : {std::pair{parent + "/menu", "/menu_43.txt"},
                                      {"~/v1.0 \"a&b\"/tilde.jpg", "/tilde_43.txt"}}) {
        request.output = output;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        EXPECT_NE(readText(parent + map).find("highlight=\"" + parent + "/overlayHighlight.png\""),
                  std::string::npos);
    }
    // Where nothing can be written the lines say so, and the run goes on.
    request.output = folder.file("no folder/menu.png");
    const std::string lines = errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    EXPECT_NE(lines.find("overlay Highlight   ? 0\noverlay Select      ? 0\n"), std::string::npos);
}

TEST_F(Overlay, MultiplexersBefore07AreNotToldTheFormat) {
    // The tool itself, moved beside other resources: none, and an older multiplexer.
    const std::string tool = folder.file("bin/tkvDvdMenuImg");
    fs::create_directory(folder.file("bin"));
    fs::copy_file(fs::canonical("/proc/self/exe").parent_path() / "tkvDvdMenuImg", tool);
    const std::string spumux = "share/tkvDvdMenuImg/tools/spumux";
    for (const auto& [version, format] :
         {std::pair{"", ""}, {"0.6.9", ""}, {"0.7.0", "format=\"PAL\""}}) {
        if (version != std::string()) {
            folder.write(spumux, fmt::format("#!/bin/sh\necho spumux, version {}\n", version));
            fs::permissions(folder.file(spumux), fs::perms::all);
        }
        EXPECT_EQ(run({tool, "-mode", "2", "-o", request.output}).status, 0);
        EXPECT_EQ(readText(folder.file("menu_169.txt"))
                      .find(fmt::format("<subpictures {}>\n<stream>\n", format)),
                  3U)
            << version;
    }
}

}  // namespace
}  // namespace tkv::test
