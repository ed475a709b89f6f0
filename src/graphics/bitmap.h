#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include "graphics/geometry.h"
#include "graphics/releaser.h"

namespace tkv {

/// The one in-memory picture: premultiplied sRGB with alpha, one native-endian 32-bit word per
/// pixel (0xAARRGGBB), rows top-down with a stride of `rowBytes`. Owns its pixels; movable, copied
/// only by an explicit call.
class Bitmap {
  public:
    /// A fully transparent bitmap, or none when a side is below 1 or there is no memory for it.
    /// `rowBytes`: the stride, a multiple of 4 and at least 4 * width; 0 means 4 * width.
    static std::optional<Bitmap> create(PixelSize size, std::size_t rowBytes = 0);

    /// A copy; none when there is no memory for it.
    std::optional<Bitmap> copy() const;

    PixelSize size() const { return size_; }
    int width() const { return size_.width; }
    int height() const { return size_.height; }
    std::size_t rowBytes() const { return rowBytes_; }

    /// Row `y` from the top, 0 <= y < height; `width` pixels.
    std::uint32_t* row(int y);
    const std::uint32_t* row(int y) const;

    /// The size of the picture in drawing units; as many units as pixels at first. A picture
    /// decoded at reduced size keeps the nominal size of the whole one.
    Size nominalSize() const { return nominalSize_; }
    void setNominalSize(Size size) { nominalSize_ = size; }

    /// Where the picture, all of its nominal size, lies on the pixels: on all of them at first. A
    /// picture decoded at reduced size may begin or end within a pixel, or a little beyond the
    /// last.
    const PixelRect& extent() const { return extent_; }
    void setExtent(const PixelRect& extent) { extent_ = extent; }

    /// How many samples a side of the original each pixel is the mean of: 1 unless a decoder has
    /// averaged.
    int averaged() const { return averaged_; }
    void setAveraged(int samples) { averaged_ = samples; }

  private:
    using Memory = std::unique_ptr<std::uint8_t, Releaser<std::free>>;

    Bitmap(PixelSize size, std::size_t rowBytes, Memory pixels);

    PixelSize size_;
    std::size_t rowBytes_;
    Memory pixels_;
    Size nominalSize_;
    PixelRect extent_;
    int averaged_ = 1;
};

}  // namespace tkv
