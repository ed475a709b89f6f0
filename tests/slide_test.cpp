#include <cmath>
#include <map>

#include "disc/film/slide_film.h"
#include "disc/make/slide_frames.h"
#include "disc_films.h"
#include "graphics/picture_title.h"
#include "pictures.h"

// Films that are made of pictures: their frames, and discs of them.

namespace tkv::test::disc {

using namespace tkv::disc;  // NOLINT(google-build-using-namespace)

/// A film of pictures, and its frames.
class Show {
  public:
    /// `paint(i)` answers the pictures.
    Show(std::size_t count, const std::function<Bitmap(std::size_t)>& paint, bool moves,
         Standard standard, double step = 3) {
        show_.step = step;
        show_.request.moves = moves;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string name = fmt::format("{}.png", i);
            folder_.write(name, text(encodePicture(paint(i), "png", 1)));
            show_.slides.push_back({folder_.file(name), ""});
        }
        conversion_.standard = standard;
        if (moves) conversion_.fields = FieldSource::kept;
        conversion_.frames = conversion_.frameAt(step * static_cast<double>(show_.slides.size()));
        raster_ = {kRasterWidth, factsOf(standard).rasterHeight};
    }

    /// The levels of brightness of frames, one after another.
    std::vector<std::vector<std::uint8_t>> frames(int first, int count) const {
        const SlideTimes times(show_, conversion_);
        SlideFrames frames(show_, times, first + count, raster_);
        std::vector<std::uint8_t> frame(frameBytes(raster_));
        const auto brightness = static_cast<std::ptrdiff_t>(frame.size() / 3 * 2);
        std::vector<std::vector<std::uint8_t>> all;
        for (int number = first; number < first + count; ++number) {
            frames.draw(number, frame);
            all.emplace_back(frame.begin(), frame.begin() + brightness);
        }
        return all;
    }

    PixelSize raster() const { return raster_; }
    int frameAt(double seconds) const { return conversion_.frameAt(seconds); }

  private:
    TempFolder folder_;
    SlideShow show_;
    Conversion conversion_;
    PixelSize raster_;
};

/// A white disc of that radius in the middle of a picture, whose edge is soft.
Bitmap withDisc(PixelSize size, double radius, int around = 60) {
    return painted(size, [=](int x, int y) {
        const double away = std::hypot(x + 0.5 - size.width / 2.0, y + 0.5 - size.height / 2.0);
        const int level = around + static_cast<int>(std::lround(
                                       (250 - around) * std::clamp(radius + 0.5 - away, 0.0, 1.0)));
        return Rgba{level, level, level, 255};
    });
}

TEST(Slides, KeepTheirShapes) {
    const struct {
        PixelSize size;
        bool moves;
        double height;  // of the picture, in frames, where it is not moved yet
    } rows[] = {
        {{800, 450}, false, 1},
        {{800, 500}, false, 16.0 / 9 / 1.6},
        {{800, 600}, false, 1},
        {{450, 800}, false, 1},
        {{1200, 300}, false, 16.0 / 9 / 4},
        {{800, 450}, true, 1},
        {{800, 600}, true, 4.0 / 3},
        {{450, 600}, true, 1},
        {{300, 200}, true, 16.0 / 9 / 1.5},
    };
    for (const Standard standard : {Standard::pal, Standard::ntsc}) {
        for (const auto& [size, moves, height] : rows) {
            SCOPED_TRACE(fmt::format("{} x {} {}", size.width, size.height, moves));
            // Of the first slide's life the last frame before the next one comes.
            const double radius = 0.2 * std::min(size.width, size.height);
            const Show show(
                1, [&, wanted = size](std::size_t) { return withDisc(wanted, radius); }, moves,
                standard);
            const auto frame = show.frames(show.frameAt(1), 1).front();
            const auto [width, rasterHeight] = show.raster();
            // White in columns and in rows; the frame is a picture of 16 x 9.
            std::vector<double> columns(static_cast<std::size_t>(width)), down(576);
            for (int y = 0; y < rasterHeight; ++y) {
                for (int x = 0; x < width; ++x) {
                    const double white = std::max(
                        0.0, (frame[static_cast<std::size_t>(y * width + x)] - 140) / 91.0);
                    columns[static_cast<std::size_t>(x)] += white;
                    down[static_cast<std::size_t>(y)] += white;
                }
            }
            const double across = std::ranges::max(down) / width * 16;
            const double high = std::ranges::max(columns) / rasterHeight * 9;
            EXPECT_NEAR(across / high, 1, 0.02);
            const double wanted = 2 * radius / size.height * height * 9;
            EXPECT_NEAR(high / wanted, moves ? 1.04 : 1, moves ? 0.05 : 0.02);
        }
    }
}

