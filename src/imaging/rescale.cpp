#include "imaging/rescale.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "graphics/drawing.h"
#include "graphics/formats.h"
#include "imaging/export.h"
#include "imaging/rescale_modes.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

/// Null for a number that names no mode.
RescaleMode modeRoutine(int modeInt) {
    switch (modeInt) {
        case kFillAndCrop:
            return imgRescaleFillCrop;
        case kFitWithBars:
            return imgRescaleFitPad;
        case kStretch:
            return imgRescaleStretch;
        case kFit:
            return imgRescaleFit;
        case kCover:
            return imgRescaleCover;
        default:
            return nullptr;
    }
}

/// The pixels of a picture that covers the box; no mode shows more of it.
PixelSize coveringSize(PixelSize full, int dstW, int dstH) {
    const double f =
        std::min(static_cast<double>(full.width) / dstW, static_cast<double>(full.height) / dstH);
    if (!(f > 1)) return full;
    return sufficientFor({full.width / f, full.height / f});
}

std::optional<Bitmap> loadFor(const std::string& path, int dstW, int dstH) {
    return decodePicture(expandTilde(path),
                         [&](PixelSize full) { return coveringSize(full, dstW, dstH); });
}

constexpr std::string_view mouth(bool smiling) {
    return smiling ? ")" : "(";
}

}  // namespace

bool imgRescale(const PictureSource& srcPathStrOrImg, const std::string& dstPathStr, int dstW,
                int dstH, double resolution, int modeInt, float quality, bool* isWritten) {
    if (isWritten != nullptr) *isWritten = false;
    const auto* const path = std::get_if<std::string>(&srcPathStrOrImg);
    const auto* const given = std::get_if<const Bitmap*>(&srcPathStrOrImg);
    const Bitmap* image = given != nullptr ? *given : nullptr;
    verboseLine("imgRescale          - deb, srcPathStrOrImg = path ? {:d}, image ? {:d}",
                path != nullptr, image != nullptr);
    std::optional<Bitmap> loaded;
    if (path != nullptr) {
        const bool exists = fileExists(*path);
        verboseLine("imgRescale src path :-{} {}", mouth(exists), *path);
        if (!exists) return false;
        loaded = loadFor(*path, dstW, dstH);
        if (loaded) image = &*loaded;
    }
    if (image == nullptr) return false;
    verboseLine("imgRescale          : size = {:.0f} x {:.0f}",
                std::trunc(image->nominalSize().width), std::trunc(image->nominalSize().height));

    std::optional<Bitmap> bitmap;
    if (const RescaleMode rescaled = modeRoutine(modeInt)) {
        bitmap = rescaled(image, dstW, dstH, resolution, keepsAlpha(pathExtension(dstPathStr)));
    }
    verboseLine("imgRescale          :-{} modeInt={}", mouth(bitmap.has_value()), modeInt);
    return imgExport(std::move(bitmap), dstPathStr, quality, isWritten);
}

std::optional<std::array<int, 2>> imgSizes(const std::string& path) {
    const bool exists = fileExists(path);
    verboseLine("imgSizes - deb  : {} = {:d}", path, exists);
    if (!exists) return std::nullopt;
    // The nominal size is the whole picture's however few pixels are decoded.
    const std::optional<Bitmap> image = decodePicture(expandTilde(path), [](PixelSize) {
        return PixelSize{1, 1};
    });
    if (!image) return std::nullopt;
    return std::array{static_cast<int>(image->nominalSize().width),
                      static_cast<int>(image->nominalSize().height)};
}

bool imgColorFile(const Color& colour, const std::string& path, int width, int height) {
    std::optional<Bitmap> swatch = Bitmap::create({100, 100});
    if (!swatch || !fillRect(*swatch, {0, 0, 100, 100}, colour)) return false;
    return imgExport(imgRescaleStretch(&*swatch, width, height, kUnitsPerInch, false), path, 1.0F);
}

}  // namespace tkv
