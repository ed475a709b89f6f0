#include <lcms2.h>

#include <cmath>

#include "graphics/codecs/codecs.h"
#include "graphics/drawing.h"
#include "graphics/orientation.h"
#include "graphics/releaser.h"
#include "support.h"

namespace tkv::test::decoding {

constexpr Rgba kRed{255, 0, 0, 255};

std::string text(const std::optional<Bytes>& file) {
    return file ? std::string(file->begin(), file->end()) : std::string();
}

/// Red and green above, blue and white below.
Bitmap quarters(PixelSize size, int alpha = 255) {
    return painted(size, [=](int x, int y) {
        const bool isRight = x >= size.width / 2, isLow = y >= size.height / 2;
        return Rgba{isRight == isLow ? 255 : 0, isRight ? 255 : 0, isLow ? 255 : 0, alpha};
    });
}

/// The colours near the four corners as letters, the upper ones first.
std::string corners(const Bitmap& bitmap) {
    std::string letters;
    for (const int y : {2, bitmap.height() - 3}) {
        for (const int x : {2, bitmap.width() - 3}) {
            const Rgba color = pixel(bitmap, x, y);
            letters += "KRGYBMCW"[color.red / 248 + color.green / 248 * 2 + color.blue / 248 * 4];
        }
    }
    return letters;
}

NeededSize atLeast(PixelSize size) {
    return [size](PixelSize) { return size; };
}

Bytes bytesOf(const std::string& path) {
    const std::string file = readText(path);
    return {file.begin(), file.end()};
}

Bytes converted(const Bytes& picture, const std::string& arguments) {
    const TempFolder folder;
    const std::string path = folder.file("converted");
    run("convert-im6.q16 " + folder.write("a", text(picture)) + " " + arguments + ":" + path);
    return bytesOf(path);
}

/// The same coefficients in the scans of `script`, or in those that are usual.
Bytes progressive(const Bytes& jpeg, const std::string& script = {}) {
    const TempFolder folder;
    const std::string scans =
        script.empty() ? "-progressive" : "-scans " + folder.write("s", script);
    run("cd " + folder.path() + " && jpegtran " + scans + " -outfile b " +
        folder.write("a", text(jpeg)));
    return bytesOf(folder.file("b"));
}

/// The part `from` of the picture, or all of it, on a bitmap of its own.
Bitmap drawn(const Bitmap& picture, PixelSize size, const Rect& from = {}) {
    Bitmap shown = Bitmap::create(size).value();
    drawPicture(shown, picture, from, {0, 0, 1.0 * size.width, 1.0 * size.height},
                Compositing::sourceOver, 1.0);
    return shown;
}

TEST(DecodePicture, StandsPicturesUpright) {
    const char* const expected[] = {"RGBW", "GRWB", "WBGR", "BWRG", "RBGW", "BRWG", "WGBR", "GWRB"};
    const TempFolder folder;
    const Bitmap stored = quarters({64, 32});
    const std::string jpeg = text(encodeJpeg(stored, 1.0F)), tiff = text(encodeTiff(stored));
    for (const auto& [file, more] :
         {std::pair{jpeg, ""}, {tiff, ""}, {jpeg, "; convert-im6.q16 $f webp:$f"}}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const std::string path = folder.write("picture", file);
            run(fmt::format("f={}; exiftool -q -n -overwrite_original -Orientation={} $f{}", path,
                            orientation, more));
            const PixelSize full = orientation > 4 ? PixelSize{32, 64} : PixelSize{64, 32};
            const Bitmap bitmap = decodePicture(path, atLeast({full.width / 4, 1})).value();
            EXPECT_LE(bitmap.height(), full.height / 2);
            EXPECT_EQ(bitmap.nominalSize().height, full.height);
            EXPECT_EQ(corners(bitmap), expected[orientation - 1]) << orientation;
        }
    }
}

/// Quarters of 720 x 576 pixels in JPEG 2000 with a palette, which no program at hand writes.
std::string indexedJpeg2000() {
    const TempFolder folder;
    std::string indices;
    for (int at = 0; at < 720 * 576; ++at)
        indices += static_cast<char>(at % 720 / 360 + at / 720 / 288 * 2);
    folder.write("a.raw", indices);
    run("cd " + folder.path() + " && opj_compress -i a.raw -F 720,576,1,8,u -o a.jp2");
    std::string file = readText(folder.file("a.jp2"));
    const std::string boxes(
        "\0\0\0\x1Apclr\0\4\3\7\7\7\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF"
        "\0\0\0\x14"
        "cmap\0\0\1\0\0\0\1\1\0\0\1\2",
        46);
    const std::size_t colors = file.find("colr");
    file[colors + 10] = 16;  // sRGB.
    file.insert(colors + 11, boxes);
    file[file.find("jp2h") - 1] += static_cast<char>(boxes.size());
    return file;
}

