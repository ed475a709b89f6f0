#include "platform/codecs/codecs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support.h"

// What the encoders write: other programs open it, and so do the decoders.

namespace tkv::test {

namespace {

constexpr PixelSize kSize{61, 47};

Bitmap gradient(int alpha = 255) {
    return painted(kSize, [=](int x, int y) { return Rgba{x * 4, y * 5, 77, alpha}; });
}

std::optional<Bytes> encodeJpegAtBest(const Bitmap& bitmap) {
    return encodeJpeg(bitmap, 1.0F);
}

std::string text(const std::optional<Bytes>& file) {
    return file ? std::string(file->begin(), file->end()) : std::string();
}

/// Decoded by the program's own choice of decoder.
std::optional<Bitmap> decoded(const std::string& path) {
    return decodePicture(path);
}

struct Format {
    const char* name;  // As `identify` says it.
    std::optional<Bytes> (*encode)(const Bitmap& bitmap);
    int tolerance;
    const char* channels;       // Of an opaque picture, as `identify` says it.
    const char* resolutionTag;  // As `exiftool` says it; none where the format has none.
    double perInch;             // What the tag says at 72 dots per inch.
    Rgba halfRed;               // What becomes of red at half opacity.
    Rgba faintRed;              // And at a quarter.
};

void PrintTo(const Format& format, std::ostream* out) {
    *out << format.name;
}

constexpr Rgba kNothing{0, 0, 0, 0};
constexpr Format kFormats[] = {
    {"JPEG", encodeJpegAtBest, 3, "srgb", "XResolution", 72, {128, 0, 0, 255}, {64, 0, 0, 255}},
    {"JP2",
     encodeJpeg2000,
     0,
     "srgb",
     "DisplayXResolution",
     72 / 254.0,
     {255, 0, 0, 128},
     {255, 0, 0, 64}},
    {"PNG", encodePng, 0, "srgba", "PixelsPerUnitX", 2835, {255, 0, 0, 128}, {255, 0, 0, 64}},
    {"TIFF", encodeTiff, 0, "srgba", "XResolution", 72, {255, 0, 0, 128}, {255, 0, 0, 64}},
    {"BMP3", encodeBmp, 0, "srgb", "PixelsPerMeterX", 2835, {128, 0, 0, 255}, {64, 0, 0, 255}},
    {"GIF", encodeGif, 48, "srgb", nullptr, 0, {255, 0, 0, 255}, kNothing},
};

class Encoders : public testing::TestWithParam<Format> {
  protected:
    std::string written(const Bitmap& bitmap) const {
        return folder_.write("picture", text(GetParam().encode(bitmap)));
    }

