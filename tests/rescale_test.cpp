#include "imaging/rescale.h"

#include <algorithm>
#include <cmath>

#include "imaging/rescale_modes.h"
#include "support.h"

namespace tkv::test::rescaling {

constexpr Rgba kWhitePixel{255, 255, 255, 255}, kBlackPixel{0, 0, 0, 255};

/// What the chart shows at a point from the bottom left: red tells the column, green the row.
Rgba chartAt(PixelSize size, double x, double y) {
    return {static_cast<int>(x * 255 / size.width), static_cast<int>(y * 255 / size.height), 128,
            255};
}

Bitmap chart(PixelSize size) {
    return painted(size, [&](int x, int y) { return chartAt(size, x, size.height - 1 - y); });
}

RescaleMode routine(int mode) {
    return std::array{imgRescaleCover, imgRescaleFit, imgRescaleStretch, imgRescaleFitPad,
                      imgRescaleFillCrop}[static_cast<std::size_t>(mode + 2)];
}

/// Source, box, mode, bitmap, and which part of it shows which part of the source (bottom left).
const std::tuple<PixelSize, PixelSize, int, PixelSize, Rect, Rect> kFittings[] = {
    {{1440, 1080}, {960, 540}, 2, {960, 540}, {0, 0, 960, 540}, {0, 135, 1440, 810}},
    {{1440, 1080}, {960, 540}, 1, {960, 540}, {120, 0, 720, 540}, {0, 0, 1440, 1080}},
    {{1440, 1080}, {720, 576}, 2, {720, 576}, {0, 0, 720, 576}, {45, 0, 1350, 1080}},
    {{1440, 1080}, {720, 576}, 1, {720, 576}, {0, 18, 720, 540}, {0, 0, 1440, 1080}},
    {{1440, 1080}, {720, 576}, -1, {720, 540}, {0, 0, 720, 540}, {0, 0, 1440, 1080}},
    {{1440, 1080}, {720, 576}, -2, {768, 576}, {0, 0, 768, 576}, {0, 0, 1440, 1080}},
    // Single precision loses the last column: 720 x 1.3888888 is less than 1000.
    {{1000, 1000}, {720, 480}, 2, {720, 480}, {0, 0, 720, 480}, {0, 166, 999, 666}},
    {{100, 80}, {300, 300}, 1, {300, 300}, {0, 30, 300, 240}, {0, 0, 100, 80}},
    // An odd bar leaves its extra row at the top.
    {{200, 100}, {100, 55}, 1, {100, 55}, {0, 2, 100, 50}, {0, 0, 200, 100}},
    {{1440, 1080}, {300, 100}, 0, {300, 100}, {0, 0, 300, 100}, {0, 0, 1440, 1080}},
};

TEST(Rescale, FitsTheBoxInEveryModeAtAnyResolution) {
    const Rgba black{0, 0, 0, 255};
    for (const auto& [size, box, mode, bitmap, to, from] : kFittings) {
        const Bitmap source = chart(size);
        for (const double resolution : {72.0, 144.0, -5.0}) {
            SCOPED_TRACE(fmt::format("mode {} of {}, {} dpi", mode, size.width, resolution));
            std::optional<Bitmap> result;
            const std::string lines = verboseErrorsOf([&, mode = mode, box = box] {
                result = routine(mode)(&source, box.width, box.height, resolution, false);
            });
            ASSERT_TRUE(result && result->size() == bitmap);
            EXPECT_EQ(result->rowBytes(), 32U * static_cast<unsigned>(bitmap.width));
            const double unit = resolution > 0 ? 72 / resolution : 1;
            EXPECT_EQ(result->nominalSize(), (Size{bitmap.width * unit, bitmap.height * unit}));
            const std::string cut = fmt::format("srcOffset={:.0f}:{:.0f} (src={}*{})\n", 0 - from.x,
                                                0 - from.y, from.width, from.height);
            EXPECT_TRUE(mode != 2 || resolution != 72 || lines.find(cut) != std::string::npos)
                << lines;

            for (const auto& [h, v] : {std::pair{0.03, 0.04}, {0.3, 0.6}, {0.96, 0.97}}) {
                const auto [x, y] = std::pair(to.x + h * to.width, to.y + v * to.height);
                const Rgba shown =
                    pixel(*result, static_cast<int>(x), bitmap.height - 1 - static_cast<int>(y));
                EXPECT_TRUE(near(
                    shown, chartAt(size, from.x + h * from.width, from.y + v * from.height), 4));
            }
            // Bars, if any, are black up to the picture's very edge.
            const auto [left, below] = std::pair(static_cast<int>(to.x), static_cast<int>(to.y));
            EXPECT_TRUE(left == 0 || pixel(*result, left - 1, 0) == black);
            EXPECT_TRUE(below == 0 || pixel(*result, 0, bitmap.height - below) == black);
            EXPECT_NE(pixel(*result, left, bitmap.height - below - 1), black);
        }
    }
}

TEST(Rescale, BlackGroundOnlyWhereAlphaIsNotKept) {
    const Rgba nothing{0, 0, 0, 0};
    const Bitmap half = painted({20, 20}, [&](int x, int) {
        return x < 10 ? Rgba{255, 0, 0, 255} : nothing;
    });
    for (const int mode : {-2, -1, 0, 1, 2}) {
        const Bitmap kept = routine(mode)(&half, 10, 10, 72, true).value();
        EXPECT_EQ(pixel(kept, 1, 5), (Rgba{255, 0, 0, 255})) << mode;
        EXPECT_EQ(pixel(kept, 8, 5), nothing) << mode;
        const Bitmap filled = routine(mode)(&half, 10, 10, 72, false).value();
        EXPECT_EQ(pixel(filled, 8, 5), (Rgba{0, 0, 0, 255})) << mode;
    }
    // The covering mode's ground is four units larger than the box, and ends there.
    const Bitmap wide = painted({400, 100}, nothing);
    const Bitmap covered = imgRescaleCover(&wide, 50, 50, 72, false).value();
    EXPECT_EQ(pixel(covered, 53, 10).alpha, 255);
    EXPECT_EQ(pixel(covered, 54, 10).alpha, 0);
}

TEST(Rescale, KeepsAlphaInTheTypesThatAreMeantTo) {
    const TempFolder folder;
    const Bitmap nothing = painted({8, 8}, {0, 0, 0, 0});
    for (const auto& [name, alpha] :
         {std::pair{"a.tif", 0}, {"a.TIFF", 0}, {"a.gif", 0}, {"a.png", 0}, {"a.jp2", 255}}) {
        ASSERT_TRUE(imgRescale(&nothing, folder.file(name), 8, 8, 72, 0, 1));
        EXPECT_EQ(pixel(decodePicture(folder.file(name)).value(), 4, 4).alpha, alpha) << name;
    }
}

TEST(Rescale, KeepsCoarseStripesAndDropsFineOnes) {
    const TempFolder folder;
    // Stripes of so many output pixels leave half the range between these.
    for (const auto& [period, least, most] :
         {std::tuple{1.25, 0, 16}, {1.6, 0, 24}, {3.0, 100, 128}, {4.0, 105, 128}}) {
        const Bitmap stripes = painted({800, 80}, [period = period](int x, int) {
            return std::fmod((x + 0.5) / 4 / period, 1) < 0.5 ? kWhitePixel : kBlackPixel;
        });
        for (const char* name : {"", "a.png", "a.jpg"}) {
            const std::string path = folder.file(name), shown = folder.file("shown.png");
            PictureSource source = &stripes;
            if (*name != '\0') {
                ASSERT_TRUE(imgRescale(&stripes, path, 800, 80, 72, 0, 1));
                source = path;
            }
            ASSERT_TRUE(imgRescale(source, shown, 200, 20, 72, 0, 1));
            const Bitmap small = decodePicture(shown).value();
            int darkest = 255, lightest = 0;
            for (int x = 4; x < 196; ++x) {
                darkest = std::min(darkest, pixel(small, x, 9).green);
                lightest = std::max(lightest, pixel(small, x, 9).green);
            }
            const int half = (lightest - darkest) / 2;
            EXPECT_TRUE(half >= least && half <= most) << half << " of " << period << name;
        }
    }
}

TEST(Rescale, KeepsTheMeanAndColoursWithinTheirAlpha) {
    auto random = [seed = 1U]() mutable { return (seed = seed * 1664525 + 1013904223) >> 16; };
    const auto level = [&random](int span) { return 100 + static_cast<int>(random() % 64) % span; };
    const Bitmap even = painted({203, 151}, [&](int, int) {
        return Rgba{level(4), level(4), level(4), 255};
    });
    const Bitmap sharp = painted({203, 151}, [&](int, int) {
        const int alpha = random() % 3 == 0 ? 0 : level(64);
        return Rgba{random() % 2 == 0 ? 255 : 0, 255, 0, alpha};
    });
    const auto mean = [](const Bitmap& bitmap) {
        double sum = 0;
        for (int y = 0; y < bitmap.height(); ++y) {
            for (int x = 0; x < bitmap.width(); ++x)
                sum += pixel(bitmap, x, y).green;
        }
        return sum / bitmap.width() / bitmap.height();
    };
    for (const PixelSize size :
         {PixelSize{203, 151}, {400, 300}, {204, 150}, {180, 130}, {101, 75}, {30, 20}, {1, 1}}) {
        const auto shown = [size](const Bitmap& source) {
            return imgRescaleStretch(&source, size.width, size.height, 72, true).value();
        };
        EXPECT_NEAR(mean(shown(even)), mean(even), size.width == 1 ? 0.6 : 0.1) << size.width;
        const Bitmap scaled = shown(sharp);
        for (int i = 0; i < size.width * size.height; ++i) {
            const std::uint32_t word = scaled.row(i / size.width)[i % size.width];
            const std::uint32_t alpha = word >> 24U;
            ASSERT_TRUE((word >> 16U & 0xFFU) <= alpha && (word >> 8U & 0xFFU) <= alpha) << i;
        }
        EXPECT_TRUE(size != sharp.size() || worstDifference(scaled, sharp) == 0);
    }
}

TEST(Rescale, DecodesAllThatTheBoxCanShow) {
    const TempFolder folder;
    const Bitmap stripes = painted({1600, 160}, [](int x, int) {
        return x / 4 % 2 == 0 ? Rgba{255, 255, 255, 255} : Rgba{0, 0, 0, 255};
    });
    const std::string photo = folder.file("photo.jpg"), shown = folder.file("shown.png");
    ASSERT_TRUE(imgRescale(&stripes, photo, 1600, 160, 72, 0, 1));
    for (const int mode : {-1, 0, 1, 2}) {
        ASSERT_TRUE(imgRescale(photo, shown, 800, 80, 72, mode, 1));
        const Bitmap picture = decodePicture(shown).value();
        int darkest = 255, lightest = 0;
        for (int x = 100; x < 140; ++x) {
            darkest = std::min(darkest, pixel(picture, x, 40).green);
            lightest = std::max(lightest, pixel(picture, x, 40).green);
        }
        EXPECT_GT(lightest - darkest, 180) << "stripes of two pixels, mode " << mode;
    }
}

TEST(Rescale, RefusesWhatIsNoSourceNoModeOrNoBox) {
    const TempFolder folder;
    const Bitmap image = chart({64, 48});
    const std::string target = folder.file("out.png");
    const struct {
        PictureSource source;
        int side, mode;
    } cases[] = {{static_cast<const Bitmap*>(nullptr), 10, 0},
                 {folder.file("none.jpg"), 10, 0},
                 {folder.write("text.jpg", "no picture"), 10, 0},
                 {&image, 10, 3},
                 {&image, 10, -3},
                 {&image, 0, 2},
                 {&image, -4, 0},
                 {&image, 1000000, 0}};
    for (const auto& [source, side, mode] : cases) {
        EXPECT_FALSE(imgRescale(source, target, side, side, 72, mode, 1)) << side << " " << mode;
        EXPECT_FALSE(fs::exists(target)) << side << ", mode " << mode;
    }
}

TEST(Sizes, OfPicturesOnly) {
    const TempFolder folder;
    const Bitmap image = chart({1024, 60});
    const std::string path = folder.file("a.jpg");
    ASSERT_TRUE(imgRescale(&image, path, 1024, 60, 72, 0, 1));
    EXPECT_EQ(imgSizes(path), (std::array{1024, 60}));
    EXPECT_FALSE(imgSizes(folder.file("missing.png")));
    EXPECT_FALSE(imgSizes(folder.write("text.png", "text")));
}

}  // namespace tkv::test::rescaling
