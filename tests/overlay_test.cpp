#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "composer/dvd_menu_picture.h"
#include "platform/picture_file.h"
#include "platform/resources.h"
#include "support.h"

namespace tkv::test {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

constexpr const char* kMark = "\xEF\xBB\xBF";
constexpr const char* kTail = "</spu>\n</stream>\n</subpictures>";

class Overlay : public testing::Test {
  protected:
    void SetUp() override {
        request.mode = MenuMode::overlay;
        request.isPal = true;
        request.output = folder.file("menu.png");
    }

    std::string head(const std::string& format) const {
        return fmt::format(
            "<subpictures {}>\n<stream>\n<spu start=\"00:00:00.0\"\n"
            "highlight=\"{}\"\nselect=\"{}\"\ntransparent=\"FFFFFF\"\nforce=\"yes\"\n"
            "xoffset=\"0\" yoffset=\"0\"\nautoorder=\"rows\"\n>\n",
            format, folder.file("overlayHighlight.png"), folder.file("overlaySelect.png"));
    }

    TempFolder folder;
    MenuRequest request;
};

TEST_F(Overlay, WritesMapsPicturesAndEveryLine) {
    request.bkg = folder.write("background.png", "never looked at");
    request.thumbs = Names{"no such thumbnail"};
    request.captions = Names{};
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
    EXPECT_EQ(readText(folder.file("menu_169.txt")), kMark + head("format=\"PAL\"") + wide + kTail);
    EXPECT_EQ(readText(folder.file("menu_43.txt")),
              kMark + head("format=\"PAL\"") + panScan + kTail);

    const std::string start = fmt::format(
        "dvdMenuPicture       : deb\n"
        "args : 0, 2, {}, nil, nil, nil, menu, , (\n    \"no such thumbnail\"\n), (\n), {}, 1\n"
        "overlayYFactor=1.066667\n"
        "pourcentage    : 0.0\n"
        "pass                : 0/749\n"
        "dvdMenuPicture       : thumbnails'n'captions = 1 && 0\n"
        "dvdMenuPicture       : [thumbsA objectAtIndex:0]='no such thumbnail' -> "
        "currentThPathStr='nil'\n"
        "th#0 : x=110, y=355\n"
        "thumbImg ? nil\n"
        "x=110, y=355, w=160, h=120, overlayYFactor=1.066667, cropPanscan=90, "
        "ratioPanscan=1.333333\n"
        "arrondiInferieur     : 78\n"
        "nbMultipleArrondi    : arrondir au dessus\n"
        "nbMultipleArrondi    :-) 80\n",
        *request.bkg, request.output);
    EXPECT_EQ(lines.substr(0, start.size()), start);
    for (const std::string& part :
         {"dvdMenuPicture       : nav - count: 4\n"
          "dvdMenuPicture       : nav - #2: menu x=280 y=45\n"
          "arrondiInferieur     : 508\n" +
              std::string(),
          "spuTxtStr  post-nav : " + wide + "dstPathStr post-nav : " + request.output + "\n" +
              "overlay Highlight   ? 1\noverlay Select      ? 1\ntaskArrayPipes      - begin\n",
          "deb : " + head("format=\"PAL\"") + "mid : " + wide + "end : " + kTail + "\n",
          "ecrit               :-) " + folder.file("menu_169.txt") + "\n",
          "ecrit               :-) " + folder.file("menu_43.txt") +
              "\nimgRescale          - deb, srcPathStrOrImg = path ? 0, image ? 1\n"
              "imgRescale          : size = 720 x 576\n"
              "imgRescale          :-) modeInt=0\nimgExport - end\n"
              "pourcentage    : 100.0\n"}) {
        EXPECT_NE(lines.find(part), std::string::npos) << part << "\nnot in\n" << lines;
    }

    const auto debug = decodePicture(request.output);
    ASSERT_TRUE(debug);
    EXPECT_EQ(pixel(*debug, 110, 576 - 378 - 1), (Rgba{255, 128, 0, 255})) << "thumbnail's corner";
    EXPECT_EQ(pixel(*debug, 269, 576 - 378 - 128), (Rgba{255, 128, 0, 255}));
    EXPECT_EQ(pixel(*debug, 270, 576 - 378 - 128).alpha, 0);
    EXPECT_EQ(pixel(*debug, 439, 576 - 44 - 3), (Rgba{255, 128, 0, 255})) << "label's bar";
}

TEST_F(Overlay, QuietRunsWriteNothingAtTheOutputPath) {
    for (const bool isPal : {true, false}) {
        request.isPal = isPal;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        EXPECT_EQ(namesIn(folder.path()), (Names{"menu_43.txt", "menu_169.txt",
                                                 "overlayHighlight.png", "overlaySelect.png"}));
        const std::string map = readText(folder.file("menu_43.txt"));
        EXPECT_EQ(map.find(head(isPal ? "format=\"PAL\"" : "format=\"NTSC\"")), 3U);
        for (const auto& [name, alpha] :
             {std::pair{"overlayHighlight.png", 77}, std::pair{"overlaySelect.png", 153}}) {
            const auto picture = decodePicture(folder.file(name));
            ASSERT_TRUE(picture);
            ASSERT_EQ(picture->size(), (PixelSize{720, isPal ? 576 : 480}));
            for (int y = 0; y < picture->height(); ++y) {
                for (int x = 0; x < picture->width(); ++x) {
                    ASSERT_TRUE(near(pixel(*picture, x, y), {255, 128, 0, alpha}, 1));
                }
            }
        }
    }
}

TEST_F(Overlay, ButtonsFollowThePage) {
    struct Case {
        bool isMainMenu;
        std::optional<Names> thumbs;
        const char* first;  ///< The wide map's first button.
        std::size_t buttons;
    };
    const Case cases[] = {
        {false, {}, "<button name=\"BT_0\" x0=\"120\" y0=\"80\" x1=\"260\" y1=\"188\" />\n", 1},
        {true, Names{}, "<button name=\"BT_0\" x0=\"130\" y0=\"110\" x1=\"590\" y1=\"140\" />\n",
         1},
        {true, Names(4, ""),
         "<button name=\"BT_0\" x0=\"110\" y0=\"76\" x1=\"350\" y1=\"268\" />\n", 4},
        {true, Names(5, ""),
         "<button name=\"BT_0\" x0=\"120\" y0=\"80\" x1=\"260\" y1=\"188\" />\n", 5},
        {false, Names(10, ""),
         "<button name=\"BT_0\" x0=\"120\" y0=\"80\" x1=\"260\" y1=\"188\" />\n", 10},
    };
    for (const Case& c : cases) {
        request.isMainMenu = c.isMainMenu;
        request.thumbs = c.thumbs;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        const std::string map = readText(folder.file("menu_169.txt"));
        EXPECT_NE(map.find(">\n" + std::string(c.first)), std::string::npos) << map;
        for (std::size_t i = 0; i <= c.buttons; ++i) {
            EXPECT_EQ(map.find(fmt::format("\"BT_{}\"", i)) != std::string::npos, i < c.buttons);
        }
    }
}

TEST_F(Overlay, NamesStandBesideTheOutput) {
    const ScopedVariable home("HOME", folder.path());
    fs::create_directories(folder.file("v1.0 \"a&b\""));
    for (const auto& [output, map] :
         {std::pair{folder.file("v1.0 \"a&b\"/menu"), folder.file("v1.0 \"a&b\"/menu_43.txt")},
          std::pair{std::string("~/v1.0 \"a&b\"/tilde.jpg"),
                    folder.file("v1.0 \"a&b\"/tilde_43.txt")}}) {
        request.output = output;
        errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
        EXPECT_NE(readText(map).find("highlight=\"" + folder.file("v1.0 \"a&b\"") +
                                     "/overlayHighlight.png\"\n"),
                  std::string::npos)
            << map;
    }
    // Where nothing can be written the lines say so, and the run goes on.
    request.output = folder.file("no folder/menu.png");
    EXPECT_NE(errorsOf([&] {
                  EXPECT_TRUE(dvdMenuPicture(request));
              }).find("overlay Highlight   ? 0\noverlay Select      ? 0\n"),
              std::string::npos);
}

TEST_F(Overlay, MultiplexersBefore07AreNotToldTheFormat) {
    // The tool itself, moved beside other resources: none, and an older multiplexer.
    const std::string tool = fs::canonical("/proc/self/exe").parent_path() / "tkvDvdMenuImg";
    fs::create_directory(folder.file("bin"));
    fs::copy_file(tool, folder.file("bin/tkvDvdMenuImg"));
    const auto mapOf = [&] {
        EXPECT_EQ(
            run({folder.file("bin/tkvDvdMenuImg"), "-mode", "2", "-o", request.output}).status, 0);
        return readText(folder.file("menu_169.txt")).substr(3);
    };
    EXPECT_TRUE(mapOf().starts_with("<subpictures >\n<stream>\n"));
    const std::string spumux = "share/tkvDvdMenuImg/tools/spumux";
    for (const auto& [version, format] : {std::pair{"0.6.9", ""}, {"0.7.0", "format=\"PAL\""}}) {
        folder.write(spumux, fmt::format("#!/bin/sh\necho spumux, version {}\n", version));
        fs::permissions(folder.file(spumux), fs::perms::all);
        EXPECT_TRUE(mapOf().starts_with(fmt::format("<subpictures {}>\n", format))) << version;
    }
}

}  // namespace
}  // namespace tkv::test