TEST(Slides, TurnIntoEachOther) {
    // Equal ones stay what they are, also in their noise.
    const Bitmap noise = painted({320, 180}, [](int x, int y) {
        return Rgba{x * 7 % 256, (x * x + y * 13) % 256, y * 5 % 256, 255};
    });
    const Show same(
        2, [&](std::size_t) { return *noise.copy(); }, false, Standard::pal);
    for (const auto& frame : same.frames(45, 40))
        EXPECT_TRUE(frame == same.frames(45, 1).front());
    const Show show(
        2,
        [](std::size_t i) {
            const int level = i == 0 ? 0 : 255;
            return painted({320, 180}, {level, level, level, 255});
        },
        false, Standard::pal);
    const auto frames = show.frames(0, 150);
    const auto level = [&](int frame) { return frames[static_cast<std::size_t>(frame)].front(); };
    EXPECT_EQ(level(49), 16);
    EXPECT_NEAR(level(62), 125.5, 6);
    for (int frame = 50; frame < 75; ++frame)
        EXPECT_NEAR(level(frame) - level(frame - 1), 219 / 26.0, 1.5) << frame;
    EXPECT_EQ(level(75), 235);
    EXPECT_EQ(level(136), 235);
    EXPECT_NEAR(level(149), 16 + 219 / 13.0, 3);
}

TEST(Slides, MoveWithoutJitter) {
    // A soft dot on black, beside the middle.
    const auto dot = [](PixelSize size) {
        return painted(size, [size](int x, int y) {
            const double across = (x - 0.45 * size.width) / 9, down = (y - 0.4 * size.height) / 9;
            const int level = static_cast<int>(
                std::lround(240 * std::exp(-0.5 * (across * across + down * down))));
            return Rgba{level, level, level, 255};
        });
    };
    const struct {
        PixelSize size;
        std::size_t turn;
    } rows[] = {{{960, 720}, 0}, {{960, 540}, 1}, {{1200, 500}, 2}, {{600, 800}, 3}};
    for (const auto& [size, turn] : rows) {
        SCOPED_TRACE(fmt::format("{} x {}", size.width, size.height));
        const Show show(
            turn + 1,
            [&, wanted = size, at = turn](std::size_t i) {
                return i == at ? dot(wanted) : painted({16, 9}, {0, 0, 0, 255});
            },
            true, Standard::pal, 6);
        const int width = show.raster().width, height = show.raster().height;
        std::vector<Point> places;  // of each field
        for (const auto& frame : show.frames(150 * static_cast<int>(turn) + 20, 60)) {
            for (int field = 0; field < 2; ++field) {
                double sum = 0;
                Point place;
                for (int y = field; y < height; y += 2) {
                    for (int x = 0; x < width; ++x) {
                        const int level = frame[static_cast<std::size_t>(y * width + x)];
                        const double light = std::max(0, level - 40);
                        sum += light;
                        place.x += light * x;
                        place.y += light * y;
                    }
                }
                places.push_back({place.x / sum, place.y / sum});
            }
        }
        double worst = 0;
        for (std::size_t i = 2; i < places.size(); ++i) {
            const Point &a = places[i - 2], &b = places[i - 1], &c = places[i];
            worst = std::max({worst, std::abs(a.x - 2 * b.x + c.x), std::abs(a.y - 2 * b.y + c.y)});
        }
        EXPECT_LT(worst, 0.05);
        RecordProperty(fmt::format("worst{}", turn), fmt::format("{:.4f}", worst));
        const double way =
            std::hypot(places.back().x - places.front().x, places.back().y - places.front().y);
        EXPECT_GT(way, 1.5);
        EXPECT_LT(way, 150);
    }
}

