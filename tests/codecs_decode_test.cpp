#include <gtest/gtest.h>
#include <lcms2.h>

#include <array>
#include <cmath>
#include <memory>
#include <string>

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

void change(const std::vector<std::string>& tool, const std::string& path) {
    std::vector<std::string> words = tool;
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
    const std::array<std::string, 8> expected{"RGBW", "GRWB", "WBGR", "BWRG",
                                              "RBGW", "BRWG", "WGBR", "GWRB"};
    const TempFolder folder;
    const Bitmap stored = quarters({64, 32});
    for (const std::string& file : {text(encodeJpeg(stored, 1.0F)), text(encodeTiff(stored))}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const std::string path = folder.write("picture", file);
            change({"exiftool", "-q", "-n", "-overwrite_original",
                    "-Orientation=" + std::to_string(orientation)},
                   path);
            const bool onItsSide = swapsSides(orientation);
            const PixelSize upright = onItsSide ? PixelSize{32, 64} : PixelSize{64, 32};
            PixelSize asked;
            const std::optional<Bitmap> bitmap = decodePicture(path, [&](PixelSize full) {
                asked = full;
                return PixelSize{full.width / 2, full.height / 8};
            });
            ASSERT_TRUE(bitmap) << orientation;
            EXPECT_EQ(asked, upright);
            EXPECT_EQ(bitmap->size(), (PixelSize{upright.width / 2, upright.height / 2}));
            EXPECT_EQ(bitmap->nominalSize().height, upright.height);
            EXPECT_EQ(corners(*bitmap), expected[static_cast<std::size_t>(orientation - 1)])
                << "orientation " << orientation;
        }
    }
}

TEST(DecodePicture, DecodesNoMorePixelsThanNeeded) {
    const Bitmap full = quarters({720, 576});
    const std::optional<Bytes> jpeg = encodeJpeg(full, 0.9F), jp2 = encodeJpeg2000(full),
                               png = encodePng(full);
    ASSERT_TRUE(jpeg && jp2 && png);
    const struct {
        const Bytes& file;
        PixelSize needed;
        PixelSize expected;
    } rows[] = {
        {*jpeg, {180, 144}, {180, 144}}, {*jpeg, {181, 144}, {270, 216}},
        {*jpeg, {10, 145}, {270, 216}},  {*jpeg, {1, 1}, {90, 72}},
        {*jpeg, {631, 1}, {720, 576}},   {*jpeg, {2000, 2000}, {720, 576}},
        {*jp2, {180, 144}, {180, 144}},  {*jp2, {181, 1}, {360, 288}},
        {*jp2, {1, 1}, {23, 18}},        {*jp2, {2000, 2000}, {720, 576}},
        {*png, {180, 144}, {180, 144}},  {*png, {181, 1}, {240, 192}},
        {*png, {100, 100}, {144, 115}},  {*png, {361, 1}, {720, 576}},
        {*png, {2000, 1}, {720, 576}},
    };
    const TempFolder folder;
    for (const auto& row : rows) {
        const std::string at = "row " + std::to_string(&row - rows);
        const std::optional<Bitmap> bitmap =
            decodePicture(folder.write("picture", text(row.file)), atLeast(row.needed));
        ASSERT_TRUE(bitmap) << at;
        EXPECT_EQ(bitmap->size(), row.expected) << at;
        EXPECT_EQ(bitmap->nominalSize(), (Size{720, 576})) << at;
        EXPECT_EQ(corners(*bitmap), "RGBW") << at;
    }
}

TEST(DecodeWithPixbuf, ReducesToTheMeanOfAllPixels) {
    // Columns of opaque red, of nothing, of half-opaque blue: the last of 13 widens a block.
    const Bitmap stripes = painted({13, 9}, [](int x, int) {
        return x % 3 == 0 ? kRed : x % 3 == 1 ? Rgba{0, 0, 0, 0} : Rgba{0, 0, 255, 128};
    });
    const std::optional<Bytes> png = encodePng(stripes);
    const std::optional<Bitmap> bitmap = decodeWithPixbuf(png.value(), atLeast({4, 3}));
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->size(), (PixelSize{4, 3}));
    EXPECT_EQ(bitmap->row(1)[0], 0x8055002BU);
    EXPECT_EQ(bitmap->row(1)[3], 0xA0800020U);
}

