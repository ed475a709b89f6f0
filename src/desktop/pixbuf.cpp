#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "desktop/embedded.h"
#include "desktop/functions.h"
#include "desktop/pixbuf_readers.h"
#include "desktop/tiff.h"
#include "graphics/color_profile.h"
#include "graphics/orientation.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv::desktop {

namespace {

using Pixbuf = std::unique_ptr<GdkPixbuf, Releaser<g_object_unref>>;
using PixbufLoader = std::unique_ptr<GdkPixbufLoader, Releaser<g_object_unref>>;
using Buffer = std::unique_ptr<guint8, Releaser<g_free>>;

/// These readers decode every pixel, at whatever size the picture is shown, and a file of a few
/// bytes can ask for any number.
constexpr std::int64_t kMostPixels = 80'000'000;

/// The bytes that a reader holds per pixel, one for a palette index included.
constexpr std::int64_t kPixel = 5;

/// Formats are recognised by this many leading bytes or not at all.
constexpr std::size_t kHead = 4096;

// ---- Decoding

/// What the loader's signals report while it reads.
struct Progress {
    const PixbufReader& reader;
    const NeededSize& needed;
    std::int64_t fileBytes = 0;
    bool tooLarge = false;
    bool hasPixels = false;
};

/// Suppresses the warnings that loaders write about damaged files to the standard error stream,
/// which is an interface.
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

/// All readers decode at full size; only afterwards can the picture be reduced.
bool isTooLarge(PixelSize size, std::int64_t fileBytes) {
    return pixelsOf(size) > kMostPixels || !canHold(size, fileBytes + kPixel * pixelsOf(size));
}

void refuseTooLarge(GdkPixbufLoader* loader, int width, int height, Progress* progress) {
    if (!isTooLarge({width, height}, progress->fileBytes)) return;
    progress->tooLarge = true;
    progress->needed({width, height});
    // Most readers stop at this, before they allocate.
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

/// Of a truncated file, uninitialised memory would show. Readers that do not load progressively
/// report a picture only when it is complete.
void clear(GdkPixbufLoader* loader, Progress* progress) {
    if (progress->reader.comesRowByRow) gdk_pixbuf_fill(gdk_pixbuf_loader_get_pixbuf(loader), 0);
}

void notePixels(GdkPixbufLoader*, int, int, int, int, Progress* progress) {
    progress->hasPixels = true;
}

Pixbuf loadTiff(ByteView file, const NeededSize& needed) {
    const std::optional<TiffPixels> tiff = decodeTiff(file, [&](PixelSize size) {
        if (!isTooLarge(size, std::ssize(file))) return true;
        needed(size);
        return false;
    });
    if (!tiff) return nullptr;
    const auto [width, height] = tiff->size;
    Pixbuf pixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, width, height));
    if (!pixbuf) return pixbuf;
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf.get()));
    guint8* row = gdk_pixbuf_get_pixels(pixbuf.get());
    const std::uint32_t* from = tiff->words.data();
    for (int y = 0; y < height; ++y, row += rowBytes) {
        guint8* at = row;
        for (int x = 0; x < width; ++x, at += 4, ++from) {
            const std::uint32_t pixel = straight(
                pixelOf(*from >> 24U, *from & 0xFFU, *from >> 8U & 0xFFU, *from >> 16U & 0xFFU));
            at[0] = static_cast<guint8>(redOf(pixel));
            at[1] = static_cast<guint8>(greenOf(pixel));
            at[2] = static_cast<guint8>(blueOf(pixel));
            at[3] = static_cast<guint8>(alphaOf(pixel));
        }
    }
    gdk_pixbuf_set_option(pixbuf.get(), "orientation", std::to_string(tiff->orientation).c_str());
    return pixbuf;
}

