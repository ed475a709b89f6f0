#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "graphics/bitmap.h"

// The pixels of films that are drawn: in video's colours, finer than its levels, so that neither
// slow fades nor soft colours show steps.

namespace tkv::disc {

/// Brightness or a colour, in 64ths of a level of 8-bit video, rows from the top.
struct Plane {
    Plane() = default;
    explicit Plane(PixelSize wanted)
        : size(wanted),
          levels(static_cast<std::size_t>(wanted.width) * static_cast<std::size_t>(wanted.height)) {
    }

    std::int16_t* row(int y) { return levels.data() + offset(y); }
    const std::int16_t* row(int y) const { return levels.data() + offset(y); }

    PixelSize size;
    std::vector<std::int16_t> levels;

  private:
    std::size_t offset(int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width);
    }
};

/// A picture as BT.601 has it: its brightness, and the differences of blue and red at half the
/// resolution, each in the middle of four pixels.
using Planes = std::array<Plane, 3>;

/// Of that size, which is even.
Planes emptyPlanes(PixelSize size);

/// The picture's colours, whose sides are even; what is transparent shows black.
Planes planesOf(const Bitmap& picture);

/// Puts a picture into another one, its top left corner at an even place.
void put(const Planes& picture, int left, int top, Planes& onto);

/// Where a picture's colours lie among its pixels: in the middle of four, or as MPEG-2 has them
/// between two rows in each second column.
enum class ColorSite { middle, left };

/// The rows of a frame that a picture has: all, or those of a field.
struct RowSet {
    int first = 0, step = 1;
};
inline constexpr RowSet kAllRows{}, kTopField{0, 2}, kBottomField{1, 2};

/// The part of a picture, whose edges may be fractional, at the size of a frame with such rows;
/// beyond the picture its edges repeat. Shrinking drops what would be too fine, and of a field what
/// would flicker.
void resample(const Planes& from, const PixelRect& part, ColorSite site, RowSet rows, Planes& to);

/// Blurs a picture; `sigma`: in pixels of its brightness.
void blur(Planes& picture, double sigma);

/// Brings a picture's light and colours nearer to black and grey.
void weaken(Planes& picture, double light, double color);

/// What lies over a picture: what it adds, and in 16384ths what it covers.
struct Overlay {
    Planes added, cover;
};

/// An overlay of the same size as a picture, of premultiplied colours, and of a shade behind them:
/// how much each row is darkened.
Overlay overlayOf(const Bitmap& colors, std::span<const double> shade);
void cover(Planes& picture, const Overlay& overlay, RowSet rows);

/// The bytes of a frame in the format yuv420p.
std::size_t frameBytes(PixelSize size);

/// How much of a picture has turned into another, and of that how much has come out of black, in 0
/// to 1.
struct Turning {
    double part = 0, light = 1;
    bool operator==(const Turning&) const = default;
};

/// Writes rows of a frame. Pictures that are equal stay what they are while one turns into the
/// other.
void writeFrame(const Planes& picture, const Planes& other, const Turning& turning, RowSet rows,
                std::span<std::uint8_t> frame);

}  // namespace tkv::disc
