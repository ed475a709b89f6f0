#include "graphics/bitmap.h"

#include <cstring>
#include <limits>
#include <utility>

namespace tkv {

Bitmap::Bitmap(PixelSize size, std::size_t rowBytes, Memory pixels)
    : size_(size),
      rowBytes_(rowBytes),
      pixels_(std::move(pixels)),
      nominalSize_{static_cast<double>(size.width), static_cast<double>(size.height)},
      extent_{0, 0, nominalSize_.width, nominalSize_.height} {}

std::optional<Bitmap> Bitmap::create(PixelSize size, std::size_t rowBytes) {
    if (size.width < 1 || size.height < 1) return std::nullopt;
    const auto rows = static_cast<std::size_t>(size.height);
    const std::size_t tight = std::size_t{4} * static_cast<std::size_t>(size.width);
    if (rowBytes == 0) rowBytes = tight;
    if (rowBytes < tight || rowBytes % 4 != 0) return std::nullopt;
    if (rowBytes > std::numeric_limits<std::size_t>::max() / rows) return std::nullopt;
    // Only the pixels are cleared: the padding of a wide stride is several times as much memory,
    // and is never read.
    const bool wide = rowBytes > tight;
    Memory pixels(static_cast<std::uint8_t*>(wide ? std::malloc(rows * rowBytes)
                                                  : std::calloc(rows, rowBytes)));
    if (!pixels) return std::nullopt;
    for (std::size_t row = 0; wide && row < rows; ++row) {
        std::memset(pixels.get() + row * rowBytes, 0, tight);
    }
    return Bitmap(size, rowBytes, std::move(pixels));
}

std::optional<Bitmap> Bitmap::copy() const {
    const std::size_t bytes = static_cast<std::size_t>(size_.height) * rowBytes_;
    Memory pixels(static_cast<std::uint8_t*>(std::malloc(bytes)));
    if (!pixels) return std::nullopt;
    std::memcpy(pixels.get(), pixels_.get(), bytes);
    Bitmap copied(size_, rowBytes_, std::move(pixels));
    copied.nominalSize_ = nominalSize_;
    copied.extent_ = extent_;
    copied.averaged_ = averaged_;
    return copied;
}

const std::uint32_t* Bitmap::row(int y) const {
    return reinterpret_cast<const std::uint32_t*>(pixels_.get() +
                                                  static_cast<std::size_t>(y) * rowBytes_);
}

std::uint32_t* Bitmap::row(int y) {
    return const_cast<std::uint32_t*>(std::as_const(*this).row(y));
}

}  // namespace tkv