TEST(DecodePicture, UnderstandsWhatOtherProgramsWrite) {
    const TempFolder folder;
    const std::string ppm = folder.write(
        "a.ppm", "P6 16 16 255\n" + [] {
            std::string pixels;
            for (int i = 0; i < 256; ++i)
                pixels += std::string("\xFF\x80\x00", 3);
            return pixels;
        }());
    std::string yuv(256, '\x4C'), deep;
    yuv += std::string(64, '\x55') + std::string(64, '\xFF');
    for (int i = 0; i < 256; ++i)
        deep += "\x80\x10";
    folder.write("a.yuv", yuv);
    folder.write("a.raw", deep);
    const auto convert = [&](const char* target, std::vector<std::string> options) {
        options.insert(options.begin(), {"convert-im6.q16", ppm});
        change(options, folder.file(target));
    };
    convert("cmyk.jpg", {"-colorspace", "CMYK", "-quality", "95"});
    convert("grey.jpg", {"-colorspace", "Gray"});
    convert("progressive.jpg", {"-interlace", "JPEG", "-quality", "95"});
    convert("palette.png", {"-colors", "4"});
    convert("a.xpm", {});
    convert("alpha.jp2", {"-alpha", "set", "-channel", "A", "-evaluate", "set", "50%"});
    const auto compress = [&](const char* source, const char* layout, const char* target) {
        change(
            {"opj_compress", "-n", "3", "-mct", "0", "-i", folder.file(source), "-F", layout, "-o"},
            folder.file(target));
    };
    compress("a.yuv", "16,16,3,8,u@1x1:2x2:2x2", "coarse.jp2");
    compress("a.yuv", "16,16,3,8,u@1x1:2x2:2x2", "bare.j2k");
    compress("a.raw", "16,16,1,16,u", "deep.jp2");
    const struct {
        const char* name;
        Rgba expected;
    } rows[] = {
        {"a.ppm", {255, 128, 0, 255}},       {"a.xpm", {255, 128, 0, 255}},
        {"cmyk.jpg", {255, 128, 0, 255}},
        {"grey.jpg", {146, 146, 146, 255}},  {"progressive.jpg", {255, 128, 0, 255}},
        {"palette.png", {255, 128, 0, 255}}, {"alpha.jp2", {255, 128, 0, 128}},
        {"coarse.jp2", {254, 0, 0, 255}},    {"bare.j2k", {254, 0, 0, 255}},
        {"deep.jp2", {128, 128, 128, 255}},
    };
    for (const auto& row : rows) {
        const std::optional<Bitmap> bitmap = decodePicture(folder.file(row.name));
        ASSERT_TRUE(bitmap) << row.name;
        for (const int at : {0, 15}) {
            EXPECT_TRUE(near(pixel(*bitmap, at, at), row.expected, 3))
                << row.name << " shows " << testing::PrintToString(pixel(*bitmap, at, at));
        }
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
            std::optional<Bitmap> shown = Bitmap::create(size);
            if (const auto decoded = decodeJpeg(bytes, [=](PixelSize) { return size; })) {
                drawPicture(*shown, *decoded, {}, {0, 0, 1.0 * size.width, 1.0 * size.height},
                            Compositing::sourceOver, 1.0);
            }
            return shown;
        };
        const auto whole = decode(file);
        const auto plain = decode(baseline);
        ASSERT_TRUE(whole && plain);
        EXPECT_LE(worstDifference(*whole, *plain), 12) << "beside the baseline file";
        // The scans after the needed ones may as well be missing.
        auto end = file.begin();
        for (int scan = 0; scan <= scans; ++scan) {
            end = std::search(end + 1, file.end(), kStartOfScan.begin(), kStartOfScan.end());
        }
        ASSERT_NE(end, file.end());
        const auto cut = decode(ByteView(file).first(static_cast<std::size_t>(end - file.begin())));
        ASSERT_TRUE(cut);
        EXPECT_EQ(worstDifference(*whole, *cut), 0) << scans;
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
    const Bitmap bitmap = quarters({32, 32});
    const Bitmap faint = painted({32, 32}, [](int, int) { return Rgba{255, 0, 0, 128}; });
    for (const std::string& file :
         {text(encodeJpeg(bitmap, 1.0F)), text(encodePng(bitmap)), text(encodeTiff(bitmap)),
          text(encodeJpeg2000(bitmap)), text(encodePng(faint))}) {
        const std::string path = folder.write("picture", file);
        change({"exiftool", "-q", "-overwrite_original", "-ICC_Profile<=" + profile}, path);
        const std::optional<Bitmap> shown = decodePicture(path);
        ASSERT_TRUE(shown);
        if (pixel(*shown, 0, 0).alpha == 255) {
            EXPECT_EQ(corners(*shown), "BGRW");
        } else {
            EXPECT_TRUE(near(pixel(*shown, 0, 0), {0, 0, 255, 128}, 3));
        }
    }
}

std::string pngOf(const char* size) {
    return std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16) + std::string(size, 8) +
           std::string("\x08\x02\0\0\0", 5);
}

