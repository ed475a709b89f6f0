#include "imaging/rescale.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "imaging/export.h"
#include "imaging/output_bitmap.h"
#include "imaging/rescale_modes.h"
#include "platform/drawing.h"
#include "platform/picture_file.h"
#include "support.h"

namespace tkv::test {
namespace {

/// A picture whose red tells the column and whose green tells the row from the bottom.
Bitmap chart(PixelSize size) {
    return painted(size, [&](int x, int y) {
        return Rgba{x * 255 / (size.width - 1), (size.height - 1 - y) * 255 / (size.height - 1),
                    128, 255};
    });
}

/// What the chart shows at a point of its own, from the bottom left.
Rgba chartAt(PixelSize size, double x, double y) {
    return {static_cast<int>(x * 255 / size.width), static_cast<int>(y * 255 / size.height), 128,
            255};
}

RescaleMode routine(int mode) {
    constexpr RescaleMode kRoutines[] = {imgRescaleCover, imgRescaleFit, imgRescaleStretch,
                                         imgRescaleFitPad, imgRescaleFillCrop};
    return kRoutines[mode + 2];
}

struct Fitting {
    PixelSize source, box;
    int mode;
    PixelSize bitmap;
    Rect to,
        from;  ///< The part of the source that shows in a part of the bitmap, from bottom left.
    const char* line;
};

const Fitting kFittings[] = {
    {{1440, 1080},
     {960, 540},
     2,
     {960, 540},
     {0, 0, 960, 540},
     {0, 135, 1440, 810},
     "dstOffset=0:-90 (dst=960*540) -> srcOffset=0:-135 (src=1440*810)\n"},
    {{1440, 1080},
     {960, 540},
     1,
     {960, 540},
     {120, 0, 720, 540},
     {0, 0, 1440, 1080},
     "dstOffset=120:0 (dst=960*540)\n120:0:720:540\n"},
    {{1440, 1080},
     {720, 576},
     2,
     {720, 576},
     {0, 0, 720, 576},
     {45, 0, 1350, 1080},
     "dstOffset=-24:0 (dst=720*576) -> srcOffset=-45:0 (src=1350*1080)\n"},
    {{1440, 1080},
     {720, 576},
     1,
     {720, 576},
     {0, 18, 720, 540},
     {0, 0, 1440, 1080},
     "f=2.000000, src = 1440 x 1080 -> dst = 720 x 540\n"},
    {{1440, 1080},
     {720, 576},
     -1,
     {720, 540},
     {0, 0, 720, 540},
     {0, 0, 1440, 1080},
     "img size : 1440 x 1080\n"},
    {{1440, 1080},
     {720, 576},
     -2,
     {768, 576},
     {0, 0, 768, 576},
     {0, 0, 1440, 1080},
     "f=1.875000, src = 1440 x 1080 -> dst = 768 x 576\n"},
    // Single precision loses the last column: 720 x 1.3888888 is less than 1000.
    {{1000, 1000},
     {720, 480},
     2,
     {720, 480},
     {0, 0, 720, 480},
     {0, 166, 999, 666},
     "dstOffset=0:-120 (dst=720*480) -> srcOffset=0:-166 (src=999*666)\n"},
    {{100, 80},
     {300, 300},
     1,
     {300, 300},
     {0, 30, 300, 240},
     {0, 0, 100, 80},
     "f=0.333333, src = 100 x 80 -> dst = 300 x 240\n"},
    // An odd bar leaves its extra row at the top.
    {{200, 100},
     {100, 55},
     1,
     {100, 55},
     {0, 2, 100, 50},
     {0, 0, 200, 100},
     "dstOffset=0:2 (dst=100*55)\n"},
    {{1440, 1080}, {300, 100}, 0, {300, 100}, {0, 0, 300, 100}, {0, 0, 1440, 1080}, ""},
};

/// At 144 dots per inch the same pixels stand for half the size.
TEST(Rescale, FitsTheBoxInEveryModeAtAnyResolution) {
    for (const double resolution : {72.0, 144.0, 0.0, -5.0}) {
        for (const Fitting& fitting : kFittings) {
            SCOPED_TRACE(testing::Message() << fitting.source.width << " to " << fitting.box.width
                                            << ", mode " << fitting.mode << ", " << resolution);
            const Bitmap source = chart(fitting.source);
            std::optional<Bitmap> result;
            const std::string lines = verboseErrorsOf([&] {
                result = routine(fitting.mode)(&source, fitting.box.width, fitting.box.height,
                                               resolution, false);
            });
            ASSERT_TRUE(result);
            EXPECT_EQ(result->size(), fitting.bitmap);
            EXPECT_EQ(result->rowBytes(), 32U * static_cast<unsigned>(fitting.bitmap.width));
            const double unit = resolution > 0 ? 72 / resolution : 1;
            EXPECT_EQ(result->nominalSize(),
                      (Size{fitting.bitmap.width * unit, fitting.bitmap.height * unit}));
            if (resolution == 72.0) {
                EXPECT_NE(lines.find(fitting.line), std::string::npos) << lines;
            }

            const Rect& to = fitting.to;
            for (const double h : {0.03, 0.3, 0.96}) {
                for (const double v : {0.04, 0.6, 0.97}) {
                    const double x = to.x + h * to.width;
                    const double y = to.y + v * to.height;
                    const Rgba expected =
                        chartAt(fitting.source, fitting.from.x + h * fitting.from.width,
                                fitting.from.y + v * fitting.from.height);
                    const Rgba actual = pixel(*result, static_cast<int>(x),
                                              fitting.bitmap.height - 1 - static_cast<int>(y));
                    EXPECT_TRUE(near(actual, expected, 4))
                        << testing::PrintToString(actual) << " for "
                        << testing::PrintToString(expected) << " at " << x << ", " << y;
                }
            }
            // Bars, if any, are black up to the picture's very edge.
            const int left = static_cast<int>(to.x);
            const int below = static_cast<int>(to.y);
            const Rgba black{0, 0, 0, 255};
            if (left > 0) {
                EXPECT_EQ(pixel(*result, left - 1, 0), black);
            }
            if (below > 0) {
                EXPECT_EQ(pixel(*result, 0, fitting.bitmap.height - below), black);
                EXPECT_NE(pixel(*result, 0, fitting.bitmap.height - below - 1), black);
            }
        }
    }
}

TEST(Rescale, BlackGroundOnlyWhereAlphaIsNotKept) {
    const Bitmap half = painted({20, 20}, [](int x, int) {
        return x < 10 ? Rgba{255, 0, 0, 255} : Rgba{0, 0, 0, 0};
    });
    for (const int mode : {-2, -1, 0, 1, 2}) {
        const auto kept = routine(mode)(&half, 10, 10, 72, true);
        const auto filled = routine(mode)(&half, 10, 10, 72, false);
        ASSERT_TRUE(kept && filled);
        EXPECT_EQ(pixel(*kept, 1, 5), (Rgba{255, 0, 0, 255})) << mode;
        EXPECT_EQ(pixel(*kept, 8, 5).alpha, 0) << mode;
        EXPECT_EQ(pixel(*filled, 8, 5), (Rgba{0, 0, 0, 255})) << mode;
    }
    // The covering mode's ground is four units larger than the box, and ends there.
    const Bitmap wide = painted({400, 100}, [](int, int) { return Rgba{0, 0, 0, 0}; });
    const auto covered = imgRescaleCover(&wide, 50, 50, 72, false);
    ASSERT_EQ(covered->size(), (PixelSize{200, 50}));
    EXPECT_EQ(pixel(*covered, 53, 10).alpha, 255);
    EXPECT_EQ(pixel(*covered, 54, 10).alpha, 0);
}

TEST(Rescale, ShrinkingTenfoldDoesNotAlias) {
    const Bitmap stripes = painted({1000, 1000}, [](int x, int y) {
        return (x + y) % 2 == 0 ? Rgba{255, 255, 255, 255} : Rgba{0, 0, 0, 255};
    });
    const auto small = imgRescaleStretch(&stripes, 96, 103, 72, false);
    for (int y = 0; y < 103; ++y) {
        for (int x = 0; x < 96; ++x) {
            ASSERT_TRUE(near(pixel(*small, x, y), {127, 127, 127, 255}, 12))
                << testing::PrintToString(pixel(*small, x, y)) << " at " << x << ", " << y;
        }
    }
}

TEST(Rescale, RefusesWhatIsNoSourceNoModeOrNoBox) {
    const TempFolder folder;
    const Bitmap image = chart({64, 48});
    const std::string text = folder.write("text.jpg", "not a picture");
    const std::string picture = folder.file("picture.png");
    ASSERT_TRUE(imgRescale(&image, picture, 64, 48, 72, 0, 1));
    struct Case {
        const char* what;
        PictureSource source;
        int width, height, mode;
        const char* line;
    };
    const Case cases[] = {
        {"neither", {}, 10, 10, 0, "deb, srcPathStrOrImg = path ? 0, image ? 0\n"},
        {"no image", static_cast<const Bitmap*>(nullptr), 10, 10, 0, "path ? 0, image ? 0\n"},
        {"missing", folder.file("none.jpg"), 10, 10, 0, "imgRescale src path :-( "},
        {"not a picture", text, 10, 10, 0, "imgRescale src path :-) "},
        {"mode 3", picture, 10, 10, 3, "imgRescale          :-( modeInt=3\n"},
        {"mode -3", picture, 10, 10, -3, "imgRescale          :-( modeInt=-3\n"},
        {"no box", picture, 0, 0, 2, "imgRescale          :-( modeInt=2\n"},
        {"negative box", picture, -4, 10, 0, "imgRescale          :-( modeInt=0\n"},
        {"box beyond memory", picture, 1000000, 1000000, 0, ":-( modeInt=0\n"},
    };
    for (const Case& c : cases) {
        const std::string target = folder.file("out.png");
        bool answer = true;
        const std::string lines = verboseErrorsOf(
            [&] { answer = imgRescale(c.source, target, c.width, c.height, 72, c.mode, 1); });
        EXPECT_FALSE(answer) << c.what;
        EXPECT_FALSE(std::filesystem::exists(target)) << c.what;
        EXPECT_NE(lines.find(c.line), std::string::npos) << c.what << ": " << lines;
    }
}

TEST(Rescale, WritesTheLinesOfEachStep) {
    const TempFolder folder;
    const Bitmap image = chart({200, 100});
    const std::string source = folder.file("a.png");
    ASSERT_TRUE(imgRescale(&image, source, 200, 100, 72, 0, 1));
    const std::string rep =
        "rep=NSBitmapImageRep Size={100, 50} ColorSpace=NSCalibratedRGBColorSpace BPS=8 BPP=32 "
        "Pixels=100x50 Alpha=YES Planar=NO Format=0\n";
    EXPECT_EQ(verboseErrorsOf([&] { imgRescale(source, folder.file("b.jpg"), 100, 50, 72, 2, 1); }),
              "imgRescale          - deb, srcPathStrOrImg = path ? 1, image ? 0\n"
              "imgRescale src path :-) " +
                  source +
                  "\n"
                  "imgRescale          : size = 200 x 100\n"
                  "img size : 200 x 100\n"
                  "f=2.000000, src = 200 x 100 -> dst = 100 x 50\n" +
                  rep + rep + rep +
                  "dstOffset=0:0 (dst=100*50) -> srcOffset=0:0 (src=200*100)\n"
                  "imgRescale          :-) modeInt=2\n"
                  "imgExport - end\n");
    EXPECT_EQ(verboseErrorsOf([&] { imgRescale(&image, folder.file("c.jpg"), 10, 5, 72, 0, 1); }),
              "imgRescale          - deb, srcPathStrOrImg = path ? 0, image ? 1\n"
              "imgRescale          : size = 200 x 100\n"
              "imgRescale          :-) modeInt=0\n"
              "imgExport - end\n");
}

TEST(Sizes, OfPicturesOnly) {
    const TempFolder folder;
    const Bitmap image = chart({1024, 60});
    for (const char* name : {"a.png", "a.jpg", "a.tif", "a.jp2"}) {
        const std::string path = folder.file(name);
        ASSERT_TRUE(imgRescale(&image, path, 1024, 60, 72, 0, 1));
        EXPECT_EQ(imgSizes(path), (std::array{1024, 60})) << name;
        EXPECT_EQ(verboseErrorsOf([&] { imgSizes(path); }), "imgSizes - deb  : " + path + " = 1\n");
    }
    EXPECT_FALSE(imgSizes(folder.file("missing.png")));
    EXPECT_FALSE(imgSizes(folder.write("text.png", "text")));
    EXPECT_FALSE(imgSizes(folder.path()));
}

}  // namespace
}  // namespace tkv::test