TEST(PictureTitle, IsWhatPeopleWrote) {
    const TempFolder folder;
    const auto titled = [&](const std::string& name, const std::string& words) {
        run(fmt::format("cd {}; {} -size 32x24 xc:red {}; exiftool -q -overwrite_original {} {}",
                        folder.path(), magick(), name, words, name));
        return titleOfPicture(bytesOf(folder.file(name)));
    };
    const struct {
        const char *name, *words, *title;
    } rows[] = {
        {"plain.jpg", "-Artist=Ada", ""},
        {"exif.jpg", "-ImageDescription='  Été à\n la mer '", "Été à la mer"},
        {"latin.jpg", "-charset exif=latin -ImageDescription='Été'", "Été"},
        {"windows.jpg", "-XPTitle='Ελλάδα' -ImageDescription='SONY DSC'", "Ελλάδα"},
        {"iptc.jpg", "-codedcharacterset=utf8 -IPTC:Keywords=x -IPTC:ObjectName='Le port'",
         "Le port"},
        {"xmp.jpg", "-XMP-dc:Title='A & B <c>' -IPTC:ObjectName=other", "A & B <c>"},
        {"camera.jpg", "-ImageDescription='OLYMPUS DIGITAL CAMERA         '", ""},
        {"drone.jpg", "-ImageDescription='DCIM\\100MEDIA\\DJI_0001.JPG'", ""},
        {"blank.jpg", "-ImageDescription='   - '", ""},
        {"xmp.png", "-XMP-dc:Title='In a PNG'", "In a PNG"},
        {"exif.png", "-ImageDescription='Also there'", "Also there"},
        {"exif.webp", "-ImageDescription='Et là'", "Et là"},
        {"exif.avif", "-ImageDescription='Am See'", "Am See"},
        {"caption.jpg", "-XMP-dc:Description='By Lightroom' -ImageDescription=image",
         "By Lightroom"},
    };
    for (const auto& [name, words, title] : rows)
        EXPECT_EQ(titled(name, words), title) << name;
}