Pixbuf load(ByteView file, const PixbufReader& reader, const NeededSize& needed) {
    // The GIF reader walks over the whole picture after each write, and moves the rest of its
    // buffer every few bytes: much smaller or larger writes take it ten times as long.
    constexpr std::size_t kPiece = std::size_t{1} << 20U;
    const Silence silence;
    Progress progress{reader, needed, std::ssize(file)};
    const PixbufLoader loader(
        gdk_pixbuf_loader_new_with_type(std::string(reader.name).c_str(), nullptr));
    if (!loader) return nullptr;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(refuseTooLarge), &progress);
    g_signal_connect(loader.get(), "area-prepared", G_CALLBACK(clear), &progress);
    g_signal_connect(loader.get(), "area-updated", G_CALLBACK(notePixels), &progress);
    bool reads = true;
    // The head has most pictures' size, which may be rejected.
    std::size_t head = kHead;
    for (ByteView rest : reader.parts == nullptr ? std::vector{file} : reader.parts(file)) {
        while (reads && !progress.tooLarge && !rest.empty()) {
            const ByteView piece = rest.first(std::min(head > 0 ? head : kPiece, rest.size()));
            reads = gdk_pixbuf_loader_write(loader.get(), piece.data(), piece.size(), nullptr);
            rest = rest.subspan(piece.size());
            head -= std::min(head, piece.size());
        }
    }
    const bool isWhole = gdk_pixbuf_loader_close(loader.get(), nullptr) && reads;
    // Not every loader that returns a complete picture emits "area-updated".
    progress.hasPixels |= isWhole && !reader.comesRowByRow;
    GdkPixbuf* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (pixbuf == nullptr || progress.tooLarge || !progress.hasPixels) return nullptr;
    return Pixbuf(GDK_PIXBUF(g_object_ref(pixbuf)));
}

/// Premultiplied; each pixel the mean of `factor` x `factor`, fewer at the right and lower edges.
std::optional<Bitmap> toBitmap(const GdkPixbuf* pixbuf, int factor) {
    const PixelSize full{gdk_pixbuf_get_width(pixbuf), gdk_pixbuf_get_height(pixbuf)};
    const auto reduced = [factor](int pixels) { return (pixels + factor - 1) / factor; };
    std::optional<Bitmap> bitmap = Bitmap::create({reduced(full.width), reduced(full.height)});
    if (!bitmap) return std::nullopt;
    bitmap->setExtent({0, 0, static_cast<double>(full.width) / factor,
                       static_cast<double>(full.height) / factor});
    bitmap->setAveraged(factor);
    // RGB, or RGBA with straight alpha.
    const bool alpha = gdk_pixbuf_get_has_alpha(pixbuf);
    const std::ptrdiff_t step = alpha ? 4 : 3;
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf));
    const guint8* row = gdk_pixbuf_read_pixels(pixbuf);
    const auto pixelAt = [=](const guint8* from) {
        return premultiplied(pixelOf(alpha ? from[3] : 255U, from[0], from[1], from[2]));
    };
    std::vector<std::array<unsigned, 4>> sums(static_cast<std::size_t>(bitmap->width()));
    for (int y = 0; y < full.height; ++y, row += rowBytes) {
        std::uint32_t* to = bitmap->row(y / factor);
        const guint8* from = row;
        if (factor == 1) {
            for (int x = 0; x < full.width; ++x, from += step)
                to[x] = pixelAt(from);
            continue;
        }
        for (int x = 0; x < full.width;) {
            std::array<unsigned, 4>& sum = sums[static_cast<std::size_t>(x / factor)];
            for (const int end = std::min(x + factor, full.width); x < end; ++x, from += step) {
                const std::uint32_t pixel = pixelAt(from);
                sum[0] += alphaOf(pixel);
                sum[1] += redOf(pixel);
                sum[2] += greenOf(pixel);
                sum[3] += blueOf(pixel);
            }
        }
        if (y % factor != factor - 1 && y != full.height - 1) continue;
        for (std::size_t x = 0; x < sums.size(); ++x) {
            const int left = static_cast<int>(x) * factor;
            const auto count =
                static_cast<unsigned>((y % factor + 1) * std::min(factor, full.width - left));
            // Halves are rounded up and down in turn, or the picture would turn lighter.
            const auto odd = static_cast<unsigned>((static_cast<int>(x) + y / factor) % 2);
            const unsigned half = (count - odd) / 2;
            const auto mean = [&](std::size_t at) { return (sums[x][at] + half) / count; };
            to[x] = pixelOf(mean(0), mean(1), mean(2), mean(3));
            sums[x] = {};
        }
    }
    return bitmap;
}

