// libjpeg's header expects this one before it.
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <csetjmp>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/codecs/jpeg_scans.h"
#include "graphics/color_profile.h"
#include "graphics/orientation.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

/// The byte order of a pixel word in memory.
constexpr J_COLOR_SPACE kColorSpace =
    std::endian::native == std::endian::little ? JCS_EXT_BGRA : JCS_EXT_ARGB;

/// Encoders write some ten scans. A scan of a few bytes may cost a pass over the whole picture, so
/// that the blocks of all scans together have a limit too: some seconds' work, or six scans of the
/// largest picture whose coefficients fit into memory.
constexpr int kMostScans = 100;
constexpr std::int64_t kMostBlocks = 48'000'000;

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kIccMarker = JPEG_APP0 + 2;

/// libjpeg's error_exit must not return, and by default it prints warnings. This error manager
/// prints none, and leaves the running step by longjmp.
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

    /// False after an error. longjmp runs no destructors, so neither `step` nor what it calls may
    /// have local objects with one.
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

/// Counts scans and their blocks while they are read, and raises an error beyond the limits.
class ScanCount {
  public:
    /// To be called before the header is read; the object must outlive the codec.
    void watch(jpeg_decompress_struct& codec) {
        *this = {};
        manager_.progress_monitor = count;
        codec.progress = &manager_;
    }

  private:
    static void count(j_common_ptr common) {
        const auto codec = reinterpret_cast<j_decompress_ptr>(common);
        auto& self = *reinterpret_cast<ScanCount*>(common->progress);
        if (self.last_ == codec->input_scan_number) return;
        self.last_ = codec->input_scan_number;
        for (const jpeg_component_info* info :
             std::span(codec->cur_comp_info).first(static_cast<unsigned>(codec->comps_in_scan))) {
            self.blocks_ += std::int64_t{info->width_in_blocks} * info->height_in_blocks;
        }
        if (self.last_ > kMostScans || self.blocks_ > kMostBlocks) common->err->error_exit(common);
    }

    jpeg_progress_mgr manager_{};  // First member, so that libjpeg's pointer casts back.
    int last_ = 0;
    std::int64_t blocks_ = 0;
};

using Buffer = std::unique_ptr<JOCTET, Releaser<std::free>>;

