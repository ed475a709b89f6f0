#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "composer/thumbnail_layout.h"
#include "disc_films.h"

// What the menus of a disc show and play, and the ways between more of them than one.

namespace tkv::test::disc {

TEST_F(Films, AreShownFromTheRightMomentsOn) {
    // A film's brightness is its second, and its tone climbs by 400 Hz a second.
    make("grey.mkv",
         "-f lavfi -i 'color=s=64x36:r=25:d=4,format=yuv420p,geq=cb=128:lum=40+40*T,scale=320:180' "
         "-f lavfi -i 'aevalsrc=sin(2*PI*t*(400+200*t))/4:s=48000:d=4' -c:v ffv1 -g 1 -c:a flac");
    // The first scene is black; what comes then is white on the left.
    make("black.mkv",
         "-f lavfi -i "
         "'color=s=64x36:r=25:d=5,format=yuv420p,geq=cb=128:lum=if(lt(T\\,1.1)\\,16\\,if(lt(X\\,"
         "W/2)\\,235\\,40+40*T)),scale=320:180:flags=neighbor' -c:v ffv1 -g 1");
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

    // The excerpts begin anew at their ends: the first two after 2 s, the others after 3 s.
    const std::string menus = file("out/disc/VIDEO_TS/VIDEO_TS.VOB");
    const std::string shown =  // a tenth as large
        raw(menus,
            "-vf \"select='lt(n,749)',scale=72:54:flags=area,format=yuv420p,extractplanes=y\" "
            "-fps_mode passthrough -f rawvideo");
    ASSERT_EQ(shown.size(), 749U * 72 * 54);
    const struct {
        std::size_t x, y;
        double first;
        std::size_t period, seconds;
    } thumbnails[] = {
        {19, 12, 2, 2, 30}, {36, 12, 2, 2, 30}, {53, 12, 0.48, 3, 30}, {23, 25, 1.7, 3, 3}};
    for (const auto& [x, y, first, period, seconds] : thumbnails) {
        const std::size_t place = y * 72 + x;
        const auto level = [&](std::size_t frame) {
            return static_cast<unsigned char>(shown[frame * 54 * 72 + place]);
        };
        for (std::size_t i = 0; i < seconds; ++i) {
            const double moment = first + static_cast<double>(i % period);
            EXPECT_NEAR(level(i * 25), 40 + 40 * moment, 4) << x << " at " << i;
        }
        int hop = std::abs(level(748) - level(0));
        for (std::size_t i = 1; i < 749; ++i)
            hop = std::max(hop, std::abs(level(i) - level(i - 1)));
        EXPECT_LT(hop, 20) << x;
    }
    EXPECT_TRUE(near(colorAt(menus, 1, "crop=60:60:310:230"), {253, 2, 2, 255}, 6));
    EXPECT_NEAR(hertzAt(menus, 1), 400 + 400 * 3.1, 20) << "of the first film's excerpt";

    Player player(file("out/disc"));
    ASSERT_EQ(player.highlights().hl_gi.btn_ns, 7);
    for (int film = 1; film <= 5; ++film) {
        ASSERT_EQ(player.press(film), fmt::format("film {}", film));
        ASSERT_EQ(player.leave(), "films-1");
        EXPECT_EQ(player.button(), film);
    }
    ASSERT_EQ(player.press(7), "films-2");
    ASSERT_EQ(player.highlights().hl_gi.btn_ns, 7);
    ASSERT_EQ(player.press(5), "film 10");
    for (const DVDMenuID_t key : {DVD_MENU_Root, DVD_MENU_Title}) {
        ASSERT_EQ(player.press(key), "films-2");
        EXPECT_EQ(player.button(), 5);
        ASSERT_EQ(player.press(5), "film 10");
    }
    ASSERT_EQ(player.leave(), "films-2");
    ASSERT_EQ(player.press(6), "film 1") << "plays all";
    for (int film = 2; film <= 10; ++film)
        ASSERT_EQ(player.leave(), fmt::format("film {}", film));
    ASSERT_EQ(player.leave(), "films-2");
    ASSERT_EQ(player.press(7), "films-1");
    EXPECT_EQ(player.button(), 1);
}

// Pixels brighter than the surroundings, to all four sides of a point, up to some.
PixelSize brightAround(const Bitmap& picture, int x, int y, double most) {
    const auto count = [&](int stepX, int stepY) {
        int pixels = 0;
        const auto isIn = [&] {
            const int atX = x + stepX * pixels, atY = y + stepY * pixels;
            return atX >= 0 && atY >= 0 && atX < picture.width() && atY < picture.height() &&
                   pixels < most && (picture.row(atY)[atX] & 255U) > 95;
        };
        while (isIn())
            ++pixels;
        return pixels;
    };
    return {count(1, 0) + count(-1, 0), count(0, 1) + count(0, -1)};
}

TEST_F(Films, KeepCirclesRound) {
    const auto circle = [](const char* size, const char* center = "W/2", int part = 6) {
        return fmt::format(
            "-f lavfi -i "
            "'color=s={}:r=2:d=4,format=yuv420p,geq=cb=128:lum=if(lt(hypot(X-{}\\,Y-H/2)\\,H/{})"
            "\\,235\\,40)' ",
            size, center, part);
    };
    // What a thumbnail shows of the film's height.
    const std::pair<const char*, double> films[] = {
        {"wide", 1}, {"narrow", 0.75}, {"scope", 1}, {"tall", 1}, {"wide", 1}};
    make("wide.mkv", circle("640x360") + "-c:v ffv1");
    make("narrow.mkv", circle("320x240") + "-c:v ffv1");
    make("scope.mkv", circle("956x400") + "-c:v ffv1");
    make("tall.mkv", circle("360x640") + "-c:v ffv1");
    make("tall.png", circle("360x640") + "-frames:v 1");
    make("right.png", circle("640x360", "588", 8) + "-frames:v 1");
    const auto expectCircle = [](const Bitmap& shown, double x, double y, double diameter) {
        const PixelSize found =
            brightAround(shown, static_cast<int>(x), static_cast<int>(y), diameter);
        const double most = std::max(2.5, diameter * 0.04);
        EXPECT_NEAR(found.width, diameter, most) << x << ", " << y;
        EXPECT_NEAR(found.height, diameter, most) << x << ", " << y;
    };
    std::string words;
    for (std::size_t count = 1; count <= 5; ++count) {
        words += fmt::format(" {}.mkv", films[count - 1].first);
        expectDisc("--preview --background right.png -o thumbnails" + words);
        const Bitmap shown = menu("thumbnails/menus/films-1.jpg");  // two thirds of the page
        SCOPED_TRACE(words);
        if (count == 1) expectCircle(shown, 588, 180, 90);
        const ThumbnailLayout& layout = thumbnailLayout(true, count);
        const double parts = std::round(layout.source.width / layout.source.height * 0.75);
        for (std::size_t film = 0; film < count; ++film) {
            const ThumbnailPlace& at = layout.place(film);
            const double height = layout.source.height / 1.5, y = 360 - at.y / 1.5 - height / 2;
            for (int part = 0; part < parts; ++part) {
                const double x = at.x + layout.shiftX + layout.source.width * (part + 0.5) / parts;
                expectCircle(shown, x * 640 / 720, y, height / 3 / films[film].second);
            }
        }
    }
    for (const auto& [behind, diameter] :
         {std::pair{"wide.mkv", 180.0},
          {"narrow.mkv", 180.0},
          {"tall.mkv", 180.0},
          {"--background tall.png wide.mkv", 720.0 / 360 * 640 / 3}}) {
        SCOPED_TRACE(behind);
        expectDisc(fmt::format("--no-menu --no-image -o round {}", behind));
        expectCircle(menu("round/jacket.jpg"), 360, 270, diameter);
    }
}

}  // namespace tkv::test::disc
