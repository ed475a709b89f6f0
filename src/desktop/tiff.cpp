#include "desktop/tiff.h"

#include <tiffio.h>
#include <tiffio.hxx>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "desktop/functions.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv::desktop {

namespace {

using TiffFile = std::unique_ptr<TIFF, Releaser<TIFFClose>>;

// ---- Decoding

// A file in memory, as the library reads one.
struct MemoryFile {
    ByteView bytes;
    std::size_t at = 0;
};

tmsize_t readSome(thandle_t handle, void* to, tmsize_t wanted) {
    auto& file = *static_cast<MemoryFile*>(handle);
    const std::size_t left = file.bytes.size() - std::min(file.at, file.bytes.size());
    const std::size_t count =
        std::min(left, static_cast<std::size_t>(std::max<tmsize_t>(0, wanted)));
    if (count > 0) std::memcpy(to, file.bytes.data() + file.at, count);
    file.at += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t writeNothing(thandle_t, void*, tmsize_t) {
    return 0;
}

toff_t moveTo(thandle_t handle, toff_t offset, int from) {
    auto& file = *static_cast<MemoryFile*>(handle);
    const std::size_t base = from == SEEK_CUR ? file.at : from == SEEK_END ? file.bytes.size() : 0;
    file.at = base + offset;
    return file.at;
}

int closeNothing(thandle_t) {
    return 0;
}

toff_t sizeOf(thandle_t handle) {
    return static_cast<MemoryFile*>(handle)->bytes.size();
}

// What the library says of damaged files goes to the standard error stream, which is an interface.
void silence() {
    [[maybe_unused]] static const bool isDone = [] {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
        return true;
    }();
}

// ---- Encoding

// Four bytes a pixel: red, green, blue and opacity, by which the colours are not multiplied.
constexpr int kChannels = 4;

// Uncompressed, which every program reads: photographs would hardly compress.
bool describe(TIFF* tiff, const Bitmap& bitmap) {
    const Resolution dots = dotsPerInch(bitmap);
    const std::array<std::uint16_t, 1> opacity{EXTRASAMPLE_UNASSALPHA};
    return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, bitmap.width()) == 1 &&
           TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, bitmap.height()) == 1 &&
           TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) == 1 &&
           TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kChannels) == 1 &&
           TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, opacity.data()) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB) == 1 &&
           TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == 1 &&
           TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) == 1 &&
           TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) == 1 &&
           TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0)) == 1 &&
           TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) == 1 &&
           TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(dots.across)) == 1 &&
           TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(dots.down)) == 1;
}

bool writeRows(TIFF* tiff, const Bitmap& bitmap) {
    std::vector<std::uint8_t> row(static_cast<std::size_t>(bitmap.width()) * kChannels);
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::uint32_t* const from = bitmap.row(y);
        std::uint8_t* to = row.data();
        for (int x = 0; x < bitmap.width(); ++x) {
            const std::uint32_t pixel = straight(from[x]);
            *to++ = static_cast<std::uint8_t>(redOf(pixel));
            *to++ = static_cast<std::uint8_t>(greenOf(pixel));
            *to++ = static_cast<std::uint8_t>(blueOf(pixel));
            *to++ = static_cast<std::uint8_t>(alphaOf(pixel));
        }
        if (TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0) != 1)
            return false;
    }
    return true;
}

}  // namespace

std::optional<TiffPixels> decodeTiff(ByteView file,
                                     const std::function<bool(PixelSize)>& isWanted) {
    silence();
    MemoryFile memory{file};
    const TiffFile tiff(TIFFClientOpen("picture", "rm", &memory, readSome, writeNothing, moveTo,
                                       closeNothing, sizeOf, nullptr, nullptr));
    if (!tiff) return std::nullopt;
    std::uint32_t width = 0, height = 0;
    if (TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width) != 1 ||
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) != 1)
        return std::nullopt;
    constexpr std::uint32_t kMost = 1U << 30U;
    TiffPixels pixels;
    pixels.size = {static_cast<int>(std::min(width, kMost)),
                   static_cast<int>(std::min(height, kMost))};
    if (!isWanted(pixels.size)) return std::nullopt;
    pixels.words.resize(static_cast<std::size_t>(pixelsOf(pixels.size)));
    if (TIFFReadRGBAImageOriented(tiff.get(), width, height, pixels.words.data(),
                                  ORIENTATION_TOPLEFT, 1) != 1)
        return std::nullopt;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_ORIENTATION, &orientation);
    // The library mirrors the picture, and leaves it on its side.
    constexpr std::array<int, 9> kLeft{1, 1, 1, 1, 1, 5, 7, 5, 7};
    pixels.orientation = orientation < kLeft.size() ? kLeft.at(orientation) : 1;
    return pixels;
}

std::optional<Bytes> encodeTiff(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    std::ostringstream stream;
    // The stream type that it takes is the base class.
    TiffFile tiff(TIFFStreamOpen("picture", static_cast<std::ostream*>(&stream)));
    if (!tiff || !describe(tiff.get(), bitmap) || !writeRows(tiff.get(), bitmap))
        return std::nullopt;
    tiff.reset();  // writes the directory
    if (!stream) return std::nullopt;
    const std::string file = stream.str();
    return Bytes(file.begin(), file.end());
}

}  // namespace tkv::desktop
