#pragma once

namespace tkv {

/// At this many dots per inch one drawing unit is one pixel.
inline constexpr double kUnitsPerInch = 72.0;

/// A position in drawing units: origin at the bottom-left corner, y upwards.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
    auto operator<=>(const Point&) const = default;
};

/// An extent in drawing units.
struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
    auto operator<=>(const Size&) const = default;
};

/// A rectangle in drawing units; (x, y) is its bottom-left corner.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
    auto operator<=>(const Rect&) const = default;
};

/// A rectangle in pixels, possibly fractional: origin at the top-left corner, y downwards.
struct PixelRect {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    bool operator==(const PixelRect&) const = default;
};

/// An extent in whole pixels.
struct PixelSize {
    int width = 0;
    int height = 0;
    bool operator==(const PixelSize&) const = default;
    auto operator<=>(const PixelSize&) const = default;
};

/// A colour in sRGB, each component in 0..1, not premultiplied.
struct Color {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;
    bool operator==(const Color&) const = default;
    auto operator<=>(const Color&) const = default;
};

inline constexpr Color kBlack{0, 0, 0};
inline constexpr Color kWhite{1, 1, 1};
inline constexpr Color kOrange{1.0F, 0.5F, 0.0F};

/// The same colour at another opacity in 0..1.
constexpr Color withAlpha(Color color, float alpha) {
    return {color.red, color.green, color.blue, alpha};
}

}  // namespace tkv
