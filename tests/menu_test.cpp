#include <sys/stat.h>

#include <regex>

#include "composer/dvd_menu_picture.h"
#include "composer/frame_writer.h"
#include "composer/page_composer.h"
#include "composer/page_renderer.h"
#include "imaging/export.h"
#include "imaging/rescale.h"
#include "support.h"

namespace tkv::test::menus {

constexpr Rgba kReds[] = {{250, 0, 0, 255}, {150, 0, 0, 255}, {70, 0, 0, 255}};

struct Menu : testing::Test {
    std::string picture(const std::string& name, PixelSize size, Rgba color) {
        const std::string path = folder.write(name, "");
        EXPECT_TRUE(imgExport(painted(size, color), path, 1));
        return path;
    }
    Rgba pixelOf(const std::string& path, int x, int y) {
        return pixel(decodePicture(path).value(), x, y);
    }
    std::string lines() {
        return errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
    }
    std::string identify(const std::string& path) {
        return run("identify -format '%m %Q %wx%h %xx%y' " + path);
    }

    TempFolder folder;
    MenuRequest request;
};

/// A loop of three and a loop of seven: 21 distinct pages.
struct MenuFrames : Menu {
    void SetUp() override {
        for (int i = 0; i < 7; ++i) {
            const std::string name = std::to_string(i) + ".jpg";
            if (i < 3) picture("three/" + name, {320, 240}, kReds[i]);
            picture("seven/" + name, {720, 576}, {0, 30 + 30 * i, 0, 255});
        }
        request.thumbs = {folder.file("three"), folder.file("seven")};
        request.captions = {"three", "seven"};
        request.output = folder.file("new/./menu");
    }

