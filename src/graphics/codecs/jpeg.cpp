// libjpeg's header expects this one before it.
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "graphics/codecs/codecs.h"
#include "graphics/color_profile.h"
#include "graphics/orientation.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

/// The order in which a pixel word's bytes stand in memory.
constexpr J_COLOR_SPACE kPixels =
    std::endian::native == std::endian::little ? JCS_EXT_BGRA : JCS_EXT_ARGB;

/// Encoders write some ten scans. Each may cost a pass over the whole picture for a few bytes.
constexpr int kMostScans = 100;

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kIccMarker = JPEG_APP0 + 2;

/// libjpeg gives up by a call that must not return, and prints its warnings. Here it prints none,
/// and gives up by a jump out of the step that was run.
class Errors {
  public:
    /// To be called before the codec is created; the object must outlive it.
    template <typename Codec>
    void watch(Codec& codec) {
        codec.err = jpeg_std_error(&manager_);
        codec.client_data = this;
        manager_.error_exit = leave;
        manager_.output_message = [](j_common_ptr) {};
    }

    /// False when libjpeg gave up. The jump runs no destructors, so `step` must not have local
    /// objects with one, nor may what it calls.
    template <typename Step>
    bool run(const Step& step) {
        if (setjmp(exit_) != 0) return false;
        step();
        return true;
    }

  private:
    [[noreturn]] static void leave(j_common_ptr codec) {
        std::longjmp(static_cast<Errors*>(codec->client_data)->exit_, 1);
    }

    jpeg_error_mgr manager_{};
    std::jmp_buf exit_{};
};

using Buffer = std::unique_ptr<JOCTET, Releaser<std::free>>;

class Decoder {
  public:
    Decoder() = default;
    ~Decoder() { jpeg_destroy_decompress(&codec_); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    std::optional<Bitmap> decode(ByteView file, const NeededSize& needed);

  private:
    bool readHeader(ByteView file);
    int orientation() const;
    void readScansFor(PixelSize shown);
    bool knows(const jpeg_component_info& component, PixelSize shown) const;
    bool readRows(Bitmap& bitmap);
    void convertColors(Bitmap& bitmap);
    bool applyProfile(Bitmap& bitmap, ColorKind kind);

    Errors errors_;
    jpeg_decompress_struct codec_{};
    jpeg_progress_mgr progress_{};
};

void refuseManyScans(j_common_ptr codec) {
    if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > kMostScans) {
        codec->err->error_exit(codec);
    }
}

/// The file up to a marker segment that its end cuts short: libjpeg would take that for a fault,
/// and give up the scans before it.
ByteView wholeSegments(ByteView file) {
    std::size_t at = 0;
    while (at + 1 < file.size()) {
        if (file[at] != 0xFF) {
            const void* next = std::memchr(file.data() + at, 0xFF, file.size() - at);
            if (next == nullptr) return file;
            at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(next) - file.data());
            continue;
        }
        const unsigned marker = file[at + 1];
        const bool bare = marker <= 0x01 || (marker >= JPEG_RST0 && marker <= 0xD9);
        if (bare || marker == 0xFF) {  // No segment follows, or this is a fill byte.
            at += bare ? 2 : 1;
            continue;
        }
        if (file.size() - at < 4) return file.first(at);
        const std::size_t length = 2 + (std::size_t{file[at + 2]} << 8U | file[at + 3]);
        if (length > file.size() - at) return file.first(at);
        at += length;
    }
    return file;
}

bool Decoder::readHeader(ByteView file) {
    errors_.watch(codec_);
    return errors_.run([&] {
        jpeg_create_decompress(&codec_);
        progress_.progress_monitor = refuseManyScans;
        codec_.progress = &progress_;
        jpeg_mem_src(&codec_, file.data(), file.size());
        jpeg_save_markers(&codec_, kExifMarker, 0xFFFF);
        jpeg_save_markers(&codec_, kIccMarker, 0xFFFF);
        jpeg_read_header(&codec_, TRUE);
    });
}

int Decoder::orientation() const {
    for (const jpeg_marker_struct* marker = codec_.marker_list; marker != nullptr;
         marker = marker->next) {
        if (marker->marker != kExifMarker) continue;
        const int orientation = exifOrientation({marker->data, marker->data_length});
        if (orientation != 1) return orientation;
    }
    return 1;
}

/// The size at `eighths` of the full one; libjpeg rounds up.
PixelSize reducedSize(PixelSize full, int eighths) {
    return {(full.width * eighths + 7) / 8, (full.height * eighths + 7) / 8};
}

/// Of a progressive file all DCT coefficients of the full size are kept until its last scan, at
/// whatever size it is shown.
bool canHoldCoefficients(const jpeg_decompress_struct& codec) {
    return !codec.progressive_mode ||
           std::int64_t{codec.image_width} * codec.image_height * codec.num_components <=
               kMostPixels;
}

