#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "desktop/embedded.h"
#include "desktop/functions.h"
#include "graphics/color_profile.h"
#include "graphics/orientation.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv::desktop {

namespace {

using Pixbuf = std::unique_ptr<GdkPixbuf, Releaser<g_object_unref>>;
using PixbufLoader = std::unique_ptr<GdkPixbufLoader, Releaser<g_object_unref>>;
using Buffer = std::unique_ptr<guint8, Releaser<g_free>>;
using Text = std::unique_ptr<gchar, Releaser<g_free>>;

// ---- Decoding

/// What the loader tells while it reads.
struct Progress {
    bool tooLarge = false;
    bool comesRowByRow = false;
    bool hasPixels = false;
};

/// Loaders complain of damaged files on the standard error stream, which is an interface.
class Silence {
  public:
    Silence() = default;
    ~Silence() { g_log_set_default_handler(before_, nullptr); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    GLogFunc before_ = g_log_set_default_handler(
        [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
};

void refuseTooLarge(GdkPixbufLoader* loader, int width, int height, Progress* progress) {
    // The whole picture is decoded here; only afterwards can it be reduced.
    if (canHold({width, height}, {width, height})) return;
    progress->tooLarge = true;
    // Most formats' readers stop at this, before they ask for memory.
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

std::string nameOf(GdkPixbufLoader* loader) {
    const Text name(gdk_pixbuf_format_get_name(gdk_pixbuf_loader_get_format(loader)));
    return name.get();
}

/// Where a file ends too soon, memory never written to would show. Only for the formats that are
/// read row by row: the readers of others tell of a picture when it is complete.
void clear(GdkPixbufLoader* loader, Progress* progress) {
    constexpr std::array<std::string_view, 8> kRowByRow{"png", "gif", "bmp", "ico",
                                                        "ani", "tga", "pnm", "jpeg"};
    if (std::ranges::find(kRowByRow, nameOf(loader)) == kRowByRow.end()) return;
    progress->comesRowByRow = true;
    gdk_pixbuf_fill(gdk_pixbuf_loader_get_pixbuf(loader), 0);
}

void notePixels(GdkPixbufLoader*, int, int, int, int, Progress* progress) {
    progress->hasPixels = true;
}

/// Turns premultiplied alpha into straight alpha.
void unmultiply(GdkPixbuf* pixbuf) {
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf));
    guint8* row = gdk_pixbuf_get_pixels(pixbuf);
    for (int y = 0; y < gdk_pixbuf_get_height(pixbuf); ++y, row += rowBytes) {
        guint8* at = row;
        for (int x = 0; x < gdk_pixbuf_get_width(pixbuf); ++x, at += 4) {
            const std::uint32_t pixel = straight(pixelOf(at[3], at[0], at[1], at[2]));
            at[0] = static_cast<guint8>(redOf(pixel));
            at[1] = static_cast<guint8>(greenOf(pixel));
            at[2] = static_cast<guint8>(blueOf(pixel));
        }
    }
}

Pixbuf load(ByteView file) {
    // The GIF reader goes over the whole picture after each piece, and moves all that is left of a
    // piece each few bytes: much smaller or larger ones take it ten times as long.
    constexpr std::size_t kPiece = std::size_t{1} << 20U;
    const Silence silence;
    Progress progress;
    const PixbufLoader loader(gdk_pixbuf_loader_new());
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(refuseTooLarge), &progress);
    g_signal_connect(loader.get(), "area-prepared", G_CALLBACK(clear), &progress);
    g_signal_connect(loader.get(), "area-updated", G_CALLBACK(notePixels), &progress);
    bool reads = true;
    for (ByteView rest = file; reads && !progress.tooLarge && !rest.empty();) {
        const ByteView piece = rest.first(std::min(kPiece, rest.size()));
        reads = gdk_pixbuf_loader_write(loader.get(), piece.data(), piece.size(), nullptr);
        rest = rest.subspan(piece.size());
    }
    const bool isWhole = gdk_pixbuf_loader_close(loader.get(), nullptr) && reads;
    // Not every loader that hands over a complete picture says that it has pixels.
    progress.hasPixels |= isWhole && !progress.comesRowByRow;
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (pixbuf == nullptr || progress.tooLarge || !progress.hasPixels) return nullptr;
    // The TIFF reader hands on what its library made, premultiplied alpha.
    if (gdk_pixbuf_get_has_alpha(pixbuf) && nameOf(loader.get()) == "tiff") unmultiply(pixbuf);
    return Pixbuf(GDK_PIXBUF(g_object_ref(pixbuf)));
}

/// A pixbuf's pixels: three bytes each, or four with straight alpha.
struct Pixels {
    explicit Pixels(const GdkPixbuf* pixbuf)
        : size{gdk_pixbuf_get_width(pixbuf), gdk_pixbuf_get_height(pixbuf)},
          first(gdk_pixbuf_read_pixels(pixbuf)),
          rowBytes(static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf))),
          channels(static_cast<std::size_t>(gdk_pixbuf_get_n_channels(pixbuf))) {}