TEST(DecodePicture, RefusesWhatIsNoPicture) {
    const std::string jpeg = text(encodeJpeg(quarters({64, 32}), 0.5F));
    const std::string png = text(encodePng(quarters({64, 32})));
    std::string huge = jpeg;
    const std::size_t frame = huge.find("\xFF\xC0");
    huge.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
    const std::string wide = text(encodeBmp(quarters({64, 32})))
                                 .replace(18, 8, std::string("\x40\x9C\0\0\x40\x9C\0\0", 8));
    const std::string rows[] = {
        "",
        "\xFF\xD8\xFF",
        "\xFF\xD8\xFF\xE0 no more than a start",
        "\x89PNG\r\n\x1A\n",
        std::string("\0\0\0\x0CjP  \r\n\x87\n", 12),
        "\xFF\x4F\xFF\x51",
        std::string(100000, '\0'),
        "A text file with a wrong name.",
        jpeg.substr(0, jpeg.find("\xFF\xDA")),
        jpeg.substr(0, jpeg.find("\xFF\xDA") + 14),  // All that precedes the pixels.
        png.substr(0, png.find("IDAT") + 6),
        huge,  // 65,500 pixels a side.
        pngOf("\0\0\x9C\x40\0\0\x9C\x40") + std::string("\xDE\x6E\x99\x52", 4),  // 40,000.
        wide,
    };
    const TempFolder folder;
    for (const std::string& row : rows) {
        const std::string path = folder.write("picture.png", row);
        const std::string at = "row " + std::to_string(&row - rows);
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(decodePicture(path)) << at; }), "") << at;
    }
    EXPECT_FALSE(decodePicture(folder.file("none")));
}

TEST(DecodePicture, TakesSidesUpToTheLimit) {
    const TempFolder folder;
    for (const int width : {kLargestSide, kLargestSide + 1}) {
        const Bitmap wide = quarters({width, 8});
        for (const std::string& file :
             {text(encodeJpeg(wide, 0.9F)), text(encodeJpeg2000(wide)), text(encodePng(wide)),
              text(encodeTiff(wide)), text(encodeBmp(wide)), text(encodeGif(wide))}) {
            const std::optional<Bitmap> shown =
                decodePicture(folder.write("wide", file), atLeast({10, 1}));
            EXPECT_EQ(shown.has_value(), width == kLargestSide) << file.substr(0, 8);
        }
    }
}

struct CutCase {
    const char* name;
    Bytes file;
    std::optional<Bitmap> (*decode)(ByteView file, const NeededSize& needed);
    bool showsPart;
};

std::vector<CutCase> cutCases(const Bitmap& bitmap) {
    const Bytes jpeg = encodeJpeg(bitmap, 0.9F).value();
    return {
        {"JPEG", jpeg, decodeJpeg, true},
        {"progressive JPEG", progressive(jpeg), decodeJpeg, true},
        {"JPEG 2000", encodeJpeg2000(bitmap).value(), decodeJpeg2000, true},
        {"PNG", encodePng(bitmap).value(), decodeWithPixbuf, true},
        {"GIF", encodeGif(bitmap).value(), decodeWithPixbuf, true},
        {"BMP", encodeBmp(bitmap).value(), decodeWithPixbuf, true},
        {"TIFF", encodeTiff(bitmap).value(), decodeWithPixbuf, false},
    };
}

TEST(Decoders, ShowWhatThereIsOfACutPicture) {
    const Bitmap bitmap = painted({96, 80}, [](int x, int y) {
        return y < 16 || y >= 64 ? kRed : Rgba{x * 2, (x * 37 + y * 91) % 256, y * 3, 255};
    });
    for (const CutCase& row : cutCases(bitmap)) {
        const int redRow = row.name == std::string("BMP") ? 75 : 4;  // It starts at the bottom.
        for (std::size_t percent = 50; percent < 100; ++percent) {
            const std::string at = row.name + (" cut at " + std::to_string(percent));
            const std::optional<Bitmap> shown =
                row.decode(ByteView(row.file).first(row.file.size() * percent / 100), everyPixel);
            ASSERT_EQ(shown.has_value(), row.showsPart) << at;
            if (!shown) continue;
            EXPECT_EQ(shown->size(), bitmap.size()) << at;
            EXPECT_TRUE(near(pixel(*shown, 8, redRow), kRed, 40))
                << at << " shows " << testing::PrintToString(pixel(*shown, 8, redRow));
        }
    }
}

TEST(Decoders, BearAnyCutAndAnyWrongByteInSilence) {
    const Bitmap bitmap = quarters({96, 80});
    const std::string printed = errorsOf([&] {
        for (const CutCase& row : cutCases(bitmap)) {
            for (std::size_t i = 0; i < 200; ++i) {
                const std::size_t cut = row.file.size() * i / 200;
                row.decode(ByteView(row.file).first(cut), everyPixel);
                Bytes damaged = row.file;
                damaged[(i < 100 ? i * 3 : cut) % damaged.size()] ^= 0x55U;
                row.decode(damaged, everyPixel);
            }
        }
    });
    EXPECT_EQ(printed, "");
}

TEST(DecodeJpeg, RefusesAnAbsurdNumberOfScans) {
    const std::string file = text(progressive(encodeJpeg(quarters({64, 32}), 0.9F).value()));
    const std::size_t start = file.find("\xFF\xDA"), end = file.find("\xFF\xC4", start);
    ASSERT_NE(end, std::string::npos);
    const std::string scan = file.substr(start, end - start);
    for (const int more : {20, 600}) {
        std::string longer = file.substr(0, end);
        for (int i = 0; i < more; ++i)
            longer += scan;
        longer += file.substr(end);
        EXPECT_EQ(decodeJpeg(Bytes(longer.begin(), longer.end()), everyPixel).has_value(),
                  more == 20);
    }
}

}  // namespace

}  // namespace tkv::test