TEST(DecodePicture, DecodesNoMorePixelsThanNeeded) {
    const Bitmap full = quarters({720, 576});
    const std::string jpeg = text(encodeJpeg(full, 0.9F)), jp2 = text(encodeJpeg2000(full)),
                      png = text(encodePng(full));
    const std::tuple<std::string, PixelSize, PixelSize> rows[] = {
        {jpeg, {180, 144}, {180, 144}},
        {jpeg, {10, 145}, {360, 288}},
        {jpeg, {1, 1}, {90, 72}},
        {jpeg, {361, 1}, {720, 576}},
        {jp2, {180, 1}, {360, 288}},
        {jp2, {2000, 2000}, {720, 576}},
        {png, {181, 1}, {720, 576}},
        {png, {100, 100}, {360, 288}},
        {indexedJpeg2000(), {1, 1}, {720, 576}}};
    const TempFolder folder;
    for (const auto& [file, needed, expected] : rows) {
        const Bitmap bitmap = decodePicture(folder.write("p", file), atLeast(needed)).value();
        EXPECT_EQ(bitmap.size(), expected) << "for " << needed.width;
        EXPECT_EQ(bitmap.nominalSize(), (Size{720, 576}));
        EXPECT_EQ(corners(bitmap), "RGBW");
    }
    // What is wider than the drawing library's surfaces can be is drawn all the same.
    const Bitmap wide =
        decodeJpeg2000(encodeJpeg2000(quarters({32768, 8})).value(), everyPixel).value();
    EXPECT_EQ(corners(drawn(wide, {64, 8})), "RGBW");
    EXPECT_EQ(corners(drawn(wide, {64, 8}, {32768 / 2 - 32, 0, 64, 8})), "RGBW");
}

TEST(DecodeWithPixbuf, WeighsColoursByTheirAlpha) {
    const Bitmap columns = painted({90, 60}, [](int x, int) {
        return x % 3 == 0 ? kRed : Rgba{0, 0, 255, 0};
    });
    const Bitmap reduced = decodeWithPixbuf(encodePng(columns).value(), atLeast({15, 10})).value();
    EXPECT_EQ(reduced.size(), (PixelSize{30, 20}));
    EXPECT_TRUE(near(pixel(reduced, 14, 9), {255, 0, 0, 85}, 1));
}

/// A spot in the last eighth of both sides, on grey.
Bitmap spot(PixelSize size) {
    return painted(size, [=](int x, int y) {
        const double right = (x + 0.5) / size.width - 0.9, below = (y + 0.5) / size.height - 0.9;
        const double far = (right * right + below * below) / 4e-4;
        const int grey = 60 + static_cast<int>(std::lround(190 * std::exp(-far)));
        return Rgba{grey, grey, grey, 255};
    });
}

Point centerOfSpot(const Bitmap& bitmap) {
    double sum = 0, x = 0, y = 0;
    for (int row = 0; row < bitmap.height(); ++row) {
        for (int column = 0; column < bitmap.width(); ++column) {
            const Rgba color = pixel(bitmap, column, row);
            EXPECT_TRUE(color.alpha == 255 && color.red >= 57) << column << ", " << row;
            const double weight = std::max(0, color.red - 65);
            sum += weight;
            x += weight * column;
            y += weight * row;
        }
    }
    return {x / sum, y / sum};
}

struct Decodable {
    Bytes file;
    std::optional<Bitmap> (*decode)(ByteView file, const NeededSize& needed);
};

/// The picture in formats that are reduced in different ways.
std::vector<Decodable> reducibleFiles(const Bitmap& picture) {
    const TempFolder folder;
    folder.write("a.png", text(encodePng(picture)));
    run("cd " + folder.path() +
        " && convert-im6.q16 a.png a.ppm && "
        "opj_compress -i a.ppm -o moved.jp2 -d 33,17 -t 300,200");
    const std::string moved = readText(folder.file("moved.jp2"));
    return {{encodeJpeg(picture, 1.0F).value(), decodeJpeg},
            {encodeJpeg2000(picture).value(), decodeJpeg2000},
            {{moved.begin(), moved.end()}, decodeJpeg2000},
            {encodePng(picture).value(), decodeWithPixbuf}};
}