int smallestEighths(PixelSize full, PixelSize needed) {
    int eighths = 1;
    while (eighths < 8) {
        const PixelSize reduced = reducedSize(full, eighths);
        if (reduced.width >= needed.width && reduced.height >= needed.height) break;
        ++eighths;
    }
    const int longest = std::max(full.width, full.height);
    return longest > kLargestDrawnSide ? std::min(eighths, 7) : eighths;
}

std::optional<Bitmap> Decoder::decode(ByteView file, const NeededSize& needed) {
    // A file cut off before its first scan has nothing to show.
    if (!readHeader(wholeSegments(file)) || codec_.src->bytes_in_buffer == 0) return std::nullopt;

    const int turn = orientation();
    const PixelSize full{static_cast<int>(codec_.image_width),
                         static_cast<int>(codec_.image_height)};
    PixelSize atLeast = needed(swapsSides(turn) ? PixelSize{full.height, full.width} : full);
    if (swapsSides(turn)) std::swap(atLeast.width, atLeast.height);
    const int eighths = smallestEighths(full, atLeast);
    if (!canHold(full, reducedSize(full, eighths)) || !canHoldCoefficients(codec_)) {
        return std::nullopt;
    }

    const bool inks = codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK;
    codec_.scale_num = static_cast<unsigned>(eighths);
    codec_.scale_denom = 8;
    codec_.out_color_space = inks ? JCS_CMYK : kPixels;
    // A progressive file is read scan by scan, but only where some scans can be spared: otherwise
    // the library does better by itself.
    codec_.buffered_image = static_cast<boolean>(codec_.progressive_mode && eighths < 8);
    if (!errors_.run([&] {
            jpeg_start_decompress(&codec_);
            if (codec_.buffered_image) readScansFor(atLeast);
        })) {
        return std::nullopt;
    }
    std::optional<Bitmap> bitmap = Bitmap::create(
        {static_cast<int>(codec_.output_width), static_cast<int>(codec_.output_height)});
    if (!bitmap || !readRows(*bitmap)) return std::nullopt;
    bitmap->setNominalSize({static_cast<double>(full.width), static_cast<double>(full.height)});
    convertColors(*bitmap);
    return upright(std::move(*bitmap), turn);
}

/// Where each DCT coefficient of a block stands in a file, by vertical and horizontal frequency
/// (ITU-T T.81, figure 5).
// clang-format off
constexpr std::array<std::array<std::size_t, DCTSIZE>, DCTSIZE> kZigzag{{
    { 0,  1,  5,  6, 14, 15, 27, 28},
    { 2,  4,  7, 13, 16, 26, 29, 42},
    { 3,  8, 12, 17, 25, 30, 41, 43},
    { 9, 11, 18, 24, 31, 40, 44, 53},
    {10, 19, 23, 32, 39, 45, 52, 54},
    {20, 22, 33, 38, 46, 51, 55, 60},
    {21, 34, 37, 47, 50, 56, 59, 61},
    {35, 36, 48, 49, 57, 58, 62, 63},
}};
// clang-format on

/// Whether the scans so far hold the lowest DCT coefficients of a component's blocks, as many as
/// its share in a picture of `shown` pixels needs; their last bit may be missing.
bool Decoder::knows(const jpeg_component_info& component, PixelSize shown) const {
    const auto perBlock = [](int pixels, JDIMENSION blocks) {
        return (pixels + static_cast<int>(blocks) - 1) / static_cast<int>(blocks);
    };
    const auto frequencies = static_cast<std::size_t>(std::min(
        component.DCT_scaled_size, std::max({1, perBlock(shown.width, component.width_in_blocks),
                                             perBlock(shown.height, component.height_in_blocks)})));
    // Colours stored at half the size may be shown larger than they are: nothing of them is spared.
    if (frequencies > DCTSIZE) return false;
    const int* missingBits = codec_.coef_bits[component.component_index];
    for (std::size_t vertical = 0; vertical < frequencies; ++vertical) {
        for (std::size_t horizontal = 0; horizontal < frequencies; ++horizontal) {
            const int missing = missingBits[kZigzag[vertical][horizontal]];
            if (missing < 0 || missing > 1) return false;
        }
    }
    return true;
}

/// Reads the scans that a picture of `shown` pixels needs, and makes them the output. To be run as
/// a step.
void Decoder::readScansFor(PixelSize shown) {
    // What is missing is not to be guessed from the blocks around: it would not be shown.
    codec_.do_block_smoothing = FALSE;
    const auto knowsAll = [&] {
        return std::all_of(codec_.comp_info, codec_.comp_info + codec_.num_components,
                           [&](const auto& component) { return knows(component, shown); });
    };
    int status = JPEG_SUSPENDED;
    do {
        status = jpeg_consume_input(&codec_);
    } while (status != JPEG_REACHED_EOI && !(status == JPEG_SCAN_COMPLETED && knowsAll()));
    jpeg_start_output(&codec_, codec_.input_scan_number);
}

