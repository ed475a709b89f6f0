#include <lcms2.h>

#include <array>
#include <cmath>
#include <memory>

#include "platform/codecs/codecs.h"
#include "platform/drawing.h"
#include "platform/orientation.h"
#include "support.h"

// What the decoders make of pictures that other programs wrote, and of files that are none.

namespace tkv::test {
namespace {

constexpr Rgba kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255},
    kWhite{255, 255, 255, 255};

std::string text(const std::optional<Bytes>& file) {
    return file ? std::string(file->begin(), file->end()) : std::string();
}

/// Red and green above, blue and white below.
Bitmap quarters(PixelSize size) {
    return painted(size, [=](int x, int y) {
        const bool left = x < size.width / 2;
        if (y < size.height / 2) return left ? kRed : kGreen;
        return left ? kBlue : kWhite;
    });
}

/// The colours near the four corners as letters, the upper ones first.
std::string corners(const Bitmap& bitmap) {
    const int right = bitmap.width() - 3, bottom = bitmap.height() - 3;
    std::string letters;
    for (const Rgba& color : {pixel(bitmap, 2, 2), pixel(bitmap, right, 2),
                              pixel(bitmap, 2, bottom), pixel(bitmap, right, bottom)}) {
        letters += near(color, kRed, 8)     ? 'R'
                   : near(color, kGreen, 8) ? 'G'
                   : near(color, kBlue, 8)  ? 'B'
                   : near(color, kWhite, 8) ? 'W'
                                            : '?';
    }
    return letters;
}

NeededSize atLeast(PixelSize size) {
    return [size](PixelSize) { return size; };
}

void change(Strings words, const std::string& path) {
    words.push_back(path);
    const Outcome told = run(words);
    ASSERT_EQ(told.status, 0) << told.output;
}

Bytes progressive(const Bytes& jpeg) {
    const TempFolder folder;
    const std::string path = folder.file("progressive.jpg");
    change({"convert-im6.q16", folder.write("a.jpg", text(jpeg)), "-interlace", "JPEG"}, path);
    const std::string file = readText(path);
    return {file.begin(), file.end()};
}

TEST(DecodePicture, StandsPicturesUpright) {
    const char* const expected[] = {"RGBW", "GRWB", "WBGR", "BWRG", "RBGW", "BRWG", "WGBR", "GWRB"};
    const TempFolder folder;
    const Bitmap stored = quarters({64, 32});
    for (const std::string& file : {text(encodeJpeg(stored, 1.0F)), text(encodeTiff(stored))}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const std::string path = folder.write("picture", file);
            change({"exiftool", "-q", "-n", "-overwrite_original",
                    fmt::format("-Orientation={}", orientation)},
                   path);
            const PixelSize upright = orientation > 4 ? PixelSize{32, 64} : PixelSize{64, 32};
            const auto bitmap = decodePicture(path, [&](PixelSize full) {
                EXPECT_EQ(full, upright);
                return PixelSize{full.width / 2, full.height / 8};
            });
            ASSERT_TRUE(bitmap) << orientation;
            EXPECT_EQ(bitmap->size(), (PixelSize{upright.width / 2, upright.height / 2}));
            EXPECT_EQ(bitmap->nominalSize().height, upright.height);
            EXPECT_EQ(corners(*bitmap), expected[orientation - 1]) << orientation;
        }
    }
}