TEST(Decoders, PutReducedPicturesWhereWholeOnesLie) {
    for (const PixelSize size : {PixelSize{801, 601}, {806, 607}}) {
        for (const auto& [file, decode] : reducibleFiles(spot(size))) {
            for (int orientation = 1; orientation <= 8; ++orientation) {
                const PixelSize out{97 + 31 * orientation, 70 + 23 * orientation};
                const double width = out.width, height = out.height;
                // Also when the size in units is changed, and a part is drawn.
                const Rect part{width * 0.02, height * 0.02, width * 0.96, height * 0.96};
                const auto show = [&, decode = decode, &file = file](const NeededSize& needed) {
                    Bitmap decoded = upright(decode(file, needed).value(), orientation).value();
                    decoded.setNominalSize({width, height});
                    return centerOfSpot(drawn(decoded, out, part));
                };
                const Point whole = show(everyPixel), reduced = show(atLeast(out));
                EXPECT_NEAR(reduced.x, whole.x, 0.05) << text(file).substr(0, 9) << orientation;
                EXPECT_NEAR(reduced.y, whole.y, 0.05) << text(file).substr(0, 9) << orientation;
            }
        }
    }
}

TEST(Decoders, DoNotRing) {
    const auto paint = [](int x, int y) {
        return x > 203 && y > 131 ? Rgba{200, 200, 200, 255} : Rgba{50, 50, 50, 255};
    };
    const Bitmap edges = painted({480, 320}, paint);
    for (const auto& [file, decode] : reducibleFiles(edges)) {
        for (int width = 60; width <= 480; width += 60) {
            const PixelSize size{width, width * 2 / 3};
            const Bitmap shown = drawn(decode(file, atLeast(size)).value(), size);
            for (int i = 0; i < size.width * size.height; ++i) {
                const int red = pixel(shown, i % width, i / width).red;
                ASSERT_TRUE(red >= 48 && red <= 202) << red << " at " << width;
            }
        }
    }
}

TEST(DecodePicture, UnderstandsWhatOtherProgramsWrite) {
    const TempFolder folder;
    const std::string coarse = "opj_compress -n 3 -mct 0 -i a.yuv -F 16,16,3,8,u@1x1:2x2:2x2 -o";
    const std::string translucent = "-alpha set -channel A -evaluate set 50%";
    std::string pixels = "P6 16 16 255\n";
    for (int i = 0; i < 256; ++i)
        pixels += std::string("\xFF\x80\x00", 3);
    folder.write("a.ppm", pixels);
    folder.write("a.raw", std::string(512, '\x80'));
    folder.write("a.yuv",
                 std::string(256, '\x4C') + std::string(64, '\x55') + std::string(64, '\xFF'));
    const std::tuple<const char*, Rgba, std::string> rows[] = {
        {"a.ppm", {255, 128, 0, 255}, "test -s"},
        {"b.jpg", {255, 128, 0, 255}, "convert-im6.q16 a.ppm -colorspace CMYK -quality 95"},
        // The same with its inks taken as they are, since no program of Adobe's is named.
        {"b2.jpg", {0, 0, 0, 255}, "sh -c 'exiftool -q -Adobe:all= -o $0 b.jpg'"},
        {"c.jpg", {146, 146, 146, 255}, "convert-im6.q16 a.ppm -colorspace Gray"},
        {"d.xpm", {255, 128, 0, 255}, "convert-im6.q16 a.ppm"},
        {"e.jp2", {255, 128, 0, 128}, "convert-im6.q16 a.ppm " + translucent},
        {"f.jp2", {254, 0, 0, 255}, coarse},
        {"g.j2k", {254, 0, 0, 255}, coarse},
        {"h.jp2", {128, 128, 128, 255}, "opj_compress -n 3 -mct 0 -i a.raw -F 16,16,1,16,u -o"},
        {"i.webp", {255, 128, 0, 255}, "convert-im6.q16 a.ppm '(' +clone -negate ')'"},
        {"j.avif", {255, 128, 0, 255}, "convert-im6.q16 a.ppm -quality 100"},
    };
    for (const auto& [name, expected, tool] : rows) {
        run(fmt::format("cd {} && {} {}", folder.path(), tool, name));
        const Bitmap bitmap = decodePicture(folder.file(name)).value();
        for (const int at : {0, 15})
            EXPECT_TRUE(near(pixel(bitmap, at, at), expected, 3)) << name;
    }
}

