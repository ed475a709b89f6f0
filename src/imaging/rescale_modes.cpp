#include "imaging/rescale_modes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "graphics/drawing.h"
#include "imaging/output_bitmap.h"
#include "system/log.h"
#include "system/verbose.h"

namespace tkv {

namespace {

/// 0, negative values and NaN mean one unit per pixel.
double usableResolution(double resolution) {
    return resolution > 0 ? resolution : kUnitsPerInch;
}

/// Truncates towards zero and saturates at the limits of int; NaN gives 0.
int truncated(double value) {
    if (std::isnan(value)) return 0;
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, kLowest, kHighest));
}

/// A product in single precision.
float product(int a, float b) {
    return static_cast<float>(a) * b;
}

/// How the picture is scaled to the box: by `f` source units per output pixel.
struct Fit {
    int srcW;
    int srcH;
    float f;
    int scaledW;
    int scaledH;
};

/// `choose`: std::min of the two ratios covers the box, std::max fits inside it.
template <typename Choose>
Fit fitToBox(const Bitmap& image, int dstW, int dstH, Choose choose) {
    Fit fit{};
    fit.srcW = truncated(image.nominalSize().width);
    fit.srcH = truncated(image.nominalSize().height);
    verboseLine("img size : {} x {}", fit.srcW, fit.srcH);
    fit.f = choose(static_cast<float>(fit.srcW) / static_cast<float>(dstW),
                   static_cast<float>(fit.srcH) / static_cast<float>(dstH));
    fit.scaledW = truncated(static_cast<float>(fit.srcW) / fit.f);
    fit.scaledH = truncated(static_cast<float>(fit.srcH) / fit.f);
    verboseLine("f={:f}, src = {} x {} -> dst = {} x {}", fit.f, fit.srcW, fit.srcH, fit.scaledW,
                fit.scaledH);
    return fit;
}

constexpr auto covering = [](float a, float b) { return std::min(a, b); };
constexpr auto inside = [](float a, float b) { return std::max(a, b); };

void logBitmap(const Bitmap& bitmap) {
    if (!isVerbose()) return;
    logLine(
        "rep=NSBitmapImageRep Size={{{:g}, {:g}}} ColorSpace=NSCalibratedRGBColorSpace BPS=8 "
        "BPP=32 Pixels={}x{} Alpha=YES Planar=NO Format=0",
        bitmap.nominalSize().width, bitmap.nominalSize().height, bitmap.width(), bitmap.height());
}

enum class Logging { off, on };

/// The bitmap that a mode draws on, its drawing units set by the resolution.
std::optional<Bitmap> newCanvas(PixelSize size, double dotsPerInch, Logging logging) {
    std::optional<Bitmap> bitmap = newOutputBitmap(size);
    if (!bitmap) return std::nullopt;
    const auto logStep = [&] {
        if (logging == Logging::on) logBitmap(*bitmap);
    };
    logStep();
    logStep();
    bitmap->setNominalSize(
        {size.width * kUnitsPerInch / dotsPerInch, size.height * kUnitsPerInch / dotsPerInch});
    logStep();
    return bitmap;
}

Rect boxRect(int width, int height) {
    return {0, 0, static_cast<double>(width), static_cast<double>(height)};
}

Rect nominalRect(const Bitmap& bitmap) {
    return {0, 0, bitmap.nominalSize().width, bitmap.nominalSize().height};
}

/// Draws the picture's part `from` into `to`; the background `blackFill` is painted first unless
/// alpha is kept. False when the drawing failed.
bool drawOn(Bitmap& canvas, const Bitmap& image, const Rect& blackFill, const Rect& from,
            const Rect& to, bool keepAlpha) {
    if (!keepAlpha && !fillRect(canvas, blackFill, kBlack)) return false;
    return drawPicture(canvas, image, from, to,
                       keepAlpha ? Compositing::destinationOver : Compositing::sourceOver, 1.0);
}

}  // namespace

std::optional<Bitmap> imgRescaleFillCrop(const Bitmap* image, int dstW, int dstH, double resolution,
                                         bool keepAlpha) {
    if (image == nullptr) return std::nullopt;
    const double dotsPerInch = usableResolution(resolution);
    const Fit fit = fitToBox(*image, dstW, dstH, covering);
    std::optional<Bitmap> canvas = newCanvas({dstW, dstH}, dotsPerInch, Logging::on);
    if (!canvas) return std::nullopt;

    const int halfY = (dstH - fit.scaledH) / 2;
    const int halfX = (dstW - fit.scaledW) / 2;
    const auto offY = static_cast<float>(halfY);
    const auto offX = static_cast<float>(halfX);
    const int srcOffY = truncated(offY * fit.f);
    const int srcOffX = truncated(offX * fit.f);
    // The region is scaled by the resolution and the offsets are not: kept so, and without effect
    // at 72 dots per inch.
    const auto region = [&](int scaled, float offset) {
        return truncated(truncated(product(scaled, fit.f)) * dotsPerInch / kUnitsPerInch +
                         truncated(2 * offset * fit.f) * dotsPerInch / kUnitsPerInch);
    };
    const int srcRegH = region(fit.scaledH, offY);
    const int srcRegW = region(fit.scaledW, offX);
    verboseLine("dstOffset={:.0f}:{:.0f} (dst={}*{}) -> srcOffset={}:{} (src={}*{})", offX, offY,
                dstW, dstH, srcOffX, srcOffY, srcRegW, srcRegH);
    const Rect from{-static_cast<double>(srcOffX), -static_cast<double>(srcOffY),
                    static_cast<double>(srcRegW), static_cast<double>(srcRegH)};
    if (!drawOn(*canvas, *image, boxRect(dstW, dstH), from, boxRect(dstW, dstH), keepAlpha))
        return std::nullopt;
    return canvas;
}

