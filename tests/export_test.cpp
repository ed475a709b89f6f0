#include "imaging/export.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "imaging/rescale.h"
#include "platform/files.h"
#include "platform/picture_file.h"
#include "support.h"

namespace tkv::test {
namespace {

Bitmap page() {
    return painted({120, 80}, [](int x, int y) {
        return Rgba{x * 2, y * 3, (x * y) % 256, x < 60 ? 255 : 0};
    });
}

TEST(Export, ExtensionNamesTheFileType) {
    const TempFolder folder;
    struct Case {
        const char* name;
        float quality;
        const char*
            identified;  ///< Type, size, resolution and quality as another program sees them.
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Case cases[] = {
        {"a.jpg", 0.5F, "JPEG 120x80 72x72 50"},
        {"a.JPG", 1.0F, "JPEG 120x80 72x72 100"},
        {"a.Jpeg", 0.0F, "JPEG 120x80 72x72 90"},
        {"b.jpeg", -1.0F, "JPEG 120x80 72x72 90"},
        {"c.jpeg", 1.5F, "JPEG 120x80 72x72 90"},
        {"d.jpeg", nan, "JPEG 120x80 72x72 90"},
        {"a.jpe", 1.0F, "JPEG 120x80 72x72 75"},
        {"none", 1.0F, "JPEG 120x80 72x72 75"},
        {"a.png", 0.5F, "PNG 120x80 72"},
        {"a.TIFF", 0.5F, "TIFF 120x80 72x72"},
        {"a.tif", 0.5F, "TIFF 120x80 72x72"},
        {"a.bmp", 0.5F, "BMP3 120x80 72"},
        {"a.gif", 0.5F, "GIF 120x80"},
        {"a.jp2", 0.5F, "JP2 120x80"},
        {"a.jpx", 0.5F, "JP2 120x80"},
    };
    for (const Case& c : cases) {
        const std::string path = folder.file(c.name);
        ASSERT_TRUE(imgExport(page(), path, c.quality)) << c.name;
        const Outcome seen =
            run({"identify", "-units", "PixelsPerInch", "-format", "%m %wx%h %xx%y %Q", path});
        EXPECT_EQ(seen.status, 0) << seen.output;
        EXPECT_EQ(seen.output.substr(0, std::string(c.identified).size()), c.identified) << c.name;
    }
}

TEST(Export, AnswersWhetherAFileIsThere) {
    const TempFolder folder;
    EXPECT_FALSE(imgExport(std::nullopt, folder.file("none.png"), 1));
    EXPECT_FALSE(std::filesystem::exists(folder.file("none.png")));
    EXPECT_FALSE(imgExport(page(), folder.file("no folder/a.png"), 1));
    // A folder stands where the file should go: nothing is written, but something is there.
    std::filesystem::create_directory(folder.file("folder.png"));
    EXPECT_TRUE(imgExport(page(), folder.file("folder.png"), 1));

    const std::string path = folder.write("old.png", std::string(100000, 'x'));
    EXPECT_TRUE(imgExport(page(), path, 1));
    EXPECT_LT(std::filesystem::file_size(path), 100000U) << "the old file must be cut";
    EXPECT_EQ(verboseErrorsOf([&] { imgExport(page(), path, 1); }), "imgExport - end\n");

    const ScopedVariable home("HOME", folder.path());
    EXPECT_TRUE(imgExport(page(), "~/tilde.png", 1));
    EXPECT_TRUE(std::filesystem::exists(folder.file("tilde.png")));
}

TEST(Export, OneColourPictures) {
    const TempFolder folder;
    for (const auto& [opacity, alpha] : {std::pair{0.3F, 77}, {0.6F, 153}, {1.0F, 255}}) {
        const std::string path = folder.file("overlay.jpg");
        ASSERT_TRUE(imgColorPNG(kOrange, path, 720, 576, opacity));
        const Outcome seen = run({"identify", "-format", "%m %wx%h %k %[channels]", path});
        EXPECT_EQ(seen.output, "PNG 720x576 1 srgba") << "PNG whatever the name, one colour";
        const auto bitmap = decodePicture(path);
        ASSERT_TRUE(bitmap);
        EXPECT_TRUE(near(pixel(*bitmap, 719, 575), {255, 128, 0, alpha}, 1))
            << testing::PrintToString(pixel(*bitmap, 719, 575));
    }
    EXPECT_FALSE(imgColorPNG(kOrange, folder.file("empty.png"), 0, 10, 1));

    ASSERT_TRUE(imgColorFile({0, 0, 1}, folder.file("blue.bmp"), 31, 17));
    const auto blue = decodePicture(folder.file("blue.bmp"));
    ASSERT_EQ(blue->size(), (PixelSize{31, 17}));
    for (const auto& [x, y] : {std::pair{0, 0}, {30, 16}, {15, 8}}) {
        EXPECT_EQ(pixel(*blue, x, y), (Rgba{0, 0, 255, 255}));
    }
}

}  // namespace
}  // namespace tkv::test