/// One bit after the other, and one frequency after the other.
constexpr const char* kDeepScans =
    "0: 0-0, 0, 2; 1: 0-0, 0, 2; 2: 0-0, 0, 2; 0: 1-63, 0, 3; 1: 1-63, 0, 3; 2: 1-63, 0, 3;"
    "0: 1-63, 3, 2; 1: 1-63, 3, 2; 2: 1-63, 3, 2; 0: 0-0, 2, 1; 1: 0-0, 2, 1; 2: 0-0, 2, 1;"
    "0: 1-63, 2, 1; 1: 1-63, 2, 1; 2: 1-63, 2, 1; 0: 0-0, 1, 0; 1: 0-0, 1, 0; 2: 0-0, 1, 0;"
    "1: 1-63, 1, 0; 2: 1-63, 1, 0; 0: 1-63, 1, 0;";
constexpr const char* kWideScans =
    "0,1,2: 0-0, 0, 0; 0: 1-2, 0, 0; 1: 1-63, 0, 0; 2: 1-9, 0, 1; 0: 3-63, 0, 1; 0: 3-20, 1, 0;"
    "0: 21-63, 1, 0; 2: 1-9, 1, 0; 2: 10-63, 0, 0;";

TEST(DecodeJpeg, SparesOnlyTheScansThatNobodySees) {
    const TempFolder folder;
    run(
        fmt::format("ffmpeg -v error -i {} -vf scale=324:243,noise=alls=14,scale=647:485,"
                    "noise=alls=10 {}",
                    checkoutPath("examples/media/harbour.jpg"), folder.file("p.png")));
    const Bitmap photo = decodePicture(folder.file("p.png")).value();
    for (const float quality : {0.5F, 0.75F, 0.9F, 0.95F}) {  // The last one in full colour.
        const Bytes baseline = encodeJpeg(photo, quality).value();
        for (const std::string script : {"", kDeepScans, kWideScans}) {
            const Bytes file = progressive(baseline, script);
            for (const int divisor : {8, 4, 2, 1}) {
                const NeededSize size = atLeast({647 / divisor, 485 / divisor});
                EXPECT_LE(worstDifference(decodeJpeg(file, size).value(),
                                          decodeJpeg(baseline, size).value()),
                          2)
                    << quality << ", 1/" << divisor << " of " << script;
            }
            if (script == kWideScans) continue;
            // At an eighth the last scan, of luma, is not to be seen, nor is it read.
            const auto eighth = [](ByteView part) { return *decodeJpeg(part, atLeast({1, 1})); };
            const std::size_t last = text(file).rfind("\xFF\xDA");
            EXPECT_EQ(worstDifference(eighth(file), eighth(ByteView(file).first(last))), 0);
        }
    }
}

TEST(DecodeJpeg, RefusesAnAbsurdNumberOfScans) {
    const std::string file = text(progressive(encodeJpeg(quarters({64, 32}), 0.9F).value()));
    const std::size_t start = file.find("\xFF\xDA"), end = file.find("\xFF\xC4", start);
    for (const int more : {20, 600}) {
        std::string longer = file;
        for (int i = 0; i < more; ++i)
            longer.insert(end, file, start, end - start);
        EXPECT_EQ(decodeJpeg(Bytes(longer.begin(), longer.end()), everyPixel).has_value(),
                  more == 20);
    }
}

TEST(DecodePicture, LimitsTheSide) {
    const TempFolder folder;
    for (const int side : {32768, 32769}) {
        const Bitmap bitmap = quarters({side, 2});
        for (const auto& file : {encodeJpeg(bitmap), encodeJpeg2000(bitmap), encodePng(bitmap)}) {
            EXPECT_EQ(decodePicture(folder.write("wide", text(file)), atLeast({9, 1})).has_value(),
                      side == 32768);
        }
    }
}

