#pragma once

#include "composer/menu_request.h"
#include "graphics/geometry.h"

// The dimensions of a menu page. Layout positions are given on a page of 720 x 540 square pixels,
// origin at the bottom left; the overlay's canvas has the height of the video raster instead.

namespace tkv {

inline constexpr int kPageWidth = 720;
inline constexpr int kPageHeight = 540;
inline constexpr int kPalRasterHeight = 576;
inline constexpr int kNtscRasterHeight = 480;

/// Columns of the page that pan-scan crops on each side, and the factor that stretches the rest.
inline constexpr int kCropPanscan = 90;
inline constexpr float kRatioPanscan = 1.3333334F;

/// What 160 columns of the page come to there.
inline constexpr double kPanScanOf160 = 213.33334;

inline constexpr PixelSize kPreviewSize{640, 360};

/// Frames of an animated menu: 30 seconds less one frame.
constexpr int passCount(bool isPal) {
    return isPal ? 749 : 899;
}

/// The canvas of a mode, in pixels.
constexpr PixelSize canvasSize(MenuMode mode, bool isPal) {
    if (mode != MenuMode::overlay) return {kPageWidth, kPageHeight};
    return {kPageWidth, isPal ? kPalRasterHeight : kNtscRasterHeight};
}

/// What a vertical page position is multiplied by on that canvas.
constexpr float overlayYFactor(MenuMode mode, bool isPal) {
    // Divided in double precision, kept in single.
    return static_cast<float>(static_cast<double>(canvasSize(mode, isPal).height) / kPageHeight);
}

}  // namespace tkv
