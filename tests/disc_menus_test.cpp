#include "disc_films.h"

// What the menus of a disc show and play, and the ways between more of them than one.

namespace tkv::test::disc {

TEST_F(Films, AreShownFromTheRightMomentsOn) {
    // A film's brightness is its second, and its tone climbs by 400 Hz a second.
    make("grey.mkv",
         "-f lavfi -i 'color=s=64x36:r=25:d=4,format=gray,geq=lum=40+40*T,scale=320:180:in_range="
         "tv:out_range=tv,format=yuv420p' "
         "-f lavfi -i 'aevalsrc=sin(2*PI*t*(400+200*t))/4:s=48000:d=4' -c:v ffv1 -g 1 -c:a flac");
    // The first scene is black; what comes then is white on the left.
    make("black.mkv",
         "-f lavfi -i 'color=s=64x36:r=25:d=5,format=gray,geq=lum=if(lt(T\\,1.1)\\,16\\,if(lt(X\\,"
         "W/2)\\,235\\,40+40*T)),scale=320:180:in_range=tv:out_range=tv:flags=neighbor,"
         "format=yuv420p' -c:v ffv1 -g 1");
    make("red.mkv",
         "-f lavfi -i color=red:s=320x180:r=25:d=1,scale=out_color_matrix=bt709,format=yuv420p "
         "-colorspace bt709 -c:v ffv1 -g 1");
    std::string project = "background = \"none\"\n";
    for (const char* film : {"grey.mkv\"\nexcerpt = 2", "grey.mkv\"\nexcerpt = 2",
                             "grey.mkv\"\nexcerpt = \"0:00\"", "black.mkv\"", "red.mkv\""})
        project += fmt::format("[[film]]\npath = \"{}\n", film);
    for (int i = 6; i <= 10; ++i) {
        makeReady(fmt::format("{}.vob", i));
        project += fmt::format("[[film]]\npath = \"{}.vob\"\n", i);
    }
    folder_.write("ten.toml", project);
    expectDisc("--no-image -o out ten.toml");

    // The excerpts begin anew at their ends: the first two each 2 s, the third each 4 s.
    const std::string menus = file("out/disc/VIDEO_TS/VIDEO_TS.VOB");
    const std::string shown =  // each second, a tenth as large
        raw(menus,
            "-vf \"select='not(mod(n,25))*lt(n,749)',scale=72:54:flags=area,format=gray\" "
            "-fps_mode passthrough -f rawvideo");
    ASSERT_EQ(shown.size(), 30U * 72 * 54);
    const struct {
        std::size_t x, y;
        double first;
        std::size_t period, seconds;
    } thumbnails[] = {
        {19, 12, 2, 2, 30}, {36, 12, 2, 2, 30}, {53, 12, 0, 4, 30}, {23, 25, 1.7, 3, 3}};
    for (const auto& [x, y, first, period, seconds] : thumbnails) {
        for (std::size_t i = 0; i < seconds; ++i) {
            const double moment = first + static_cast<double>(i % period);
            EXPECT_NEAR(static_cast<unsigned char>(shown[(i * 54 + y) * 72 + x]),
                        (24 + 40 * moment) * 255 / 219, 4)
                << x << " at " << i;
        }
    }
    EXPECT_TRUE(near(colorAt(menus, 1, "crop=60:60:310:230"), {253, 2, 2, 255}, 6));
    EXPECT_NEAR(hertzAt(menus, 1), 400 + 400 * 3.1, 20) << "of the first film's excerpt";

    Player player(file("out/disc"));
    ASSERT_EQ(player.highlights().hl_gi.btn_ns, 7);
    for (int film = 1; film <= 5; ++film) {
        ASSERT_EQ(player.press(film), fmt::format("film {}", film));
        ASSERT_EQ(player.leave(), "films 1");
        EXPECT_EQ(player.button(), film);
    }
    ASSERT_EQ(player.press(7), "films 2");
    ASSERT_EQ(player.highlights().hl_gi.btn_ns, 7);
    ASSERT_EQ(player.press(5), "film 10");
    for (const DVDMenuID_t key : {DVD_MENU_Root, DVD_MENU_Title}) {
        ASSERT_EQ(player.press(key), "films 2");
        EXPECT_EQ(player.button(), 5);
        ASSERT_EQ(player.press(5), "film 10");
    }
    ASSERT_EQ(player.leave(), "films 2");
    ASSERT_EQ(player.press(6), "film 1") << "plays all";
    for (int film = 2; film <= 10; ++film)
        ASSERT_EQ(player.leave(), fmt::format("film {}", film));
    ASSERT_EQ(player.leave(), "films 2");
    ASSERT_EQ(player.press(7), "films 1");
    EXPECT_EQ(player.button(), 1);
}

// Pixels brighter than the surroundings, to all four sides of a point.
PixelSize brightAround(const Bitmap& picture, int x, int y) {
    const auto count = [&](int stepX, int stepY) {
        int pixels = 0;
        const auto isIn = [&] {
            const int atX = x + stepX * pixels, atY = y + stepY * pixels;
            return atX >= 0 && atY >= 0 && atX < picture.width() && atY < picture.height() &&
                   (picture.row(atY)[atX] & 255U) > 90;
        };
        while (isIn())
            ++pixels;
        return pixels;
    };
    return {count(1, 0) + count(-1, 0), count(0, 1) + count(0, -1)};
}

TEST_F(Films, KeepCirclesRound) {
    const auto circle = [](const char* size) {
        return fmt::format(
            "-f lavfi -i 'color=s={}:r=25:d=2,format=gray,geq=lum=if(lt(hypot(X-W/2\\,Y-H/2)\\,H/6)"
            "\\,235\\,40)' ",
            size);
    };
    make("wide.mkv", circle("640x360") + "-c:v ffv1");
    make("narrow.mkv", circle("320x240") + "-c:v ffv1");
    make("tall.png", circle("360x640") + "-frames:v 1");
    const struct {
        const char* words;
        double diameter;
    } rows[] = {{"wide.mkv", 540 / 3.0},
                {"narrow.mkv", 540 / 3.0},
                {"--background tall.png wide.mkv", 720.0 / 360 * 640 / 3}};
    for (const auto& [words, diameter] : rows) {
        expectDisc(fmt::format("--no-menu --no-image -o round {}", words));
        const Bitmap shown = menu("round/jacket.jpg");
        const PixelSize found = brightAround(shown, shown.width() / 2, shown.height() / 2);
        EXPECT_NEAR(found.width, diameter, 5) << words;
        EXPECT_NEAR(found.height, diameter, 5) << words;
    }
}

}  // namespace tkv::test::disc