/// Files of ICC profiles, all of which say that they are sRGB: "grey" and "linear" have no gamma
/// (half the light is 188 in sRGB), "swapped" takes red for blue, "inks" shows cyan alone, as
/// black.
struct Profiles {
    Profiles() {
        cmsToneCurve* const line = cmsBuildGamma(nullptr, 1);
        cmsToneCurve* const lines[] = {line, line, line};
        const cmsCIExyY daylight{0.3127, 0.329, 1};
        const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.3, 0.6, 1}, {0.15, 0.06, 1}};
        save(cmsCreateGrayProfile(cmsD50_xyY(), line), "grey");
        save(cmsCreateRGBProfile(&daylight, &primaries, lines), "linear");
        cmsFreeToneCurve(line);
        save(cmsCreate_sRGBProfile(), "swapped");
        std::string bytes = readText(folder.file("swapped"));
        std::swap(bytes[bytes.find("rXYZ")], bytes[bytes.find("bXYZ")]);
        folder.write("swapped", bytes);

        cmsUInt16Number lab[16][3];
        for (int i = 0; i < 16; ++i) {
            lab[i][0] = i < 8 ? 0xFFFF : 0;
            lab[i][1] = lab[i][2] = 0x8080;
        }
        cmsPipeline* const toLab = cmsPipelineAlloc(nullptr, 4, 3);
        cmsPipelineInsertStage(toLab, cmsAT_END, cmsStageAllocCLut16bit(nullptr, 2, 4, 3, lab[0]));
        const cmsHPROFILE inks = cmsCreateProfilePlaceholder(nullptr);
        cmsSetDeviceClass(inks, cmsSigOutputClass);
        cmsSetColorSpace(inks, cmsSigCmykData);
        cmsSetPCS(inks, cmsSigLabData);
        cmsWriteTag(inks, cmsSigAToB0Tag, toLab);
        cmsPipelineFree(toLab);
        save(inks, "inks");
    }

    void save(cmsHPROFILE profile, const std::string& name) const {
        cmsMLU* const srgb = cmsMLUalloc(nullptr, 1);
        cmsMLUsetASCII(srgb, cmsNoLanguage, cmsNoCountry, "sRGB");
        cmsWriteTag(profile, cmsSigProfileDescriptionTag, srgb);
        cmsMLUfree(srgb);
        cmsSaveProfileToFile(profile, folder.file(name).c_str());
        cmsCloseProfile(profile);
    }

    /// The files as they are shown with that profile embedded.
    std::vector<Bitmap> shown(const Strings& files, const std::string& profile) const {
        const TempFolder copies;
        run(fmt::format("cd {} && exiftool -q '-ICC_Profile<={}' -o {}/ {}", folder.path(), profile,
                        copies.path(), fmt::join(files, " ")));
        std::vector<Bitmap> bitmaps;
        for (const std::string& file : files)
            bitmaps.push_back(decodePicture(copies.file(file)).value());
        return bitmaps;
    }

    TempFolder folder;
};

TEST(DecodePicture, ConvertsFromProfilesOfItsOwnKind) {
    const Profiles profiles;
    const std::string make = "convert-im6.q16 -size 8x8 -depth 8 -quality 99 'xc:rgb(";
    run("cd " + profiles.folder.path() + "; for type in jpg tif png jp2; do " + make +
        "128,128,132)' c.$type; " + make +
        "128,128,128)' -colorspace Gray g.$type; done; for i in "
        "i.jpg i.tif '-interlace plane CMYK:i.raw'; do " +
        make +
        "255,128,0)' -colorspace CMYK $i; done; exiftool -q -Adobe:all= -o bare.jpg i.jpg; "
        "opj_compress -n 3 -mct 0 -i i.raw -F 8,8,4,8,u -o i.jp2");
    constexpr Rgba kHalf{128, 128, 130, 255}, kLighter{188, 188, 190, 255},
        kWhole{255, 128, 0, 255};
    const std::tuple<const char*, Strings, Rgba> rows[] = {
        {"linear", {"c.jpg", "c.tif", "c.png", "c.jp2"}, kLighter},
        {"linear", {"g.jpg", "g.tif", "g.jp2"}, kHalf},
        {"grey", {"g.jpg", "g.tif", "g.png", "g.jp2"}, kLighter},
        {"grey", {"c.jpg", "c.tif", "c.jp2"}, kHalf},
        {"grey", {"i.jpg", "i.tif"}, kWhole},
        {"inks", {"i.jpg", "i.jp2"}, {255, 255, 255, 255}},
        {"inks", {"bare.jpg"}, {143, 143, 143, 255}},
        {"inks", {"c.jpg", "g.jpg", "c.jp2"}, kHalf},
    };
    for (const auto& [profile, files, expected] : rows) {
        for (const Bitmap& bitmap : profiles.shown(files, profile))
            EXPECT_TRUE(near(pixel(bitmap, 4, 4), expected, 4)) << profile;
    }
    const Bitmap bitmap = quarters({32, 32}), faint = quarters({32, 32}, 128);
    Strings files;
    for (const auto& file : {encodeJpeg(bitmap, 1.0F), encodePng(bitmap), encodeTiff(bitmap),
                             encodeJpeg2000(bitmap), encodePng(faint)}) {
        files.push_back(std::to_string(files.size()));
        profiles.folder.write(files.back(), text(file));
    }
    for (const Bitmap& shown : profiles.shown(files, "swapped"))
        EXPECT_EQ(corners(shown), "BGRW");
}