  private:
    TempFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Formats, Encoders, testing::ValuesIn(kFormats),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(Encoders, OtherProgramsAndTheDecodersOpenIt) {
    const Bitmap bitmap = gradient();
    const std::string path = written(bitmap);
    EXPECT_EQ(run({"identify", "-format", "%m %w %h %z %[channels]", path}).output,
              GetParam().name + std::string(" 61 47 8 ") + GetParam().channels);
    const std::optional<Bitmap> back = decoded(path);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->size(), kSize);
    EXPECT_LE(worstDifference(bitmap, *back), GetParam().tolerance);
}

TEST_P(Encoders, StatesTheResolution) {
    if (GetParam().resolutionTag == nullptr) return;
    Bitmap bitmap = gradient();
    for (const int scale : {1, 2}) {
        bitmap.setNominalSize({61.0 / scale, 47.0 / scale});
        const std::string tag = GetParam().resolutionTag;
        std::string down = tag;
        down.replace(down.find('X'), 1, "Y");
        const Outcome told = run({"exiftool", "-n", "-s3", "-" + tag, "-" + down, written(bitmap)});
        char* rest = nullptr;
        const double tolerance = GetParam().perInch / 2000;
        EXPECT_NEAR(std::strtod(told.output.c_str(), &rest), scale * GetParam().perInch, tolerance)
            << told.output;
        EXPECT_NEAR(std::strtod(rest, nullptr), scale * GetParam().perInch, tolerance);
    }
}

TEST_P(Encoders, KeepsOrFlattensAlpha) {
    const Bitmap bitmap = painted({64, 16}, [](int x, int) {
        if (x < 16) return Rgba{255, 0, 0, 128};
        return x < 32 ? Rgba{255, 0, 0, 64} : x < 48 ? kNothing : Rgba{9, 200, 30, 255};
    });
    const std::optional<Bitmap> back = decoded(written(bitmap));
    ASSERT_TRUE(back);
    const bool opaque = GetParam().halfRed.alpha == 255 && GetParam().faintRed.alpha == 255;
    const Rgba expected[] = {GetParam().halfRed,
                             GetParam().faintRed,
                             opaque ? Rgba{0, 0, 0, 255} : kNothing,
                             {9, 200, 30, 255}};
    for (int i = 0; i < 4; ++i) {
        const Rgba shown = pixel(*back, 8 + 16 * i, 8);
        EXPECT_TRUE(near(shown, expected[i], 3)) << testing::PrintToString(shown) << " for " << i;
    }
}

TEST_P(Encoders, WritesTheSmallestPictures) {
    for (const PixelSize size : {PixelSize{1, 1}, {1, 70}, {70, 1}, {2, 3}}) {
        const std::optional<Bitmap> back = decoded(written(painted(size, [](int, int) {
            return Rgba{0, 0, 255, 255};
        })));
        ASSERT_TRUE(back) << size.width << " x " << size.height;
        EXPECT_EQ(back->size(), size);
        EXPECT_TRUE(near(pixel(*back, size.width - 1, size.height - 1), {0, 0, 255, 255}, 3));
    }
}

TEST(EncodeJpeg, FactorChoosesQualityAndSampling) {
    const struct {
        std::optional<float> factor;
        const char* qualityAndSampling;
    } rows[] = {
        {std::nullopt, "75 2x2,1x1,1x1"}, {0.004F, "1 2x2,1x1,1x1"}, {0.555F, "56 2x2,1x1,1x1"},
        {0.9F, "90 2x2,1x1,1x1"},         {0.94F, "94 2x2,1x1,1x1"}, {0.95F, "95 1x1,1x1,1x1"},
        {1.0F, "100 1x1,1x1,1x1"},
    };
    const TempFolder folder;
    const Bitmap bitmap = gradient();
    for (const auto& row : rows) {
        const std::string path = folder.write("a.jpg", text(encodeJpeg(bitmap, row.factor)));
        EXPECT_EQ(run({"identify", "-format", "%Q %[jpeg:sampling-factor]", path}).output,
                  row.qualityAndSampling);
    }
}

TEST(EncodeJpeg2000, OtherDecoderSeesTheSamePixels) {
    const TempFolder folder;
    for (const int alpha : {255, 100}) {
        const Bitmap bitmap = gradient(alpha);
        const std::string path = folder.write("a.jp2", text(encodeJpeg2000(bitmap)));
        const std::string png = folder.file("a.png");
        const Outcome told = run({"opj_decompress", "-i", path, "-o", png});
        EXPECT_EQ(told.status, 0) << told.output;
        EXPECT_EQ(told.output.find("WARNING"), std::string::npos) << told.output;
        const std::optional<Bitmap> other = decoded(png);
        ASSERT_TRUE(other);
        EXPECT_EQ(worstDifference(bitmap, *other), 0);
    }
}

TEST(EncodeGif, HoldsAsManyColorsAsThePictureHas) {
    const auto colors = [](int count, bool transparency) {
        return painted({64, 32}, [=](int x, int y) {
            const int index = (y * 64 + x) % (count + (transparency ? 1 : 0));
            return index == count ? kNothing : Rgba{index % 7 * 40, index % 251, index / 2, 255};
        });
    };
    const struct {
        Bitmap bitmap;
        int tolerance;
    } rows[] = {
        {colors(1, false), 0},
        {colors(2, false), 0},
        {colors(255, false), 8},
        {colors(256, false), 8},
        {colors(0, true), 0},
        {colors(1, true), 0},
        {colors(255, true), 8},
        {colors(256, true), 20},
        {colors(257, false), 20},
        {colors(2000, false), 60},
        // So alike that a quantizer takes them for a few.
        {painted({64, 32},
                 [](int x, int y) {
                     return Rgba{x % 8, y % 8, (x + y) / 12, 255};
                 }),
         8},
    };
    const TempFolder folder;
    for (const auto& row : rows) {
        const std::size_t at = static_cast<std::size_t>(&row - rows);
        const std::string path = folder.write("a.gif", text(encodeGif(row.bitmap)));
        const std::optional<Bitmap> back = decoded(path);
        ASSERT_TRUE(back) << "row " << at;
        EXPECT_LE(worstDifference(row.bitmap, *back), row.tolerance) << "row " << at;
    }
}

TEST(EncodeGif, KeepsWhiteWhiteInAPhotograph) {
    const Bitmap bitmap = painted({256, 128}, [](int x, int y) {
        return y < 32 ? Rgba{255, 255, 255, 255} : Rgba{x, 2 * y - 1, (x * y) % 256, 255};
    });
    const TempFolder folder;
    const std::optional<Bitmap> back = decoded(folder.write("a.gif", text(encodeGif(bitmap))));
    ASSERT_TRUE(back);
    EXPECT_TRUE(near(pixel(*back, 5, 5), {255, 255, 255, 255}, 2))
        << testing::PrintToString(pixel(*back, 5, 5));
}

}  // namespace

}  // namespace tkv::test
