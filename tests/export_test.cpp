#include "imaging/export.h"

#include <cmath>

#include "imaging/rescale.h"
#include "support.h"

namespace tkv::test::exporting {

Bitmap gradient(int alpha = 255) {
    return painted({61, 47}, [=](int x, int y) { return Rgba{x * 4, y * 5, 77, alpha}; });
}

constexpr Rgba kNothing{0, 0, 0, 0};

TEST(Export, ExtensionNamesAFileTypeThatOthersOpen) {
    constexpr Rgba halfRed{255, 0, 0, 128}, faintRed{255, 0, 0, 64}, half{128, 0, 0, 255};
    const struct {
        const char *name, *identified;
        const char* resolution;  ///< Across and down, of 144 and 72 dots per inch.
        int tolerance;
        Rgba halfRed, faintRed;  ///< What becomes of red at half opacity and at a quarter.
    } rows[] = {
        {"a.jpg", "JPEG 61x47 8 srgb 72", "144\n72\n", 3, half, {64, 0, 0, 255}},
        {"a.jp2", "JP2 61x47 8 srgb ", "0.5669291\n0.2834646\n", 0, halfRed, faintRed},
        {"a.JPX", "JP2 61x47 8 srgb ", "0.5669291\n0.2834646\n", 0, halfRed, faintRed},
        {"a.png", "PNG 61x47 8 srgba 72", "5669\n2835\n", 0, halfRed, faintRed},
        {"a.TIFF", "TIFF 61x47 8 srgba 72", "144\n72\n", 0, halfRed, faintRed},
        {"a.bmp", "BMP3 61x47 8 srgb 72", "5669\n2835\n", 0, half, {64, 0, 0, 255}},
        {"a.gif", "GIF 61x47 8 srgb ", "", 20, {255, 0, 0, 255}, kNothing},
    };
    const TempFolder folder;
    const std::string png = folder.file("seen by another.png");
    const std::string identify =
        "identify -units PixelsPerInch -format '%m %wx%h %z %[channels] "
        "%[fx:round(resolution.x)]' ";
    const std::string tags =
        "exiftool -n -s3 -*XResolution -PixelsPer*X -*YResolution -PixelsPer*Y ";
    const auto stripe = [](int x, int) {
        return x < 16 ? Rgba{255, 0, 0, 128} : x < 32 ? Rgba{255, 0, 0, 64} : kNothing;
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string path = folder.file(row.name);
        ASSERT_TRUE(imgExport(gradient(), path, 1));
        const std::string seen = run(identify + path + " | sed 's/  *[34]\\.0//'");
        EXPECT_TRUE(seen.starts_with(row.identified)) << seen;
        run(magick() + path + " '" + png + "'");  // This program's decoders are not asked.
        const Bitmap back = decodePicture(png).value();
        EXPECT_LE(worstDifference(gradient(), back), row.tolerance);

        Bitmap fine = gradient();
        fine.setNominalSize({30.5, 47});
        ASSERT_TRUE(imgExport(std::move(fine), path, 1));
        EXPECT_EQ(run(tags + path), row.resolution);

        ASSERT_TRUE(imgExport(painted({64, 16}, stripe), path, 1));
        const Bitmap shown = decodePicture(path).value();
        const Rgba rest = row.faintRed.alpha == 255 ? Rgba{0, 0, 0, 255} : kNothing;
        EXPECT_TRUE(near(pixel(shown, 8, 8), row.halfRed, 3));
        EXPECT_TRUE(near(pixel(shown, 24, 8), row.faintRed, 3));
        EXPECT_TRUE(near(pixel(shown, 48, 8), rest, 3));
    }
}

TEST(Export, GifKeepsFewColoursAndComesNearToMany) {
    const TempFolder folder;
    const std::string gif = folder.file("a.gif"), png = folder.file("a.png");
    const auto colored = [](int colors, bool holes) {
        return painted({64, 64}, [=](int x, int y) {
            const int at = (x + y * 64) % colors;
            return Rgba{at % 7 * 5, 255 - at, at / 2 + 100, holes && y < 9 ? 0 : 255};
        });
    };
    for (const auto& [colors, holes] :
         {std::pair{1, false}, {2, true}, {255, true}, {256, false}}) {
        ASSERT_TRUE(imgExport(colored(colors, holes), gif, 1));
        EXPECT_EQ(worstDifference(decodePicture(gif).value(), colored(colors, holes)), 0) << colors;
    }
    ASSERT_TRUE(imgExport(painted({9, 9}, kNothing), gif, 1));
    EXPECT_EQ(pixel(decodePicture(gif).value(), 4, 4), kNothing);
    // ImageMagick, which dithers too, comes to 32.4 and 35.0 dB.
    for (const auto& [name, decibels] : {std::pair{"harbour", 35.0}, {"city", 37.15}}) {
        const std::string photo = checkoutPath(fmt::format("examples/media/{}.jpg", name));
        run(magick() + quoted(photo) + " -resize '640x360!' " + png);
        ASSERT_TRUE(imgExport(decodePicture(png), gif, 1));
        const std::string seen = run("compare -metric PSNR " + png + " " + gif + " null: || true");
        EXPECT_GT(std::stod(seen), decibels) << name;
    }
}

TEST(Export, FactorChoosesTheQualityOfJpeg) {
    const TempFolder folder;
    for (const auto& [name, factor, expected] : {std::tuple{"a.jpg", 0.004F, "1 2x2"},
                                                 {"a.jpg", 0.555F, "56 2x2"},
                                                 {"a.jpeg", 0.94F, "94 2x2"},
                                                 {"a.JPG", 0.95F, "95 1x1"},
                                                 {"a.Jpeg", 1.0F, "100 1x1"},
                                                 {"a.jpg", 0.0F, "90 2x2"},
                                                 {"a.jpeg", 1.5F, "90 2x2"},
                                                 {"a.jpg", std::nanf(""), "90 2x2"},
                                                 {"a.jpe", 1.0F, "75 2x2"},
                                                 {"none", 1.0F, "75 2x2"}}) {
        ASSERT_TRUE(imgExport(gradient(), folder.file(name), factor));
        EXPECT_EQ(run("identify -format '%Q %[jpeg:sampling-factor]' " + folder.file(name)),
                  expected + std::string(",1x1,1x1"));
    }
}

TEST(Export, AnswersWhetherAFileIsThere) {
    const TempFolder folder;
    EXPECT_FALSE(imgExport(std::nullopt, folder.file("none.png"), 1));
    const ScopedVariable home("HOME", folder.path());
    const std::string path = folder.write("old.png", std::string(100000, 'x'));
    bool isWritten = false;
    EXPECT_TRUE(imgExport(gradient(), "~/old.png", 1, &isWritten));
    EXPECT_TRUE(isWritten);
    EXPECT_TRUE(imgExport(gradient(), folder.path(), 1, &isWritten)) << "a folder is there";
    EXPECT_FALSE(isWritten);
    EXPECT_LT(fs::file_size(path), 100000U) << "the old file must be cut";
    EXPECT_TRUE(imgColorFile({0, 0, 1}, folder.file("blue.bmp"), 31, 17));
    const Bitmap blue = decodePicture(folder.file("blue.bmp")).value();
    EXPECT_EQ(worstDifference(blue, painted({31, 17}, {0, 0, 255, 255})), 0);
}

}  // namespace tkv::test::exporting