TEST(DecodePicture, DecodesNoMorePixelsThanNeeded) {
    const Bitmap full = quarters({720, 576});
    const std::string jpeg = text(encodeJpeg(full, 0.9F)), jp2 = text(encodeJpeg2000(full)),
                      png = text(encodePng(full));
    const struct {
        const std::string& file;
        PixelSize needed, expected;
    } rows[] = {{jpeg, {180, 144}, {180, 144}},  {jpeg, {181, 144}, {270, 216}},
                {jpeg, {10, 145}, {270, 216}},   {jpeg, {1, 1}, {90, 72}},
                {jpeg, {631, 1}, {720, 576}},    {jp2, {180, 144}, {180, 144}},
                {jp2, {181, 1}, {360, 288}},     {jp2, {1, 1}, {23, 18}},
                {jp2, {2000, 2000}, {720, 576}}, {png, {180, 144}, {180, 144}},
                {png, {181, 1}, {240, 192}},     {png, {100, 100}, {144, 115}},
                {png, {361, 1}, {720, 576}}};
    const TempFolder folder;
    for (const auto& row : rows) {
        const auto bitmap = decodePicture(folder.write("picture", row.file), atLeast(row.needed));
        ASSERT_TRUE(bitmap);
        EXPECT_EQ(bitmap->size(), row.expected) << "for " << row.needed.width;
        EXPECT_EQ(bitmap->nominalSize(), (Size{720, 576}));
        EXPECT_EQ(corners(*bitmap), "RGBW");
    }
}

TEST(DecodeWithPixbuf, ReducesToTheMeanOfAllPixels) {
    // Columns of opaque red, of nothing, of half-opaque blue: the last of 13 widens a block.
    const Bitmap stripes = painted({13, 9}, [](int x, int) {
        return x % 3 == 0 ? kRed : x % 3 == 1 ? Rgba{0, 0, 0, 0} : Rgba{0, 0, 255, 128};
    });
    const auto bitmap = decodeWithPixbuf(encodePng(stripes).value(), atLeast({4, 3}));
    ASSERT_TRUE(bitmap && bitmap->size() == (PixelSize{4, 3}));
    EXPECT_EQ(bitmap->row(1)[0], 0x8055002BU);
    EXPECT_EQ(bitmap->row(1)[3], 0xA0800020U);
}

TEST(DecodePicture, UnderstandsWhatOtherProgramsWrite) {
    const TempFolder folder;
    std::string pixels, deep;
    for (int i = 0; i < 256; ++i) {
        pixels += std::string("\xFF\x80\x00", 3);
        deep += "\x80\x10";
    }
    folder.write("a.ppm", "P6 16 16 255\n" + pixels);
    folder.write("a.raw", deep);
    folder.write("a.yuv",
                 std::string(256, '\x4C') + std::string(64, '\x55') + std::string(64, '\xFF'));
    const struct {
        const char* name;
        Rgba expected;
        const char* tool;
    } rows[] = {
        {"a.ppm", {255, 128, 0, 255}, "test -s"},
        {"b.jpg", {255, 128, 0, 255}, "convert-im6.q16 a.ppm -colorspace CMYK -quality 95"},
        {"c.jpg", {146, 146, 146, 255}, "convert-im6.q16 a.ppm -colorspace Gray"},
        {"d.png", {255, 128, 0, 255}, "convert-im6.q16 a.ppm -colors 4"},
        {"e.jp2",
         {255, 128, 0, 128},
         "convert-im6.q16 a.ppm -alpha set -channel A -evaluate set 50%"},
        {"f.jp2",
         {254, 0, 0, 255},
         "opj_compress -n 3 -mct 0 -i a.yuv -F 16,16,3,8,u@1x1:2x2:2x2 -o"},
        {"g.j2k",
         {254, 0, 0, 255},
         "opj_compress -n 3 -mct 0 -i a.yuv -F 16,16,3,8,u@1x1:2x2:2x2 -o"},
        {"h.jp2", {128, 128, 128, 255}, "opj_compress -n 3 -mct 0 -i a.raw -F 16,16,1,16,u -o"},
    };
    for (const auto& row : rows) {
        const Outcome made =
            shell(fmt::format("cd {} && {} {}", folder.path(), row.tool, row.name));
        ASSERT_EQ(made.status, 0) << made.output;
        const Bitmap bitmap = decodePicture(folder.file(row.name)).value();
        for (const int at : {0, 15})
            EXPECT_TRUE(near(pixel(bitmap, at, at), row.expected, 3)) << row.name;
    }
}