void applyProfile(Bitmap& bitmap, GdkPixbuf* pixbuf, ByteView file, const PixbufReader& reader) {
    const ColorKind kind = storedColors(file);
    if (kind == ColorKind::inks) return;  // The loader has converted them to RGB.
    if (reader.profile != nullptr) {
        if (const Bytes profile = reader.profile(file); !profile.empty())
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
    return text != nullptr && *text >= '1' && *text <= '8' ? *text - '0' : 1;
}

// ---- Encoding

/// What shows over black.
Pixbuf toOpaquePixbuf(const Bitmap& bitmap) {
    Pixbuf pixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, bitmap.width(), bitmap.height()));
    if (!pixbuf) return pixbuf;
    guint8* first = gdk_pixbuf_get_pixels(pixbuf.get());
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf.get()));
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::uint32_t* from = bitmap.row(y);
        guint8* to = first + static_cast<std::size_t>(y) * rowBytes;
        for (int x = 0; x < bitmap.width(); ++x) {
            *to++ = static_cast<guint8>(redOf(from[x]));
            *to++ = static_cast<guint8>(greenOf(from[x]));
            *to++ = static_cast<guint8>(blueOf(from[x]));
        }
    }
    return pixbuf;
}

/// Writes the pixels per metre into the header of a BMP file; the library leaves them out.
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

/// The bytes for the file's data, and those that its reader will allocate as far as is known.
std::int64_t bytesFor(ByteView file, const PixbufReader& reader) {
    // Readers that need the whole file buffer it, too.
    return std::ssize(file) +
           (reader.bytesFor == nullptr ? 0 : std::ssize(file) + reader.bytesFor(file));
}

}  // namespace

bool isReadByPixbuf(ByteView head) {
    return pixbufReaderFor(head) != nullptr;
}

std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed) {
    const PixbufReader* const reader = pixbufReaderFor(file.first(std::min(file.size(), kHead)));
    if (reader == nullptr || bytesFor(file, *reader) > kMostBytes) return std::nullopt;
    if (reader->isBounded != nullptr && !reader->isBounded(file)) return std::nullopt;
    const Bytes first = firstOfWebp(file);
    const Pixbuf pixbuf = reader->name == "tiff"
                              ? loadTiff(file, needed)
                              : load(first.empty() ? file : ByteView(first), *reader, needed);
    if (!pixbuf) return std::nullopt;
    const PixelSize full{gdk_pixbuf_get_width(pixbuf.get()), gdk_pixbuf_get_height(pixbuf.get())};
    const int orientation = orientationOf(pixbuf.get(), file);
    PixelSize atLeast = needed(swapsSides(orientation) ? PixelSize{full.height, full.width} : full);
    if (swapsSides(orientation)) std::swap(atLeast.width, atLeast.height);

    // Half as many pixels again a side: here a finer picture costs little.
    const auto times = [](int pixels, int least) { return pixels * 2 / (3 * std::max(1, least)); };
    const int factor =
        std::max(1, std::min(times(full.width, atLeast.width), times(full.height, atLeast.height)));
    // The bitmap, and the upright one.
    const std::int64_t bytes =
        std::int64_t{8} * pixelsOf({full.width / factor + 1, full.height / factor + 1});
    if (!canHold(full, std::ssize(file) + bytes +
                           static_cast<std::int64_t>(gdk_pixbuf_get_byte_length(pixbuf.get())))) {
        return std::nullopt;
    }
    std::optional<Bitmap> bitmap = toBitmap(pixbuf.get(), factor);
    if (!bitmap) return std::nullopt;
    bitmap->setNominalSize({static_cast<double>(full.width), static_cast<double>(full.height)});
    applyProfile(*bitmap, pixbuf.get(), file, *reader);
    return upright(std::move(*bitmap), orientation);
}

std::optional<Bytes> encodeBmp(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    const Pixbuf pixbuf = toOpaquePixbuf(bitmap);
    if (!pixbuf) return std::nullopt;
    std::array<char*, 1> noOptions{};
    gchar* data = nullptr;
    gsize length = 0;
    const bool isSaved = gdk_pixbuf_save_to_bufferv(pixbuf.get(), &data, &length, "bmp",
                                                    noOptions.data(), noOptions.data(), nullptr);
    const Buffer owner(reinterpret_cast<guint8*>(data));
    if (!isSaved) return std::nullopt;
    Bytes file(owner.get(), owner.get() + length);
    stateResolution(file, dotsPerInch(bitmap));
    return file;
}

}  // namespace tkv::desktop