    const guint8* row(int y) const { return first + static_cast<std::size_t>(y) * rowBytes; }
    static std::uint32_t wordAt(const guint8* at, bool alpha) {
        return pixelOf(alpha ? at[3] : 255U, at[0], at[1], at[2]);
    }

    PixelSize size;
    const guint8* first;
    std::size_t rowBytes;
    std::size_t channels;
};

std::optional<Bitmap> toBitmap(const Pixels& pixels) {
    std::optional<Bitmap> bitmap = Bitmap::create(pixels.size);
    if (!bitmap) return std::nullopt;
    const bool alpha = pixels.channels == 4;
    for (int y = 0; y < pixels.size.height; ++y) {
        const guint8* from = pixels.row(y);
        std::uint32_t* to = bitmap->row(y);
        for (int x = 0; x < pixels.size.width; ++x, from += pixels.channels) {
            to[x] = premultiplied(Pixels::wordAt(from, alpha));
        }
    }
    return bitmap;
}

/// The sums over a block of pixels, colours multiplied by their alpha.
struct Sum {
    std::uint64_t alpha = 0, red = 0, green = 0, blue = 0;
};

/// Where block `index` of `blocks` over `length` pixels starts; none differ by more than one pixel.
int blockStart(int index, int blocks, int length) {
    return static_cast<int>(std::int64_t{length} * index / blocks);
}

void addRow(const Pixels& pixels, int y, std::vector<Sum>& sums) {
    const bool alpha = pixels.channels == 4;
    const guint8* from = pixels.row(y);
    const int blocks = static_cast<int>(sums.size());
    int x = 0;
    for (int block = 0; block < blocks; ++block) {
        Sum sum = sums[static_cast<std::size_t>(block)];
        for (const int end = blockStart(block + 1, blocks, pixels.size.width); x < end;
             ++x, from += pixels.channels) {
            const std::uint64_t weight = alpha ? from[3] : 255U;
            sum.alpha += weight;
            sum.red += from[0] * weight;
            sum.green += from[1] * weight;
            sum.blue += from[2] * weight;
        }
        sums[static_cast<std::size_t>(block)] = sum;
    }
}

std::uint32_t mean(const Sum& sum, std::uint64_t pixels) {
    const auto over = [](std::uint64_t total, std::uint64_t count) {
        return static_cast<unsigned>((total + count / 2) / count);
    };
    return pixelOf(over(sum.alpha, pixels), over(sum.red, pixels * 255),
                   over(sum.green, pixels * 255), over(sum.blue, pixels * 255));
}

/// Every pixel of the answer is the mean of a block of pixels.
std::optional<Bitmap> reducedTo(PixelSize size, const Pixels& pixels) {
    std::optional<Bitmap> bitmap = Bitmap::create(size);
    if (!bitmap) return std::nullopt;
    const auto columns = [&](int x) { return blockStart(x, size.width, pixels.size.width); };
    const auto rows = [&](int y) { return blockStart(y, size.height, pixels.size.height); };
    std::vector<Sum> sums(static_cast<std::size_t>(size.width));
    for (int y = 0; y < size.height; ++y) {
        std::ranges::fill(sums, Sum{});
        for (int row = rows(y); row < rows(y + 1); ++row)
            addRow(pixels, row, sums);
        for (int x = 0; x < size.width; ++x) {
            const std::int64_t count =
                std::int64_t{columns(x + 1) - columns(x)} * (rows(y + 1) - rows(y));
            bitmap->row(y)[x] =
                mean(sums[static_cast<std::size_t>(x)], static_cast<std::uint64_t>(count));
        }
    }
    return bitmap;
}

void applyProfile(Bitmap& bitmap, GdkPixbuf* pixbuf, ByteView file) {
    const ColorKind kind = storedColors(file);
    if (kind == ColorKind::inks) return;  // The loader has made colours of them.
    if (const ByteView profile = webpChunk(file, "ICCP"); !profile.empty()) {
        convertToSrgb(bitmap, profile, kind);
        return;
    }
    const gchar* text = gdk_pixbuf_get_option(pixbuf, "icc-profile");
    if (text == nullptr) return;
    gsize length = 0;
    const Buffer profile(g_base64_decode(text, &length));
    convertToSrgb(bitmap, {profile.get(), length}, kind);
}