std::optional<Bitmap> imgRescaleFitPad(const Bitmap* image, int dstW, int dstH, double resolution,
                                       bool keepAlpha) {
    if (image == nullptr) return std::nullopt;
    const double dotsPerInch = usableResolution(resolution);
    const Fit fit = fitToBox(*image, dstW, dstH, inside);
    std::optional<Bitmap> canvas = newCanvas({dstW, dstH}, dotsPerInch, Logging::on);
    if (!canvas) return std::nullopt;

    const auto nominalOffset = [&](int left) {
        const int half = left / 2;
        return static_cast<float>(half * kUnitsPerInch / dotsPerInch);
    };
    const float offY = nominalOffset(dstH - fit.scaledH);
    const float offX = nominalOffset(dstW - fit.scaledW);
    if (isVerbose()) {
        logLine("dstOffset={:.0f}:{:.0f} (dst={}*{})", offX, offY, dstW, dstH);
        logLine("{}:{}:{}:{}", truncated(offX), truncated(offY), fit.scaledW, fit.scaledH);
    }
    const Rect from{0, 0, fit.srcW * dotsPerInch / kUnitsPerInch,
                    fit.srcH * dotsPerInch / kUnitsPerInch};
    // The size is in pixels while the offset is in drawing units: kept as it stands.
    const Rect to{static_cast<double>(truncated(offX)), static_cast<double>(truncated(offY)),
                  static_cast<double>(fit.scaledW), static_cast<double>(fit.scaledH)};
    if (!drawOn(*canvas, *image, boxRect(dstW, dstH), from, to, keepAlpha)) return std::nullopt;
    return canvas;
}

std::optional<Bitmap> imgRescaleStretch(const Bitmap* image, int dstW, int dstH, double resolution,
                                        bool keepAlpha) {
    if (image == nullptr) return std::nullopt;
    const double dotsPerInch = usableResolution(resolution);
    std::optional<Bitmap> canvas = newCanvas({dstW, dstH}, dotsPerInch, Logging::off);
    if (!canvas) return std::nullopt;
    if (!drawOn(*canvas, *image, boxRect(dstW, dstH), Rect{}, nominalRect(*canvas), keepAlpha))
        return std::nullopt;
    return canvas;
}

std::optional<Bitmap> imgRescaleFit(const Bitmap* image, int dstW, int dstH, double resolution,
                                    bool keepAlpha) {
    if (image == nullptr) return std::nullopt;
    const double dotsPerInch = usableResolution(resolution);
    const Fit fit = fitToBox(*image, dstW, dstH, inside);
    std::optional<Bitmap> canvas = newCanvas({fit.scaledW, fit.scaledH}, dotsPerInch, Logging::off);
    if (!canvas) return std::nullopt;
    if (!drawOn(*canvas, *image, boxRect(dstW, dstH), boxRect(fit.srcW, fit.srcH),
                nominalRect(*canvas), keepAlpha))
        return std::nullopt;
    return canvas;
}

std::optional<Bitmap> imgRescaleCover(const Bitmap* image, int dstW, int dstH, double resolution,
                                      bool keepAlpha) {
    if (image == nullptr) return std::nullopt;
    const double dotsPerInch = usableResolution(resolution);
    const Fit fit = fitToBox(*image, dstW, dstH, covering);
    std::optional<Bitmap> canvas = newCanvas({fit.scaledW, fit.scaledH}, dotsPerInch, Logging::on);
    if (!canvas) return std::nullopt;
    // The background is four units larger than the box and may still be smaller than the bitmap.
    const Rect ground = boxRect(dstW + 4, dstH + 4);
    const Rect from{0, 0, double{product(fit.scaledW, fit.f)} * dotsPerInch / kUnitsPerInch,
                    double{product(fit.scaledH, fit.f)} * dotsPerInch / kUnitsPerInch};
    if (!drawOn(*canvas, *image, ground, from, boxRect(fit.scaledW, fit.scaledH), keepAlpha))
        return std::nullopt;
    return canvas;
}

}  // namespace tkv