TEST(DecodeJpeg, ReadsOnlyTheScansThatTheSizeNeeds) {
    const Bitmap picture = painted({640, 480}, [](int x, int y) {
        return Rgba{x * 255 / 640, y * 255 / 480,
                    127 + static_cast<int>(90 * std::sin(x * y / 9e3)), 255};
    });
    const Bytes baseline = encodeJpeg(picture, 0.9F).value();
    const Bytes file = progressive(baseline);
    constexpr std::array<std::uint8_t, 2> kStartOfScan{0xFF, 0xDA};
    // Forty pixels need no more than each block's mean, eighty some detail of the colours too.
    for (const auto& [size, scans] :
         {std::pair{PixelSize{40, 30}, 1}, {{80, 60}, 4}, {{160, 120}, 6}}) {
        const auto decode = [size = size](ByteView bytes) {
            Bitmap shown = Bitmap::create(size).value();
            const Rect all{0, 0, 1.0 * size.width, 1.0 * size.height};
            if (const auto decoded = decodeJpeg(bytes, atLeast(size)))
                drawPicture(shown, *decoded, {}, all, Compositing::sourceOver, 1.0);
            return shown;
        };
        const Bitmap whole = decode(file);
        EXPECT_LE(worstDifference(whole, decode(baseline)), 12) << "beside the baseline file";
        // The scans after the needed ones may as well be missing.
        auto end = file.begin();
        for (int scan = 0; scan <= scans; ++scan)
            end = std::search(end + 1, file.end(), kStartOfScan.begin(), kStartOfScan.end());
        ASSERT_NE(end, file.end());
        EXPECT_EQ(worstDifference(whole, decode(ByteView(file.begin(), end))), 0) << scans;
    }
}

/// An ICC profile whose red is sRGB's blue and the other way round.
std::string swappedProfile() {
    const cmsCIExyY white{0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries{{0.15, 0.06, 1}, {0.30, 0.60, 1}, {0.64, 0.33, 1}};
    const std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve*)> curve(cmsBuildGamma(nullptr, 2.2),
                                                                       cmsFreeToneCurve);
    const std::array curves{curve.get(), curve.get(), curve.get()};
    const std::unique_ptr<void, cmsBool (*)(cmsHPROFILE)> profile(
        cmsCreateRGBProfile(&white, &primaries, curves.data()), cmsCloseProfile);
    cmsUInt32Number length = 0;
    cmsSaveProfileToMem(profile.get(), nullptr, &length);
    std::string bytes(length, '\0');
    cmsSaveProfileToMem(profile.get(), bytes.data(), &length);
    return bytes;
}

TEST(DecodePicture, ConvertsEmbeddedProfiles) {
    const TempFolder folder;
    const std::string profile = folder.write("swapped.icc", swappedProfile());
    const Bitmap bitmap = quarters({32, 32}), faint = painted({32, 32}, {255, 0, 0, 128});
    for (const std::string& file :
         {text(encodeJpeg(bitmap, 1.0F)), text(encodePng(bitmap)), text(encodeTiff(bitmap)),
          text(encodeJpeg2000(bitmap)), text(encodePng(faint))}) {
        const std::string path = folder.write("picture", file);
        change({"exiftool", "-q", "-overwrite_original", "-ICC_Profile<=" + profile}, path);
        const auto shown = decodePicture(path);
        ASSERT_TRUE(shown);
        if (pixel(*shown, 0, 0).alpha == 255) {
            EXPECT_EQ(corners(*shown), "BGRW");
        } else {
            EXPECT_TRUE(near(pixel(*shown, 0, 0), {0, 0, 255, 128}, 3));
        }
    }
}

