#include "pictures.h"

#include <gtest/gtest.h>

#include "graphics/drawing.h"

namespace tkv::test {

std::string text(const std::optional<Bytes>& file) {
    return file ? std::string(file->begin(), file->end()) : std::string();
}

Bitmap quarters(PixelSize size, int alpha) {
    return painted(size, [=](int x, int y) {
        const bool isRight = x >= size.width / 2, isLow = y >= size.height / 2;
        return Rgba{isRight == isLow ? 255 : 0, isRight ? 255 : 0, isLow ? 255 : 0, alpha};
    });
}

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
    run(magick() + folder.write("a", text(picture)) + " " + arguments + ":" + path);
    return bytesOf(path);
}

Bytes progressive(const Bytes& jpeg, const std::string& script) {
    const TempFolder folder;
    const std::string scans =
        script.empty() ? "-progressive" : "-scans " + folder.write("s", script);
    run("cd " + folder.path() + " && jpegtran " + scans + " -outfile b " +
        folder.write("a", text(jpeg)));
    return bytesOf(folder.file("b"));
}

Bitmap drawn(const Bitmap& picture, PixelSize size, const Rect& from) {
    Bitmap shown = Bitmap::create(size).value();
    EXPECT_TRUE(drawPicture(shown, picture, from, {0, 0, 1.0 * size.width, 1.0 * size.height},
                            Compositing::sourceOver, 1.0));
    return shown;
}

}  // namespace tkv::test
