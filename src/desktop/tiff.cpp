#include <tiffio.h>
#include <tiffio.hxx>

#include <array>
#include <cstdint>
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