bool Decoder::readRows(Bitmap& bitmap) {
    return errors_.run([&] {
        while (codec_.output_scanline < codec_.output_height) {
            auto* row =
                reinterpret_cast<JSAMPROW>(bitmap.row(static_cast<int>(codec_.output_scanline)));
            jpeg_read_scanlines(&codec_, &row, 1);
        }
    });
}

/// To sRGB. Four inks take as many bytes as a pixel, so the rows hold them until here.
void Decoder::convertColors(Bitmap& bitmap) {
    const bool inks = codec_.out_color_space == JCS_CMYK;
    // Adobe's programs write the inks inverted, and nearly all such files are theirs.
    const std::uint32_t inversion = codec_.saw_Adobe_marker ? 0xFFFFFFFF : 0;
    const auto forEachPixel = [&](const auto& change) {
        for (int y = 0; y < bitmap.height(); ++y)
            std::for_each_n(bitmap.row(y), bitmap.width(), change);
    };
    if (inks) forEachPixel([=](std::uint32_t& pixel) { pixel ^= inversion; });
    const ColorKind kind = inks                         ? ColorKind::inks
                           : codec_.num_components == 1 ? ColorKind::grey
                                                        : ColorKind::rgb;
    if (applyProfile(bitmap, kind) || !inks) return;
    forEachPixel([](std::uint32_t& pixel) {
        const auto amounts = std::bit_cast<std::array<std::uint8_t, 4>>(pixel);
        pixel = pixelOfInks(amounts[0], amounts[1], amounts[2], amounts[3]);
    });
}

bool Decoder::applyProfile(Bitmap& bitmap, ColorKind kind) {
    JOCTET* profile = nullptr;
    unsigned length = 0;
    errors_.run([&] { jpeg_read_icc_profile(&codec_, &profile, &length); });
    const Buffer owner(profile);
    return profile != nullptr && convertToSrgb(bitmap, {profile, length}, kind);
}

class Encoder {
  public:
    Encoder() = default;
    ~Encoder() { jpeg_destroy_compress(&codec_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    std::optional<Bytes> encode(const Bitmap& bitmap, std::optional<float> factor);

  private:
    void setUp(const Bitmap& bitmap, std::optional<float> factor);

    Errors errors_;
    jpeg_compress_struct codec_{};
};

void Encoder::setUp(const Bitmap& bitmap, std::optional<float> factor) {
    codec_.image_width = static_cast<JDIMENSION>(bitmap.width());
    codec_.image_height = static_cast<JDIMENSION>(bitmap.height());
    codec_.input_components = 4;
    codec_.in_color_space = kPixels;
    jpeg_set_defaults(&codec_);
    const Resolution dots = dotsPerInch(bitmap);
    codec_.density_unit = 1;
    codec_.X_density = static_cast<UINT16>(dots.across);
    codec_.Y_density = static_cast<UINT16>(dots.down);
    jpeg_set_quality(&codec_, factor ? static_cast<int>(std::lround(100 * *factor)) : 75, TRUE);
    if (factor && *factor >= 0.95F) {
        codec_.comp_info[0].h_samp_factor = 1;
        codec_.comp_info[0].v_samp_factor = 1;
    }
}

std::optional<Bytes> Encoder::encode(const Bitmap& bitmap, std::optional<float> factor) {
    unsigned char* data = nullptr;
    unsigned long length = 0;
    errors_.watch(codec_);
    if (!errors_.run([&] {
            jpeg_create_compress(&codec_);
            jpeg_mem_dest(&codec_, &data, &length);
        })) {
        return std::nullopt;
    }
    const bool done = errors_.run([&] {
        setUp(bitmap, factor);
        jpeg_start_compress(&codec_, TRUE);
        while (codec_.next_scanline < codec_.image_height) {
            auto* row = reinterpret_cast<JSAMPROW>(
                const_cast<std::uint32_t*>(bitmap.row(static_cast<int>(codec_.next_scanline))));
            jpeg_write_scanlines(&codec_, &row, 1);
        }
        jpeg_finish_compress(&codec_);
    });
    // The buffer moves as it grows, and `data` follows only here.
    if (!done) codec_.dest->term_destination(&codec_);
    const Buffer owner(data);
    if (!done) return std::nullopt;
    return Bytes(data, data + length);
}

}  // namespace

bool isJpeg(ByteView file) {
    return file.size() >= 3 && file[0] == 0xFF && file[1] == 0xD8 && file[2] == 0xFF;
}

std::optional<Bitmap> decodeJpeg(ByteView file, const NeededSize& needed) {
    return Decoder().decode(file, needed);
}

std::optional<Bytes> encodeJpeg(const Bitmap& bitmap, std::optional<float> factor) {
    return Encoder().encode(bitmap, factor);
}

}  // namespace tkv