TEST_F(Films, AreMadeOfPictures) {
    const char* const colors[] = {"red", "lime", "blue", "white"};
    for (int i = 0; i < 4; ++i) {
        // Of a frame's shape; the last one stands upright by its word only.
        run(fmt::format("cd {}; mkdir -p summer; {} -size {} xc:{} summer/{}.jpg", folder_.path(),
                        magick(), i == 3 ? "640x360" : "320x180", colors[i], i + 8));
    }
    run(
        fmt::format("exiftool -q -overwrite_original -n -Orientation=6 "
                    "-ImageDescription='In the Alps' {0}",
                    file("summer/11.jpg")));
    folder_.write("summer/12.jpg", "\xFF\xD8\xFF\xE0 no picture");
    make("a.wav", "-f lavfi -i sine=f=400:r=48000:d=3");
    make("b.flac", "-f lavfi -i sine=f=1000:r=44100:d=2");
    const std::string slides = "title = 'Sum'\n[[film]]\nslides = 'summer'\nseconds = 2\n";
    folder_.write("film.toml", slides + "music = ['a.wav', 'b.flac']\n");
    const std::string plainly = " --no-menu --no-image -o ";
    const std::string said = makeDisc("film.toml" + plainly + "made");
    EXPECT_TRUE(said.ends_with("status 0\n")) << said;
    for (const char* told : {"0:08  summer, 4 pictures, 2 s each, music: a.wav, b.flac: 16:9",
                             "left out: 12.jpg: it is "})
        EXPECT_NE(said.find(told), std::string::npos) << told << said;
    const std::string film = file("made") + kFirstFilm;
    EXPECT_EQ(run("ffprobe -v error -count_packets -select_streams v -show_entries "
                  "stream=nb_read_packets -of csv=p=0 " +
                  film)
                  .substr(0, 3),
              "200");
    // In natural order, in their colours, and from black to black.
    const struct {
        double seconds;
        Rgba color;
    } moments[] = {{0, {0, 0, 0, 255}},
                   {0.8, {254, 0, 0, 255}},
                   {2.1, {0, 255, 0, 255}},
                   {4.2, {0, 0, 254, 255}},
                   {7.9, {30, 30, 30, 255}}};
    for (const auto& [seconds, color] : moments)
        EXPECT_TRUE(near(colorAt(film, seconds, "null"), color, 25)) << seconds;
    // What is upright stands before itself, darker.
    EXPECT_TRUE(near(colorAt(film, 6.5, "crop=iw/8:ih:0"), {140, 140, 140, 255}, 25));
    EXPECT_TRUE(near(colorAt(film, 6.5, "crop=iw/8:ih"), {255, 255, 255, 255}, 4));
    // One sound after the other, and again from the first.
    EXPECT_EQ(hertzAt(film, 1), 400);
    EXPECT_EQ(hertzAt(film, 4), 1000);
    EXPECT_EQ(hertzAt(film, 6), 400);
    const std::string samples = raw(film, "-map 0:a:0 -ac 1 -ar 8000 -f s16le");
    EXPECT_NEAR(static_cast<double>(samples.size()) / 2 / 8000, 8, 0.05);

    // A title stands on its picture's foot, and all is made anew for it, but nothing again.
    folder_.write(
        "titles.toml",
        "[[film]]\nslides = ['summer/10.jpg', 'summer/11.jpg']\nseconds = 2\ntitles = true\n");
    expectDisc("titles.toml" + plainly + "made");
    const auto foot = [&](int y) {
        return colorAt(film, 2.9, fmt::format("crop=iw/3:20:iw/3:{}", y));
    };
    EXPECT_LT(foot(500).red, 200);
    EXPECT_GT(foot(300).red, 240);
    const auto before = fs::last_write_time(film);
    const std::string again = makeDisc("titles.toml" + plainly + "made");
    EXPECT_EQ(again.find("Encoding summer"), std::string::npos) << again;
    EXPECT_NE(fs::last_write_time(film), before);

    // They share the length of their music, and move; what cannot be is told.
    folder_.write("fit.toml",
                  "[[film]]\nslides = ['summer/8.jpg', 'summer/9.jpg']\nmusic = 'a.wav'\nfit = "
                  "'music'\nmotion = 'slow'\n");
    const std::string fitted = makeDisc("fit.toml --ntsc" + plainly + "fit");
    EXPECT_NE(fitted.find("0:03  summer, 2 pictures, 1.5 s each"), std::string::npos) << fitted;
    EXPECT_TRUE(run("ffprobe -v error -select_streams v -show_entries stream=field_order -of "
                    "csv=p=0 " +
                    file("fit") + kFirstFilm)
                    .starts_with("tt"));
    const struct {
        const char *settings, *told;
    } faults[] = {
        {"slides = 'winter'", "winter: there is no such picture."},
        {"slides = 'summer/12.jpg'", "summer holds no picture that can be read (left out: 12.jpg:"},
        {"slides = 'summer'\nmusic = 'no.mp3'", "no.mp3: there is no such sound."},
        {"slides = 'summer'\nmusic = 'film.toml'", "film.toml cannot be heard"},
    };
    for (const auto& [settings, told] : faults) {
        folder_.write("fault.toml", fmt::format("[[film]]\n{}\n", settings));
        const std::string fault = makeDisc("fault.toml --preview -o fault");
        EXPECT_NE(fault.find(told), std::string::npos) << fault;
    }
}

}  // namespace tkv::test::disc
