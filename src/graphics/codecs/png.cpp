#include <png.h>

#include <cmath>
#include <csetjmp>
#include <new>
#include <span>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/pixels.h"

namespace tkv {

namespace {

/// zlib's fastest level that compresses at all. The next ones take half as long again for a sixth
/// less.
constexpr int kCompressionLevel = 1;

/// libpng's error handler must not return: this one leaves the running step by longjmp.
[[noreturn]] void leave(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void append(png_structp png, png_bytep data, png_size_t length) {
    auto* file = static_cast<Bytes*>(png_get_io_ptr(png));
    bool isAppended = true;
    try {
        file->insert(file->end(), data, data + length);
    } catch (const std::bad_alloc&) {
        isAppended = false;  // No longjmp out of a catch block: the exception would leak.
    }
    if (!isAppended) png_error(png, "no memory");
}

class PngEncoder {
  public:
    PngEncoder()
        : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leave,
                                       [](png_structp, png_const_charp) {})),
          info_(png_ == nullptr ? nullptr : png_create_info_struct(png_)) {}
    ~PngEncoder() { png_destroy_write_struct(&png_, &info_); }
    PngEncoder(const PngEncoder&) = delete;
    PngEncoder& operator=(const PngEncoder&) = delete;

    bool encode(const Bitmap& bitmap, Bytes& file);
    bool encode(PixelSize size, std::uint32_t straight, Bytes& file);

  private:
    // False after an error. longjmp runs no destructors, so `step` must not have local objects with
    // one.
    template <typename Step>
    bool run(const Step& step) {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        step();
        return true;
    }

    void writeHeader(PixelSize size, Resolution dots);
    void writeRows(const Bitmap& bitmap, std::vector<std::uint8_t>& row);

    png_structp png_;
    png_infop info_;
};

/// Stores a pixel as RGBA, as the file has it; returns the position after it.
std::uint8_t* store(std::uint32_t straight, std::uint8_t* to) {
    *to++ = static_cast<std::uint8_t>(redOf(straight));
    *to++ = static_cast<std::uint8_t>(greenOf(straight));
    *to++ = static_cast<std::uint8_t>(blueOf(straight));
    *to++ = static_cast<std::uint8_t>(alphaOf(straight));
    return to;
}

void PngEncoder::writeHeader(PixelSize size, Resolution dots) {
    png_set_IHDR(png_, info_, static_cast<png_uint_32>(size.width),
                 static_cast<png_uint_32>(size.height), 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    const auto perMetre = [](int perInch) {
        return static_cast<png_uint_32>(std::lround(perInch / 0.0254));
    };
    png_set_pHYs(png_, info_, perMetre(dots.across), perMetre(dots.down), PNG_RESOLUTION_METER);
    png_set_compression_level(png_, kCompressionLevel);
    png_write_info(png_, info_);
}

void PngEncoder::writeRows(const Bitmap& bitmap, std::vector<std::uint8_t>& row) {
    // A fixed filter: adaptive filtering would take longer than the compression itself.
    png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    for (int y = 0; y < bitmap.height(); ++y) {
        std::uint8_t* to = row.data();
        for (const std::uint32_t pixel :
             std::span(bitmap.row(y), static_cast<std::size_t>(bitmap.width()))) {
            to = store(straight(pixel), to);
        }
        png_write_row(png_, row.data());
    }
}

std::vector<std::uint8_t> emptyRow(PixelSize size) {
    return std::vector<std::uint8_t>(std::size_t{4} * static_cast<std::size_t>(size.width));
}

bool PngEncoder::encode(const Bitmap& bitmap, Bytes& file) {
    if (info_ == nullptr) return false;
    std::vector<std::uint8_t> row = emptyRow(bitmap.size());
    png_set_write_fn(png_, &file, append, nullptr);
    return run([&] {
        writeHeader(bitmap.size(), dotsPerInch(bitmap));
        writeRows(bitmap, row);
        png_write_end(png_, info_);
    });
}

bool PngEncoder::encode(PixelSize size, std::uint32_t straight, Bytes& file) {
    if (info_ == nullptr) return false;
    std::vector<std::uint8_t> row = emptyRow(size);
    for (std::uint8_t* to = row.data(); to != row.data() + row.size();)
        to = store(straight, to);
    constexpr int kDots = static_cast<int>(kUnitsPerInch);
    png_set_write_fn(png_, &file, append, nullptr);
    return run([&] {
        writeHeader(size, {kDots, kDots});
        // All rows are equal, which the compression finds without a filter.
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
        for (int y = 0; y < size.height; ++y)
            png_write_row(png_, row.data());
        png_write_end(png_, info_);
    });
}

}  // namespace

std::optional<Bytes> encodePng(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    Bytes file;
    if (!PngEncoder().encode(bitmap, file)) return std::nullopt;
    return file;
}

std::optional<Bytes> encodePlainPng(PixelSize size, std::uint32_t straight) {
    Bytes file;
    if (!PngEncoder().encode(size, straight, file)) return std::nullopt;
    return file;
}

}  // namespace tkv