    void expectFrames(const std::vector<int>& passes) {
        for (const int pass : passes) {
            const std::string frame = fmt::format("{}/{:03}.jpg", request.output, pass);
            EXPECT_TRUE(near(pixelOf(frame, 190, 125), kReds[pass % 3], 3)) << pass;
            EXPECT_TRUE(near(pixelOf(frame, 360, 125), {0, 30 + 30 * (pass % 7), 0, 255}, 3));
        }
    }
};

TEST_F(MenuFrames, ShowTheLoopsFrameByFrame) {
    std::string expected = "dvdMenuPicture       : deb\n";
    for (int pass = 0; pass < 749; pass += 30)
        expected += fmt::format("pourcentage    : {:.1f}\n", pass * 100.0 / 749);
    EXPECT_EQ(lines(), expected + "pourcentage    : 100.0\n");
    const Strings names = namesIn(request.output);
    EXPECT_EQ(names.size(), 749U);
    expectFrames({0, 1, 2, 3, 7, 20, 21, 22, 500, 747, 748});
    EXPECT_EQ(identify(request.output + "/748.jpg"), "JPEG 90 720x540 72x72");
    for (const auto& [made, modes] : {std::pair("", fs::perms::owner_all),
                                      {"new", fs::perms::all},
                                      {"new/menu", fs::perms::all}})
        EXPECT_EQ(fs::status(folder.file(made)).permissions(), modes) << made;

    // The same files when no equal page is copied; a thirtieth of the frames will do.
    const std::string copied = std::exchange(request.output, folder.file("again"));
    fs::create_directory(request.output);
    PageComposer composer(request, {});
    const auto draw = [](const Page& page, const std::string& path, bool* isWritten) {
        const Bitmap canvas = PageRenderer().render(page).value();
        return imgRescale(&canvas, path, 720, 540, 72, kStretch, -1, isWritten);
    };
    FrameWriter writer(request.output, EqualPages::drawnAgain, draw);
    for (int pass = 0; pass < 25; ++pass) {
        const std::string name = fmt::format("/{:03}.jpg", pass);
        writer.write(composer.composePass(pass)->page, pass);
        ASSERT_EQ(readText(copied + name), readText(request.output + name)) << name;
    }
}

TEST_F(MenuFrames, OfNtscMenusAreMoreAndReplaceAFile) {
    const ScopedVariable home("HOME", folder.path());
    folder.write("menu", "a plain file");
    request.isPal = false;
    request.output = "~/menu";
    lines();
    const Strings names = namesIn(folder.file("menu"));
    EXPECT_EQ(names.size(), 899U);
    EXPECT_EQ(names.back(), "898.jpg");
}

TEST_F(MenuFrames, AreDrawnAgainWhereTheFirstFrameIsNotTheirs) {
    // The first frame cannot be written, the second shares its file with the fifth, the third's
    // copy is a link to it; what else is in the folder stays.
    folder.write("new/menu/000.jpg/full", "mine");
    folder.write("new/menu/001.jpg", "old");
    fs::create_hard_link(folder.file("new/menu/001.jpg"), folder.file("new/menu/005.jpg"));
    fs::create_symlink("002.jpg", folder.file("new/menu/023.jpg"));
    lines();
    expectFrames({2, 21, 22, 23, 42, 748});
    EXPECT_EQ(readText(folder.file("new/menu/000.jpg/full")), "mine");
}

TEST_F(Menu, WritesEveryLineToTheLetter) {
    for (const char* name : {"media/still.jpg", "media/loop/9.jpg", "media/loop/10.jpg"})
        picture(name, {40, 30}, kReds[0]);
    picture("background.png", {400, 300}, {200, 100, 50, 255});
    picture("icon.png", {50, 50}, {0, 0, 250, 255});
    for (const char* transcript :
         {"preview.txt", "frames.txt", "jacket.txt", "full_disk.txt", "faults.txt", "reasons.txt"})
        expectTranscript(folder, transcript);
    // The background at 60 %, the icon's 100 pixels from (505, 255) up.
    const std::string jacket = folder.file("jacket.png");
    for (const auto& [x, y] : {std::pair{505, 284}, {604, 185}})
        EXPECT_EQ(pixelOf(jacket, x, y), (Rgba{0, 0, 250, 255}));
    EXPECT_TRUE(near(pixelOf(jacket, 605, 184), {120, 60, 30, 255}, 1));
}

TEST_F(Menu, BackgroundEqualToTheFirstThumbnailIsZoomed) {
    // Left half green, right half blue; enlarged 1.8 times, the outer ninths fall off the page.
    const ScopedVariable home("HOME", folder.path());
    const std::string thumb = "~/thumb.jpg";
    const auto halves = [](int x, int) {
        return Rgba{0, x < 960 ? 240 : 0, x < 960 ? 0 : 240, 255};
    };
    ASSERT_TRUE(imgExport(painted({1920, 1080}, halves), thumb, 1));
    request.output = folder.file("page.png");
    request.mode = MenuMode::preview;
    request.bkg = thumb;
    request.thumbs = {thumb};
    lines();
    EXPECT_EQ(identify(folder.file("bkgV.jpg")), "JPEG 100 960x540 72x72");
    // Drawn at 60 % twice, 0.6 + 0.4 x 0.6, since the thumbnail is drawn too.
    EXPECT_TRUE(near(pixelOf(request.output, 5, 5), {0, 202, 0, 255}, 3));
    EXPECT_TRUE(near(pixelOf(request.output, 630, 5), {0, 0, 202, 255}, 3));
    // No picture can be cut from a folder: its frames are still shown enlarged.
    picture("loop/a.jpg", {90, 60}, {200, 0, 0, 255});
    fs::remove(folder.file("bkgV.jpg"));
    request.thumbs->front() = *(request.bkg = folder.file("loop"));
    lines();
    EXPECT_FALSE(fs::exists(folder.file("bkgV.jpg")));
    EXPECT_TRUE(near(pixelOf(request.output, 5, 5), {120, 0, 0, 255}, 3));
}

TEST_F(Menu, BadPicturesLeaveAHoleAndAReason) {
    const std::string good = picture("good.jpg", {320, 240}, kReds[0]);
    const std::string whole = readText(good);
    const std::string fifo = folder.file("fifo.jpg");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    Strings inputs{fifo, "/dev/null",
                   fs::path(folder.write("texts/a.txt", "no picture")).parent_path()};
    for (const std::string& bytes : {std::string(), std::string(5000, 'g'), whole.substr(0, 20)})
        inputs.push_back(folder.write(fmt::format("bad{}.jpg", bytes.size()), bytes));
    const Strings before = namesIn(folder.path());
    request.mode = MenuMode::preview;
    request.captions = {"one", "two", "three"};
    request.output = folder.file("page.png");
    for (const std::string& input : inputs) {
        SCOPED_TRACE(input);
        request.bkg = input;
        request.thumbs = {good, input, good};
        const std::string said = lines();
        EXPECT_NE(said.find("tkvDvdMenuImg: " + input + ": it is "), std::string::npos) << said;
        EXPECT_EQ(std::regex_replace(said, std::regex("tkvDvdMenuImg: .*\n"), ""),
                  "dvdMenuPicture       : deb\npourcentage    : 0.0\npourcentage    : 100.0\n");
        EXPECT_EQ(pixelOf(request.output, 5, 5), (Rgba{0, 0, 0, 255}));
        EXPECT_TRUE(near(pixelOf(request.output, 470, 90), kReds[0], 3)) << "the third is there";
        EXPECT_EQ(pixelOf(request.output, 320, 90), (Rgba{0, 0, 0, 255})) << "the second is not";
        fs::remove(request.output);
        EXPECT_EQ(namesIn(folder.path()), before) << "no file came or went";
    }
    // Cut in half it still shows its upper half; named wrongly it is what its content says.
    request.thumbs = {folder.write("half.jpg", whole.substr(0, whole.size() / 2))};
    request.bkg = folder.write("wrong.tiff", whole);
    lines();
    EXPECT_TRUE(near(pixelOf(request.output, 5, 5), {150, 0, 0, 255}, 3));
    EXPECT_TRUE(near(pixelOf(request.output, 170, 50), kReds[0], 3));
}

TEST_F(MenuFrames, FailuresAreAnswered) {
    request.output = folder.write("file", "mine") + "/menu";
    EXPECT_NE(lines().find("mkdir               :-(( '" + request.output), std::string::npos);
    request.captions = {"only one"};
    errorsOf([&] { EXPECT_FALSE(dvdMenuPicture(request)); });
}

TEST_F(Menu, LongListsAndTextsEnd) {
    request.mode = MenuMode::preview;
    request.thumbs = Strings(10000, picture("a.jpg", {320, 240}, kReds[0]));
    request.captions = Strings(10000, "caption");
    request.captions->front() = std::string(100000, 'w');
    request.captions->at(1) = "\xFF\xFE caf\xE9" + fmt::format("{:夏>30000}", "");
    request.captions->at(2) = fmt::format("{:\n>90000}{:ש>30000}", "", "");
    request.title = std::string(100000, '\xC3');
    request.output = folder.file("page.jpg");
    lines();
    EXPECT_TRUE(near(pixelOf(request.output, 470, 260), kReds[0], 3));
}

}  // namespace tkv::test::menus