/// 1 to 8, as in EXIF.
int orientationOf(GdkPixbuf* pixbuf, ByteView file) {
    if (const ByteView exif = webpChunk(file, "EXIF"); !exif.empty()) return exifOrientation(exif);
    const gchar* text = gdk_pixbuf_get_option(pixbuf, "orientation");
    const int orientation = text == nullptr ? 1 : std::atoi(text);
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

// ---- Encoding

enum class Alpha { straight, overBlack };

Pixbuf toPixbuf(const Bitmap& bitmap, Alpha kind) {
    const bool alpha = kind == Alpha::straight;
    Pixbuf pixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, alpha, 8, bitmap.width(), bitmap.height()));
    if (!pixbuf) return pixbuf;
    guint8* first = gdk_pixbuf_get_pixels(pixbuf.get());
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf.get()));
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::uint32_t* from = bitmap.row(y);
        guint8* to = first + static_cast<std::size_t>(y) * rowBytes;
        for (int x = 0; x < bitmap.width(); ++x) {
            const std::uint32_t pixel = alpha ? straight(from[x]) : from[x];
            *to++ = static_cast<guint8>(redOf(pixel));
            *to++ = static_cast<guint8>(greenOf(pixel));
            *to++ = static_cast<guint8>(blueOf(pixel));
            if (alpha) *to++ = static_cast<guint8>(alphaOf(pixel));
        }
    }
    return pixbuf;
}

using Option = std::pair<std::string, std::string>;

std::optional<Bytes> save(const Pixbuf& pixbuf, const char* type, std::vector<Option> options) {
    if (!pixbuf) return std::nullopt;
    std::vector<char*> keys, values;
    for (Option& option : options) {
        keys.push_back(option.first.data());
        values.push_back(option.second.data());
    }
    keys.push_back(nullptr);
    values.push_back(nullptr);
    gchar* data = nullptr;
    gsize length = 0;
    const bool saved = gdk_pixbuf_save_to_bufferv(pixbuf.get(), &data, &length, type, keys.data(),
                                                  values.data(), nullptr);
    const Buffer owner(reinterpret_cast<guint8*>(data));
    if (!saved) return std::nullopt;
    return Bytes(owner.get(), owner.get() + length);
}

/// Dots a metre into the header of a BMP file; the library leaves them out.
void stateResolution(Bytes& file, Resolution dots) {
    constexpr std::size_t kPerMetre = 38;
    if (file.size() < kPerMetre + 8) return;
    const auto write = [&](std::size_t at, int perInch) {
        const auto perMetre = static_cast<std::uint32_t>(std::lround(perInch / 0.0254));
        for (std::size_t i = 0; i < 4; ++i) {
            file[at + i] = static_cast<std::uint8_t>(perMetre >> (8 * i));
        }
    };
    write(kPerMetre, dots.across);
    write(kPerMetre + 4, dots.down);
}

}  // namespace

std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed) {
    const Pixbuf pixbuf = load(file);
    if (!pixbuf) return std::nullopt;
    const Pixels pixels(pixbuf.get());
    const PixelSize full = pixels.size;
    const int orientation = orientationOf(pixbuf.get(), file);
    PixelSize atLeast = needed(swapsSides(orientation) ? PixelSize{full.height, full.width} : full);
    if (swapsSides(orientation)) std::swap(atLeast.width, atLeast.height);

    const int wanted = std::min(full.width / std::max(1, atLeast.width),
                                full.height / std::max(1, atLeast.height));
    const int factor = std::max(wanted, 1 + std::max(full.width, full.height) / kLargestDrawnSide);
    const PixelSize reduced{std::max(1, full.width / factor), std::max(1, full.height / factor)};
    std::optional<Bitmap> bitmap = factor == 1 ? toBitmap(pixels) : reducedTo(reduced, pixels);
    if (!bitmap) return std::nullopt;
    bitmap->setNominalSize({static_cast<double>(full.width), static_cast<double>(full.height)});
    applyProfile(*bitmap, pixbuf.get(), file);
    return upright(std::move(*bitmap), orientation);
}

std::optional<Bytes> encodeTiff(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    const Resolution dots = dotsPerInch(bitmap);
    // Uncompressed, which every program reads: photographs would hardly shrink.
    return save(toPixbuf(bitmap, Alpha::straight), "tiff",
                {{"x-dpi", std::to_string(dots.across)},
                 {"y-dpi", std::to_string(dots.down)},
                 {"compression", "1"}});
}

std::optional<Bytes> encodeBmp(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    std::optional<Bytes> file = save(toPixbuf(bitmap, Alpha::overBlack), "bmp", {});
    if (file) stateResolution(*file, dotsPerInch(bitmap));
    return file;
}

}  // namespace tkv::desktop