TEST(DecodePicture, RefusesWhatIsNoPicture) {
    const std::string jpeg = text(encodeJpeg(quarters({64, 32}), 0.5F));
    const std::string png = text(encodePng(quarters({64, 32})));
    const std::string rows[] = {
        "", "\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n", std::string("\0\0\0\x0CjP  \r\n\x87\n", 12),
        "\xFF\x4F\xFF\x51", std::string(100000, '\0'), "A text file.",
        jpeg.substr(0, jpeg.find("\xFF\xDA")),
        jpeg.substr(0, jpeg.find("\xFF\xDA") + 14),  // All that precedes the pixels.
        png.substr(0, png.find("IDAT") + 6),
        // Huge ones: 65,500 pixels a side, 40,000 a side.
        std::string(jpeg).replace(jpeg.find("\xFF\xC0") + 5, 4, "\xFF\xDC\xFF\xDC"),
        std::string(png).replace(16, 17, "\0\0\x9C\x40\0\0\x9C\x40\x08\x02\0\0\0\xDE\x6E\x99\x52",
                                 17),
        text(encodeBmp(quarters({64, 32}))).replace(18, 8, "\x40\x9C\0\0\x40\x9C\0\0", 8)};
    const TempFolder folder;
    for (const std::string& row : rows) {
        folder.write("a.png", row);
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(decodePicture(folder.file("a.png"))); }), "") << row;
    }
}

struct CutCase {
    Bytes file;
    std::optional<Bitmap> (*decode)(ByteView file, const NeededSize& needed);
    bool showsPart = true;
    int redRow = 4;
};

std::vector<CutCase> cutCases(const Bitmap& bitmap) {
    const Bytes jpeg = encodeJpeg(bitmap, 0.9F).value(), png = encodePng(bitmap).value();
    return {{jpeg, decodeJpeg},
            {progressive(jpeg), decodeJpeg},
            {encodeJpeg2000(bitmap).value(), decodeJpeg2000},
            {png, decodeWithPixbuf},
            {converted(png, "webp"), decodeWithPixbuf},
            {encodeGif(bitmap).value(), decodeWithPixbuf},
            {encodeBmp(bitmap).value(), decodeWithPixbuf, true, 75},  // It starts at the bottom.
            {encodeTiff(bitmap).value(), decodeWithPixbuf, false}};
}

TEST(Decoders, ShowWhatThereIsOfACutPicture) {
    const auto paint = [](int x, int y) {
        return y < 16 || y >= 64 ? kRed : Rgba{x * 2, (x * 37 + y * 91) % 256, y * 3, 255};
    };
    for (const auto& [file, decode, showsPart, redRow] : cutCases(painted({96, 80}, paint))) {
        for (std::size_t percent = 50; percent < 100; ++percent) {
            SCOPED_TRACE(fmt::format("{:.4} cut at {} %", text(file), percent));
            const auto shown =
                decode(ByteView(file).first(file.size() * percent / 100), everyPixel);
            ASSERT_EQ(shown.has_value(), showsPart);
            EXPECT_TRUE(!shown || near(pixel(*shown, 8, redRow), kRed, 40));
        }
    }
}

TEST(Decoders, BearAnyCutAndAnyWrongByteInSilence) {
    const auto bear = [] {
        std::vector<CutCase> cases = cutCases(quarters({96, 80}));
        cases.push_back(
            {converted(cases[0].file, "'(' +clone -negate ')' webp"), decodeWithPixbuf});
        for (auto& [file, decode, showsPart, redRow] : cases) {
            for (std::size_t i = 0; i < 200; ++i) {
                const std::size_t cut = file.size() * i / 200;
                // A vector of its own, behind whose end nobody may read.
                decode(Bytes(file.data(), file.data() + cut), everyPixel);
                Bytes damaged = file;
                damaged[(i < 100 ? i * 3 : cut) % damaged.size()] ^= 0x55U;
                decode(damaged, everyPixel);
            }
        }
    };
    EXPECT_EQ(errorsOf(bear), "");
}

}  // namespace tkv::test::decoding
