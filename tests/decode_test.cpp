#include <cstring>

#include "graphics/codecs/heif_items.h"
#include "pictures.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace tkv::test::decoding {

constexpr Rgba kRed{255, 0, 0, 255};

TEST(DecodePicture, StandsPicturesUpright) {
    const char* const expected[] = {"RGBW", "GRWB", "WBGR", "BWRG", "RBGW", "BRWG", "WGBR", "GWRB"};
    const TempFolder folder;
    const Bitmap stored = quarters({64, 32});
    const std::string jpeg = text(encodeJpeg(stored, 1.0F)), tiff = text(encodeTiff(stored));
    for (const auto& [file, more] :
         {std::pair{jpeg, std::string()}, {tiff, ""}, {jpeg, "; " + magick() + "$f webp:$f"}}) {
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
    char& length = file[file.find("jp2h") - 1];
    length = static_cast<char>(length + static_cast<char>(boxes.size()));
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
        {png, {181, 1}, {360, 288}},
        {png, {100, 100}, {240, 192}},
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
    EXPECT_EQ(corners(drawn(wide, {64, 8}, {16384 - 32, 0, 64, 8})), "RGBW");
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
        {"b.jpg", {255, 128, 0, 255}, magick() + "a.ppm -colorspace CMYK -quality 95"},
        // The same with its inks taken as they are, since no program of Adobe's is named.
        {"b2.jpg", {0, 0, 0, 255}, "sh -c 'exiftool -q -Adobe:all= -o $0 b.jpg'"},
        {"c.jpg", {146, 146, 146, 255}, magick() + "a.ppm -colorspace Gray"},
        {"d.tga", {255, 128, 0, 255}, magick() + "a.ppm"},
        {"e.jp2", {255, 128, 0, 128}, magick() + "a.ppm " + translucent},
        {"f.jp2", {254, 0, 0, 255}, coarse},
        {"g.j2k", {254, 0, 0, 255}, coarse},
        {"h.jp2", {128, 128, 128, 255}, "opj_compress -n 3 -mct 0 -i a.raw -F 16,16,1,16,u -o"},
        {"i.webp", {255, 128, 0, 255}, magick() + "a.ppm '(' +clone -negate ')'"},
        {"j.avif", {255, 128, 0, 255}, magick() + "a.ppm -quality 100"},
    };
    for (const auto& [name, expected, tool] : rows) {
        run(fmt::format("cd {} && {} {}", folder.path(), tool, name));
        const std::optional<Bitmap> bitmap = decodePicture(folder.file(name));
        ASSERT_TRUE(bitmap) << name;
        for (const int at : {0, 15})
            EXPECT_TRUE(near(pixel(*bitmap, at, at), expected, 3)) << name;
    }
}

TEST(DecodeJpeg, RefusesAnAbsurdNumberOfScans) {
    const TempFolder folder;
    const std::string file = text(progressive(encodeJpeg(quarters({64, 32}), 0.9F).value()));
    const std::size_t start = file.find("\xFF\xDA"), end = file.find("\xFF\xC4", start);
    for (const int more : {20, 600}) {
        std::string longer = file;
        for (int i = 0; i < more; ++i)
            longer.insert(end, file, start, end - start);
        // GdkPixbuf, too, would take it for JPEG, and read every scan.
        longer.insert(2, 1, 'x');
        EXPECT_EQ(decodePicture(folder.write("a.jpg", longer)).has_value(), more == 20);
    }
}

TEST(DecodeJpeg, ForgetsMetadataWithoutEnd) {
    const TempFolder folder;
    const std::string path = folder.write("a.jpg", text(encodeJpeg(quarters({64, 32}), 1.0F)));
    run("exiftool -q -n -overwrite_original -Orientation=6 " + path);
    std::string file = readText(path);
    std::string more;
    for (int i = 0; i < 100000; ++i)
        more += {'\xFF', '\xE1', 0, 4, 'a', 'b'};
    file.insert(file.find("\xFF\xDB"), more);
    EXPECT_EQ(corners(decodePicture(folder.write("b.jpg", file)).value()), "BRWG");
}

/// Whether a package is of that version or newer.
bool isAtLeast(const char* package, const char* version) {
    return run(fmt::format("dpkg --compare-versions $(dpkg-query -W -f='${{Version}}' {}) ge {} "
                           "&& echo yes || true",
                           package, version)) == "yes\n";
}

/// Whether GdkPixbuf shows what there is of a file. Newer versions read it whole or not at all.
bool readsInParts() {
    return !isAtLeast("libgdk-pixbuf-2.0-0", "2.44");
}

/// What there is of them is shown, where the header does not ask for more than can be held.
TEST(DecodePicture, RefusesWhatWouldTakeTooMuch) {
    const TempFolder folder;
    const auto bmp = [](PixelSize size) {
        std::string file = text(encodeBmp(quarters({64, 32})));
        std::memcpy(&file[18], &size, sizeof size);
        return file;
    };
    const auto tga = [](PixelSize size) {
        std::string file(99999, '\0');
        file[2] = 2;
        std::memcpy(&file[12], &size.width, 2);
        std::memcpy(&file[14], &size.height, 2);
        file[16] = 24;
        return file;
    };
    const auto pnm = [](PixelSize size) {
        return fmt::format("P6 {} {} 255\n{}", size.width, size.height, std::string(99999, 'a'));
    };
    const bool isInParts = readsInParts();
    for (const PixelSize size : {PixelSize{640, 480}, {9000, 9000}}) {
        for (const std::string& file : {bmp(size), tga(size), pnm(size)}) {
            EXPECT_EQ(decodePicture(folder.write("a.png", file)).has_value(),
                      size.width == 640 && isInParts)
                << file.substr(0, 2);
        }
    }
}

