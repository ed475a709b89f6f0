#include <algorithm>
#include <cmath>

#include "graphics/orientation.h"
#include "imaging/rescale.h"
#include "pictures.h"

// Pictures decoded smaller than they are.

namespace tkv::test::reducing {

TEST(DecodeWithPixbuf, WeighsColoursByTheirAlpha) {
    const Bitmap columns = painted({90, 60}, [](int x, int) {
        return x % 3 == 0 ? Rgba{255, 0, 0, 255} : Rgba{0, 0, 255, 0};
    });
    const Bitmap reduced = decodeWithPixbuf(encodePng(columns).value(), atLeast({20, 13})).value();
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
    run("cd " + folder.path() + " && " + magick() +
        "a.png a.ppm && "
        "opj_compress -i a.ppm -o moved.jp2 -d 33,17 -t 300,200");
    const std::string moved = readText(folder.file("moved.jp2"));
    return {{encodeJpeg(picture, 1.0F).value(), decodeJpeg},
            {encodeJpeg2000(picture).value(), decodeJpeg2000},
            {{moved.begin(), moved.end()}, decodeJpeg2000},
            {encodePng(picture).value(), decodeWithPixbuf}};
}

TEST(Decoders, PutReducedPicturesWhereWholeOnesLie) {
    for (const auto& [size, orientations] : {std::pair{PixelSize{801, 601}, 8}, {{806, 607}, 1}}) {
        for (const auto& [file, decode] : reducibleFiles(spot(size))) {
            for (int orientation = 1; orientation <= orientations; ++orientation) {
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

TEST(Decoders, RingNoMoreThanTheFilterDoes) {
    const auto paint = [](int x, int y) {
        return x > 203 && y > 131 ? Rgba{200, 200, 200, 255} : Rgba{50, 50, 50, 255};
    };
    const Bitmap edges = painted({480, 320}, paint);
    for (const auto& [file, decode] : reducibleFiles(edges)) {
        for (int width = 60; width <= 480; width += 60) {
            const PixelSize size{width, width * 2 / 3};
            const Bitmap shown = drawn(
                decode(file, atLeast(sufficientFor({width * 1.0, width / 1.5}))).value(), size);
            for (int i = 0; i < size.width * size.height; ++i) {
                // The filter adds a twelfth of an edge, in a corner twice; JPEG 2000 rings itself.
                const int red = pixel(shown, i % width, i / width).red;
                ASSERT_TRUE(red >= 35 && red <= 230) << red << " at " << width;
            }
        }
    }
}

/// The spread of what differs from its neighbours.
double detail(const Bitmap& picture) {
    double sum = 0;
    for (int y = 1; y + 1 < picture.height(); ++y) {
        for (int x = 1; x + 1 < picture.width(); ++x) {
            const auto at = [&](int right, int down) {
                return pixel(picture, x + right, y + down).green;
            };
            const int edge = 4 * at(0, 0) - at(-1, 0) - at(1, 0) - at(0, -1) - at(0, 1);
            sum += edge * edge;
        }
    }
    return std::sqrt(sum / ((picture.width() - 2) * (picture.height() - 2)));
}

TEST(Decoders, KeepDetailAlikeInEveryFormat) {
    const TempFolder folder;
    const std::string photo = folder.file("p.png");
    run(
        fmt::format("ffmpeg -v error -i {} -vf scale=500:375,noise=alls=30,scale=1000:750,"
                    "noise=alls=14 {}",
                    quoted(checkoutPath("examples/media/harbour.jpg")), photo));
    run(
        fmt::format("cd {} && {}p.png -quality 98 -sampling-factor 4:4:4 p.jpg && {}p.png p.tif && "
                    "{}p.png -define "
                    "webp:lossless=true p.webp",
                    folder.path(), magick(), magick(), magick()));
    for (const PixelSize size : {PixelSize{720, 540}, {480, 360}, {320, 240}, {160, 120}}) {
        run(fmt::format("cd {} && {}p.png -filter Lanczos -resize {}x{}! sharp.png", folder.path(),
                        magick(), size.width, size.height));
        const double most = detail(decodePicture(folder.file("sharp.png")).value());
        std::vector<double> kept;
        for (const char* name : {"p.jpg", "p.png", "p.tif", "p.webp"}) {
            ASSERT_TRUE(imgRescale(folder.file(name), folder.file("small.png"), size.width,
                                   size.height, 72, kStretch, 1));
            kept.push_back(detail(decodePicture(folder.file("small.png")).value()) / most);
            EXPECT_TRUE(kept.back() > 0.85 && kept.back() < 1)
                << name << " " << size.width << " " << kept.back();
        }
        EXPECT_LT(*std::ranges::max_element(kept) - *std::ranges::min_element(kept), 0.03);
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
                    quoted(checkoutPath("examples/media/harbour.jpg")), folder.file("p.png")));
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

}  // namespace tkv::test::reducing