TEST(DecodePicture, RefusesWhatIsNoPicture) {
    const std::string jpeg = text(encodeJpeg(quarters({64, 32}), 0.5F));
    const std::string png = text(encodePng(quarters({64, 32})));
    const std::string rows[] = {
        "", "\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n", std::string("\0\0\0\x0CjP  \r\n\x87\n", 12),
        "\xFF\x4F\xFF\x51", std::string(100000, '\0'), "A text file with a wrong name.",
        jpeg.substr(0, jpeg.find("\xFF\xDA")),
        jpeg.substr(0, jpeg.find("\xFF\xDA") + 14),  // All that precedes the pixels.
        png.substr(0, png.find("IDAT") + 6),
        // Huge ones: 65,500 pixels a side, 40,000 a side.
        std::string(jpeg).replace(jpeg.find("\xFF\xC0") + 5, 4, "\xFF\xDC\xFF\xDC"),
        std::string(
            "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x9C\x40\0\0\x9C\x40\x08\x02\0\0\0\xDE\x6E\x99\x52",
            33),
        text(encodeBmp(quarters({64, 32})))
            .replace(18, 8, std::string("\x40\x9C\0\0\x40\x9C\0\0", 8))};
    const TempFolder folder;
    for (const std::string& row : rows) {
        const std::string path = folder.write("picture.png", row);
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(decodePicture(path)) << &row - rows; }), "");
    }
}

struct CutCase {
    Bytes file;
    std::optional<Bitmap> (*decode)(ByteView file, const NeededSize& needed);
    bool showsPart = true;
    int redRow = 4;
};

std::vector<CutCase> cutCases(const Bitmap& bitmap) {
    const Bytes jpeg = encodeJpeg(bitmap, 0.9F).value();
    return {{jpeg, decodeJpeg},
            {progressive(jpeg), decodeJpeg},
            {encodeJpeg2000(bitmap).value(), decodeJpeg2000},
            {encodePng(bitmap).value(), decodeWithPixbuf},
            {encodeGif(bitmap).value(), decodeWithPixbuf},
            {encodeBmp(bitmap).value(), decodeWithPixbuf, true, 75},  // It starts at the bottom.
            {encodeTiff(bitmap).value(), decodeWithPixbuf, false}};
}

TEST(Decoders, ShowWhatThereIsOfACutPicture) {
    const std::vector<CutCase> rows = cutCases(painted({96, 80}, [](int x, int y) {
        return y < 16 || y >= 64 ? kRed : Rgba{x * 2, (x * 37 + y * 91) % 256, y * 3, 255};
    }));
    for (const CutCase& row : rows) {
        for (std::size_t percent = 50; percent < 100; ++percent) {
            SCOPED_TRACE(fmt::format("row {} cut at {} %", &row - rows.data(), percent));
            const auto shown =
                row.decode(ByteView(row.file).first(row.file.size() * percent / 100), everyPixel);
            ASSERT_EQ(shown.has_value(), row.showsPart);
            if (!shown) continue;
            EXPECT_EQ(shown->size(), (PixelSize{96, 80}));
            EXPECT_TRUE(near(pixel(*shown, 8, row.redRow), kRed, 40));
        }
    }
}

TEST(Decoders, BearAnyCutAndAnyWrongByteInSilence) {
    EXPECT_EQ(errorsOf([] {
                  for (const CutCase& row : cutCases(quarters({96, 80}))) {
                      for (std::size_t i = 0; i < 200; ++i) {
                          const std::size_t cut = row.file.size() * i / 200;
                          row.decode(ByteView(row.file).first(cut), everyPixel);
                          Bytes damaged = row.file;
                          damaged[(i < 100 ? i * 3 : cut) % damaged.size()] ^= 0x55U;
                          row.decode(damaged, everyPixel);
                      }
                  }
              }),
              "");
}

TEST(DecodeJpeg, RefusesAnAbsurdNumberOfScans) {
    const Bytes file = progressive(encodeJpeg(quarters({64, 32}), 0.9F).value());
    const std::size_t start = text(file).find("\xFF\xDA");
    const std::string scan = text(file).substr(start, text(file).find("\xFF\xC4", start) - start);
    for (const int more : {20, 600}) {
        Bytes longer = file;
        for (int i = 0; i < more; ++i)
            longer.insert(longer.begin() + static_cast<std::ptrdiff_t>(start), scan.begin(),
                          scan.end());
        EXPECT_EQ(decodeJpeg(longer, everyPixel).has_value(), more == 20);
    }
}

}  // namespace
}  // namespace tkv::test