TEST(DecodePicture, ReadsOnlyTheCompressionsOfPictures) {
    const std::pair<const char*, bool> rows[] = {{"None", true},  {"LZW", true},  {"Zip", true},
                                                 {"RLE", true},   {"JPEG", true}, {"LZMA", false},
                                                 {"Zstd", false}, {"WebP", false}};
    // Its bytes look like the tag of a compression, where no directory is.
    const Bytes png = encodePng(painted({64, 32}, {3, 1, 3, 255})).value();
    const TempFolder folder;
    for (const auto& [compression, isRead] : rows) {
        for (const char* const order : {"MSB", "LSB"}) {
            const std::string arguments =
                fmt::format("-type TrueColor -endian {} -compress {} tiff", order, compression);
            const std::string path = folder.write("a.tiff", text(converted(png, arguments)));
            // Not every ImageMagick writes this one; what the file says decides.
            if (compression == std::string_view("WebP"))
                run("exiftool -q -overwrite_original -IFD0:Compression#=50001 " + path);
            EXPECT_EQ(decodeWithPixbuf(bytesOf(path), everyPixel).has_value(), isRead)
                << compression;
        }
    }
}

TEST(DecodePicture, ReadsOnlyWhatDrawsInAPng) {
    std::string png = text(encodePng(quarters({64, 32})));
    // Over a critical chunk that it does not know libpng would give up.
    png.insert(png.find("IDAT") - 4, std::string("\0\0\0\4ODDS", 8) + "datasums");
    const TempFolder folder;
    EXPECT_EQ(corners(decodePicture(folder.write("a.png", png)).value()), "RGBW");
}

TEST(BytesForHeif, CountsWhatTheStreamDecodesTo) {
    constexpr std::int64_t kBytes = std::int64_t{16} * 640 * 480;
    const auto bytesFor = [](std::string file, std::string_view from, std::string_view to) {
        for (std::size_t at = 0; (at = file.find(from, at)) != std::string::npos; at += to.size())
            file.replace(at, to.size(), to);
        return bytesForHeif(Bytes(file.begin(), file.end()));
    };
    const std::string_view stated("ispe\0\0\0\0\0\0\2\x80\0\0\1\xE0", 16);
    const std::string_view less("ispe\0\0\0\0\0\0\0\1\0\0\0\1", 16);
    for (const auto& [type, item] : {std::pair{"heic", "hvc1"}, {"avif", "av01"}}) {
        const std::string file = text(converted(encodePng(quarters({640, 480})).value(), type));
        const std::int64_t bytes = bytesFor(file, "none", "none").value_or(0);
        EXPECT_TRUE(bytes >= kBytes && bytes < kBytes * 5 / 4) << type << bytes;
        EXPECT_EQ(bytesFor(file, stated, less), bytes) << type;
        EXPECT_FALSE(bytesFor(file, item, "iden")) << type;
        const std::string again("\0\0\0\x0Cmeta\0\0\0\0", 12);
        EXPECT_FALSE(bytesFor(file + again, "none", "none")) << type;

        std::string longer = file + std::string("\0\0\0\x08moovjunk", 12);
        std::string read;
        const Bytes whole(longer.begin(), longer.end());
        for (const ByteView part : stillParts(whole))
            read.append(part.begin(), part.end());
        EXPECT_EQ(read, longer.replace(file.size() + 4, 8, "free")) << type;
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
        text(encodeBmp(quarters({64, 32}))).replace(18, 8, "\x40\x9C\0\0\x40\x9C\0\0", 8),
        // Formats whose readers nothing bounds.
        "<svg xmlns='http://www.w3.org/2000/svg'><rect width='9' height='9'/></svg>",
        "#define a_width 8\n#define a_height 1\nstatic char a_bits[] = { 0xFF };\n"};
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
    const bool isInParts = readsInParts();
    return {{jpeg, decodeJpeg},
            {progressive(jpeg), decodeJpeg},
            // Older versions of OpenJPEG read behind what is left of a cut file.
            {encodeJpeg2000(bitmap).value(), decodeJpeg2000, isAtLeast("libopenjp2-7", "2.5.3")},
            {png, decodeWithPixbuf, isInParts},
            {converted(png, "webp"), decodeWithPixbuf, !isAtLeast("webp-pixbuf-loader", "0.2.7")},
            {encodeGif(bitmap).value(), decodeWithPixbuf, isInParts},
            {encodeBmp(bitmap).value(), decodeWithPixbuf, isInParts, 75},  // Bottom first.
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

#ifdef __SANITIZE_ADDRESS__
using UnreportedLeaks = __lsan::ScopedDisabler;
#else
struct UnreportedLeaks {
    UnreportedLeaks() {}
};
#endif

TEST(Decoders, BearAnyCutAndAnyWrongByteInSilence) {
    const auto bear = [] {
        std::vector<CutCase> cases = cutCases(quarters({96, 80}));
        cases.push_back(
            {converted(cases[0].file, "'(' +clone -negate ')' webp"), decodeWithPixbuf});
        for (auto& [file, decode, showsPart, redRow] : cases) {
            // The loader of version 0.2.7 leaks the frames of an animation that is damaged.
            std::optional<UnreportedLeaks> leaks;
            if (&file == &cases.back().file) leaks.emplace();
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
    // A reader may say once that it has no sandbox, which is not about these files.
    decodeWithPixbuf(encodePng(quarters({96, 80})).value(), everyPixel);
    EXPECT_EQ(errorsOf(bear), "");
}

}  // namespace tkv::test::decoding