class Decoder {
  public:
    Decoder();
    ~Decoder() { jpeg_destroy_decompress(&codec_); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    std::optional<Bitmap> decode(ByteView file, const NeededSize& needed);

  private:
    bool readHeader(ByteView file);
    int orientation() const;
    Bytes withoutSparedScans(ByteView file);
    bool readRows(Bitmap& bitmap);
    void convertColors(Bitmap& bitmap);
    bool applyProfile(Bitmap& bitmap, ColorKind kind);

    Errors errors_;
    jpeg_decompress_struct codec_{};
    ScanCount scans_;
};

Decoder::Decoder() {
    errors_.watch(codec_);
}

bool Decoder::readHeader(ByteView file) {
    return errors_.run([&] {
        if (codec_.global_state == 0) {
            jpeg_create_decompress(&codec_);
        } else {
            jpeg_abort_decompress(&codec_);
        }
        scans_.watch(codec_);
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

/// The size at 1/`divisor` of the full one; libjpeg rounds up.
PixelSize reducedSize(PixelSize full, int divisor) {
    return {(full.width + divisor - 1) / divisor, (full.height + divisor - 1) / divisor};
}

/// The bytes of the DCT coefficients: of a multi-scan file libjpeg buffers all of them until the
/// last scan, at whatever size the picture is shown.
std::int64_t coefficientBytes(jpeg_decompress_struct& codec) {
    if (!jpeg_has_multiple_scans(&codec)) return 0;
    std::int64_t blocks = 0;
    for (const jpeg_component_info& info :
         std::span(codec.comp_info, static_cast<unsigned>(codec.num_components))) {
        blocks += std::int64_t{info.width_in_blocks} * info.height_in_blocks;
    }
    return blocks * DCTSIZE2 * 2;
}

/// 8, 4, 2 or 1: at these scales each pixel is a box average. At those between, libjpeg drops
/// frequencies, and edges ring.
int largestDivisor(PixelSize full, PixelSize needed) {
    int divisor = DCTSIZE;
    while (divisor > 1) {
        const PixelSize reduced = reducedSize(full, divisor);
        if (reduced.width >= needed.width && reduced.height >= needed.height) break;
        divisor /= 2;
    }
    return divisor;
}

std::optional<Bitmap> Decoder::decode(ByteView file, const NeededSize& needed) {
    file = wholeJpegSegments(file);
    const Bytes lighter = withoutSurplusMetadata(file);
    if (!lighter.empty()) file = lighter;
    // A file truncated before its first scan has nothing to show.
    if (!readHeader(file) || codec_.src->bytes_in_buffer == 0) return std::nullopt;

    const int turn = orientation();
    const PixelSize full{static_cast<int>(codec_.image_width),
                         static_cast<int>(codec_.image_height)};
    PixelSize atLeast = needed(swapsSides(turn) ? PixelSize{full.height, full.width} : full);
    if (swapsSides(turn)) std::swap(atLeast.width, atLeast.height);
    const int divisor = largestDivisor(full, atLeast);
    // A copy of the file without some scans, the coefficients, a bitmap and the upright one.
    if (!canHold(full, 2 * std::ssize(file) + coefficientBytes(codec_) +
                           std::int64_t{8} * pixelsOf(reducedSize(full, divisor)))) {
        return std::nullopt;
    }

    const bool inks = codec_.jpeg_color_space == JCS_CMYK || codec_.jpeg_color_space == JCS_YCCK;
    const auto setUp = [&] {
        codec_.scale_num = 1;
        codec_.scale_denom = static_cast<unsigned>(divisor);
        codec_.out_color_space = inks ? JCS_CMYK : kColorSpace;
    };
    setUp();
    const Bytes shorter = withoutSparedScans(file);
    if (!shorter.empty()) {
        if (!readHeader(shorter)) return std::nullopt;
        setUp();
        // No interblock smoothing: the coefficients that it would estimate are the invisible ones.
        codec_.do_block_smoothing = FALSE;
    }
    if (!errors_.run([&] { jpeg_start_decompress(&codec_); })) return std::nullopt;
    std::optional<Bitmap> bitmap = Bitmap::create(
        {static_cast<int>(codec_.output_width), static_cast<int>(codec_.output_height)});
    if (!bitmap || !readRows(*bitmap)) return std::nullopt;
    bitmap->setNominalSize({static_cast<double>(full.width), static_cast<double>(full.height)});
    bitmap->setExtent({0, 0, static_cast<double>(full.width) / divisor,
                       static_cast<double>(full.height) / divisor});
    bitmap->setAveraged(divisor);
    convertColors(*bitmap);
    return upright(std::move(*bitmap), turn);
}

/// The file without the scans that are invisible at the size that is set up; empty when there are
/// none.
Bytes Decoder::withoutSparedScans(ByteView file) {
    // Y (or grey), Cb, Cr, K.
    constexpr std::array<std::array<double, 3>, 4> kDifferences{
        {{1, 1, 1}, {0, 0.344, 1.772}, {1.402, 0.714, 0}, {1, 1, 1}}};
    constexpr std::array<std::array<double, 3>, 4> kPrimaries{
        {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}}};
    const bool primaries =
        codec_.jpeg_color_space == JCS_RGB || codec_.jpeg_color_space == JCS_CMYK;
    const std::span all(codec_.comp_info, static_cast<std::size_t>(codec_.num_components));
    if (!codec_.progressive_mode || codec_.scale_denom == 1 || all.size() > kPrimaries.size() ||
        !errors_.run([&] { jpeg_calc_output_dimensions(&codec_); })) {
        return {};
    }
    std::vector<JpegComponent> components;
    for (const jpeg_component_info& info : all) {
        JpegComponent component{static_cast<unsigned>(info.component_id), info.DCT_scaled_size};
        const JQUANT_TBL* table = codec_.quant_tbl_ptrs[info.quant_tbl_no];
        if (table != nullptr) std::ranges::copy(table->quantval, component.steps.begin());
        component.levels = (primaries ? kPrimaries : kDifferences)[components.size()];
        components.push_back(component);
    }
    return tkv::withoutSparedScans(file, components);
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

/// To sRGB. CMYK takes as many bytes as a pixel, so the rows hold it until here.
void Decoder::convertColors(Bitmap& bitmap) {
    const bool inks = codec_.out_color_space == JCS_CMYK;
    // Adobe's programs write inverted CMYK, and nearly all such files are theirs.
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

class JpegEncoder {
  public:
    JpegEncoder() = default;
    ~JpegEncoder() { jpeg_destroy_compress(&codec_); }
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    std::optional<Bytes> encode(const Bitmap& bitmap, std::optional<float> factor);

  private:
    void setUp(const Bitmap& bitmap, std::optional<float> factor);

    Errors errors_;
    jpeg_compress_struct codec_{};
};

void JpegEncoder::setUp(const Bitmap& bitmap, std::optional<float> factor) {
    codec_.image_width = static_cast<JDIMENSION>(bitmap.width());
    codec_.image_height = static_cast<JDIMENSION>(bitmap.height());
    codec_.input_components = 4;
    codec_.in_color_space = kColorSpace;
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

std::optional<Bytes> JpegEncoder::encode(const Bitmap& bitmap, std::optional<float> factor) {
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
    // The buffer is reallocated as it grows, and `data` is updated only here.
    if (!done) codec_.dest->term_destination(&codec_);
    const Buffer owner(data);
    if (!done) return std::nullopt;
    return Bytes(data, data + length);
}

}  // namespace

bool isJpeg(ByteView head) {
    return head.size() >= 2 && head[0] == 0xFF && head[1] == 0xD8;
}

std::optional<Bitmap> decodeJpeg(ByteView file, const NeededSize& needed) {
    return Decoder().decode(file, needed);
}

std::optional<Bytes> encodeJpeg(const Bitmap& bitmap, std::optional<float> factor) {
    return JpegEncoder().encode(bitmap, factor);
}

}  // namespace tkv
