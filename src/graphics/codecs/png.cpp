#include <png.h>

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <new>
#include <span>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/pixels.h"

namespace tkv {

namespace {

/// zlib's level: of those that shrink a page at all the fastest. The next take half as long again
/// for a sixth less.
constexpr int kCompressionLevel = 1;

/// libpng gives up by a call that must not return: it jumps out of the step that was run.
[[noreturn]] void leave(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void append(png_structp png, png_bytep data, png_size_t length) {
    auto* file = static_cast<Bytes*>(png_get_io_ptr(png));
    bool isAppended = true;
    try {
        file->insert(file->end(), data, data + length);
    } catch (const std::bad_alloc&) {
        isAppended = false;  // The jump must not leave the handler: the exception would stay.
    }
    if (!isAppended) png_error(png, "no memory");
}

class Encoder {
  public:
    Encoder()
        : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leave,
                                       [](png_structp, png_const_charp) {})),
          info_(png_ == nullptr ? nullptr : png_create_info_struct(png_)) {}
    ~Encoder() { png_destroy_write_struct(&png_, &info_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    bool encode(const Bitmap& bitmap, Bytes& file);

  private:
    // False when libpng gave up. The jump runs no destructors, so `step` must not have local
    // objects with one.
    template <typename Step>
    bool run(const Step& step) {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        step();
        return true;
    }

    void writeHeader(const Bitmap& bitmap);
    void writeRows(const Bitmap& bitmap, std::vector<std::uint8_t>& row);

    png_structp png_;
    png_infop info_;
};

void Encoder::writeHeader(const Bitmap& bitmap) {
    png_set_IHDR(png_, info_, static_cast<png_uint_32>(bitmap.width()),
                 static_cast<png_uint_32>(bitmap.height()), 8, PNG_COLOR_TYPE_RGBA,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    const auto perMetre = [](int dots) {
        return static_cast<png_uint_32>(std::lround(dots / 0.0254));
    };
    const Resolution dots = dotsPerInch(bitmap);
    png_set_pHYs(png_, info_, perMetre(dots.across), perMetre(dots.down), PNG_RESOLUTION_METER);
    png_set_compression_level(png_, kCompressionLevel);
    png_write_info(png_, info_);
}

void Encoder::writeRows(const Bitmap& bitmap, std::vector<std::uint8_t>& row) {
    const auto width = static_cast<std::size_t>(bitmap.width());
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::span pixels(bitmap.row(y), width);
        // In overlays every row is like the one above it: `row` holds it already, and the
        // compression finds it without a filter.
        const bool isRepeated =
            y > 0 && std::ranges::equal(pixels, std::span(bitmap.row(y - 1), width));
        // Trying every filter on every row would take longer than the compression itself.
        png_set_filter(png_, PNG_FILTER_TYPE_BASE, isRepeated ? PNG_FILTER_NONE : PNG_FILTER_SUB);
        if (!isRepeated) {
            std::uint8_t* to = row.data();
            for (const std::uint32_t pixel : pixels) {
                const std::uint32_t color = straight(pixel);
                *to++ = static_cast<std::uint8_t>(redOf(color));
                *to++ = static_cast<std::uint8_t>(greenOf(color));
                *to++ = static_cast<std::uint8_t>(blueOf(color));
                *to++ = static_cast<std::uint8_t>(alphaOf(color));
            }
        }
        png_write_row(png_, row.data());
    }
    png_write_end(png_, info_);
}

bool Encoder::encode(const Bitmap& bitmap, Bytes& file) {
    if (info_ == nullptr) return false;
    std::vector<std::uint8_t> row(std::size_t{4} * static_cast<std::size_t>(bitmap.width()));
    png_set_write_fn(png_, &file, append, nullptr);
    return run([&] {
        writeHeader(bitmap);
        writeRows(bitmap, row);
    });
}

}  // namespace

std::optional<Bytes> encodePng(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    Bytes file;
    if (!Encoder().encode(bitmap, file)) return std::nullopt;
    return file;
}

}  // namespace tkv
