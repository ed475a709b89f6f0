#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "graphics/codecs/codecs.h"
#include "graphics/codecs/jpeg2000_boxes.h"
#include "graphics/codecs/jpeg2000_limits.h"
#include "graphics/codecs/jpeg2000_stream.h"
#include "graphics/color_profile.h"
#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

constexpr std::array<std::uint8_t, 12> kBoxedStart{0,   0,   0,    12,   'j',  'P',
                                                   ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr std::array<std::uint8_t, 4> kBareStart{0xFF, 0x4F, 0xFF, 0x51};

/// CMYK and alpha; a file may state thousands of components, only to exhaust memory.
constexpr unsigned kMostComponents = 5;

/// A picture that so few bytes cannot code is rejected before any allocation: solid colours
/// compress to a byte for some thousand samples. So is one of so many samples, after reduction,
/// that a few bytes for each code block could keep the decoder busy for long.
constexpr std::int64_t kSamplesFreely = 16'000'000, kSamplesPerByte = 4096;
constexpr std::int64_t kMostSamples = 32'000'000;

using Codec = std::unique_ptr<opj_codec_t, Releaser<opj_destroy_codec>>;
using Image = std::unique_ptr<opj_image_t, Releaser<opj_image_destroy>>;

struct DestroyInfo {
    void operator()(opj_codestream_info_v2_t* info) const { opj_destroy_cstr_info(&info); }
};

bool startsWith(ByteView file, ByteView start) {
    return file.size() >= start.size() && std::equal(start.begin(), start.end(), file.begin());
}

// ---- Decoding

/// One component of a picture, upsampled to its grid and scaled to 8 bits.
class Channel {
  public:
    Channel(const opj_image_comp_t& component, PixelSize picture)
        : component_(component),
          most_((std::int64_t{1} << component.prec) - 1),
          lift_(component.sgnd ? std::int64_t{1} << (component.prec - 1) : 0),
          scale_(((std::int64_t{255} << 32U) + most_ / 2) / most_),
          height_(picture.height) {
        columns_.reserve(static_cast<std::size_t>(picture.width));
        for (int x = 0; x < picture.width; ++x) {
            columns_.push_back(std::size_t{component.w} * static_cast<std::size_t>(x) /
                               static_cast<std::size_t>(picture.width));
        }
    }

    void startRow(int y) {
        const std::size_t row = std::size_t{component_.h} * static_cast<std::size_t>(y) /
                                static_cast<std::size_t>(height_);
        row_ = component_.data + row * component_.w;
    }

    unsigned at(int x) const {
        const std::int64_t value = row_[columns_[static_cast<std::size_t>(x)]] + lift_;
        constexpr std::int64_t kHalf = std::int64_t{1} << 31U;
        return static_cast<unsigned>((std::clamp<std::int64_t>(value, 0, most_) * scale_ + kHalf) >>
                                     32U);
    }

  private:
    const opj_image_comp_t& component_;
    std::int64_t most_;
    std::int64_t lift_;   // Level shift of signed samples.
    std::int64_t scale_;  // To 8 bits, in 1/2^32.
    int height_;
    std::vector<std::size_t> columns_;  // Components may be subsampled.
    const OPJ_INT32* row_ = nullptr;
};

using Colors = std::vector<Channel>;

std::uint32_t pixelOfGrey(const Colors& colors, int x) {
    const unsigned grey = colors[0].at(x);
    return pixelOf(255, grey, grey, grey);
}

std::uint32_t pixelOfRgb(const Colors& colors, int x) {
    return pixelOf(255, colors[0].at(x), colors[1].at(x), colors[2].at(x));
}

std::uint32_t pixelOfYcc(const Colors& colors, int x) {
    const double luma = colors[0].at(x);
    const double blueness = static_cast<double>(colors[1].at(x)) - 128;
    const double redness = static_cast<double>(colors[2].at(x)) - 128;
    const auto channel = [](double value) {
        return static_cast<unsigned>(std::clamp(value + 0.5, 0.0, 255.0));
    };
    return pixelOf(255, channel(luma + 1.402 * redness),
                   channel(luma - 0.344136 * blueness - 0.714136 * redness),
                   channel(luma + 1.772 * blueness));
}

std::uint32_t pixelOfInkColors(const Colors& colors, int x) {
    return pixelOfInks(colors[0].at(x), colors[1].at(x), colors[2].at(x), colors[3].at(x));
}

/// As a CMYK profile expects it.
std::uint32_t bareInks(const Colors& colors, int x) {
    std::array<std::uint8_t, 4> amounts{};
    for (std::size_t ink = 0; ink < amounts.size(); ++ink)
        amounts[ink] = static_cast<std::uint8_t>(colors[ink].at(x));
    return std::bit_cast<std::uint32_t>(amounts);
}

using PixelOf = std::uint32_t (*)(const Colors& colors, int x);

PixelOf colorModel(const opj_image_t& image, std::size_t colors) {
    if (colors < 3) return pixelOfGrey;
    if (image.color_space == OPJ_CLRSPC_CMYK && colors >= 4) return pixelOfInkColors;
    // Only chroma is ever subsampled.
    const bool coarser = image.comps[1].dx > image.comps[0].dx;
    return image.color_space == OPJ_CLRSPC_SYCC || coarser ? pixelOfYcc : pixelOfRgb;
}

/// The largest component's size at the reduction factor `halvings`.
PixelSize sizeAfter(const opj_image_t& image, unsigned halvings) {
    const auto side = [halvings](std::int64_t start, std::int64_t length) {
        const auto halved = [halvings](std::int64_t edge) {
            return (edge + (std::int64_t{1} << halvings) - 1) >> halvings;
        };
        return static_cast<int>(
            std::min<std::int64_t>(halved(start + length) - halved(start), kLargestSide + 1));
    };
    PixelSize size;
    for (const opj_image_comp_t& component : std::span(image.comps, image.numcomps)) {
        size.width = std::max(size.width, side(component.x0, component.w));
        size.height = std::max(size.height, side(component.y0, component.h));
    }
    return size;
}

/// Where the whole picture lies on its pixels: of every 2^halvings pixels of the reference grid one
/// is kept, at its own position.
PixelRect extentAfter(const opj_image_comp_t& component, PixelSize full, unsigned halvings) {
    const double step = std::exp2(halvings);
    const auto edge = [step](double position, double start) {
        return (start + position - 0.5) / step - std::ceil(start / step) + 0.5;
    };
    return {edge(0, component.x0), edge(0, component.y0), full.width / step, full.height / step};
}

using Info = std::unique_ptr<opj_codestream_info_v2_t, DestroyInfo>;

std::span<const opj_tccp_info_t> codingOf(const Info& info) {
    return {info->m_default_tile_info.tccp_info, info->nbcomps};
}

unsigned mostHalvings(const Info& info) {
    unsigned most = 32;
    for (const opj_tccp_info_t& component : codingOf(info))
        most = std::min(most, component.numresolutions - 1);
    return most;
}

void paint(Bitmap& bitmap, Colors& colors, PixelOf pixelOfColors) {
    for (int y = 0; y < bitmap.height(); ++y) {
        std::uint32_t* row = bitmap.row(y);
        for (Channel& channel : colors)
            channel.startRow(y);
        for (int x = 0; x < bitmap.width(); ++x)
            row[x] = pixelOfColors(colors, x);
    }
}

/// Opaque and in sRGB.
void paintColors(Bitmap& bitmap, const opj_image_t& image, Colors& colors) {
    const ByteView profile(image.icc_profile_buf, image.icc_profile_len);
    if (colors.size() >= 4) {
        // A file with a profile names no colour space itself: whether it is CMYK, the profile says.
        paint(bitmap, colors, bareInks);
        if (convertToSrgb(bitmap, profile, ColorKind::inks)) return;
    }
    paint(bitmap, colors, colorModel(image, colors.size()));
    convertToSrgb(bitmap, profile, colors.size() < 3 ? ColorKind::grey : ColorKind::rgb);
}

std::optional<Bitmap> toBitmap(const opj_image_t& image) {
    const PixelSize size = sizeAfter(image, 0);
    std::vector<Channel> colors;
    std::optional<Channel> alpha;
    bool multiplied = false;
    for (const opj_image_comp_t& component : std::span(image.comps, image.numcomps)) {
        if (component.data == nullptr || component.w == 0 || component.h == 0 ||
            component.prec < 1 || component.prec > 32) {
            return std::nullopt;
        }
        if (component.alpha == 0) {
            colors.emplace_back(component, size);
        } else if (!alpha) {
            alpha.emplace(component, size);
            multiplied = component.alpha == 2;
        }
    }
    std::optional<Bitmap> bitmap = Bitmap::create(size);
    if (!bitmap || colors.empty()) return std::nullopt;

    paintColors(*bitmap, image, colors);
    for (int y = 0; alpha && y < size.height; ++y) {
        std::uint32_t* row = bitmap->row(y);
        alpha->startRow(y);
        for (int x = 0; x < size.width; ++x) {
            const std::uint32_t pixel = (row[x] & 0xFFFFFFU) | alpha->at(x) << 24U;
            row[x] = multiplied ? premultiplied(straight(pixel)) : premultiplied(pixel);
        }
    }
    return bitmap;
}

std::optional<Bitmap> decode(ByteView file, const NeededSize& needed) {
    Jpeg2000Source source{file};
    const Codec codec(
        opj_create_decompress(startsWith(file, kBareStart) ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    const Jpeg2000Stream stream = readingStream(source);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t* header = nullptr;
    if (tileBytes(file) > kMostBytes / 2) return std::nullopt;
    if (!codec || !stream || !opj_setup_decoder(codec.get(), &parameters) ||
        !opj_decoder_set_strict_mode(codec.get(), canBeLenient() ? OPJ_FALSE : OPJ_TRUE)) {
        return std::nullopt;
    }
    const bool hasHeader = opj_read_header(stream.get(), codec.get(), &header);
    const Image image(header);
    const unsigned indexed = paletteColors(file);
    if (!hasHeader || std::max(image->numcomps, indexed) > kMostComponents) return std::nullopt;
    const PixelSize full = sizeAfter(*image, 0);
    const Info info(opj_get_cstr_info(codec.get()));
    if (!info || info->m_default_tile_info.tccp_info == nullptr) return std::nullopt;
    const std::int64_t overhead = std::ssize(file) + tileBytes(file) + structureBytes(*info, full);
    const PixelSize atLeast = needed(full);
    if (!canHold(full, overhead)) return std::nullopt;

    // Palette indices cannot be averaged.
    unsigned halvings = indexed > 0 ? 0 : mostHalvings(info);
    for (; halvings > 0; --halvings) {
        const PixelSize reduced = sizeAfter(*image, halvings);
        if (reduced.width >= atLeast.width && reduced.height >= atLeast.height) break;
    }
    const std::int64_t components = image->numcomps + indexed;
    const auto samples = [&](unsigned times) {
        return components * pixelsOf(sizeAfter(*image, times));
    };
    if (samples(0) > kSamplesFreely + kSamplesPerByte * std::ssize(file)) return std::nullopt;
    const PixelSize reduced = sizeAfter(*image, halvings);
    // The wavelet's lowpass amplifies its own uppermost octave by up to an eighth, which is to lie
    // beyond what is shown.
    const bool isFine = reduced.width >= 3 * atLeast.width && reduced.height >= 3 * atLeast.height;
    if (halvings > 0 && !isFine && samples(halvings - 1) <= kMostSamples) --halvings;
    // The library holds planar components of four bytes a sample, both of the picture and of a
    // tile.
    const std::int64_t bytes =
        overhead + 8 * samples(halvings) + 4 * pixelsOf(sizeAfter(*image, halvings));
    if (samples(halvings) > kMostSamples || !canHold(full, bytes) ||
        !opj_set_decoded_resolution_factor(codec.get(), halvings) ||
        !opj_decode(codec.get(), stream.get(), image.get())) {
        return std::nullopt;
    }
    std::optional<Bitmap> bitmap = toBitmap(*image);
    if (!bitmap) return std::nullopt;
    bitmap->setNominalSize({static_cast<double>(full.width), static_cast<double>(full.height)});
    bitmap->setExtent(extentAfter(image->comps[0], full, halvings));
    return bitmap;
}

// ---- Encoding

bool isOpaque(const Bitmap& bitmap) {
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::uint32_t* row = bitmap.row(y);
        if (!std::all_of(row, row + bitmap.width(), [](auto p) { return alphaOf(p) == 255; })) {
            return false;
        }
    }
    return true;
}

Image toImage(const Bitmap& bitmap) {
    const auto width = static_cast<OPJ_UINT32>(bitmap.width());
    const auto height = static_cast<OPJ_UINT32>(bitmap.height());
    const unsigned components = isOpaque(bitmap) ? 3 : 4;
    std::array<opj_image_cmptparm_t, 4> layout{};
    for (opj_image_cmptparm_t& component : layout) {
        component.dx = component.dy = 1;
        component.w = width;
        component.h = height;
        component.prec = 8;
    }
    Image image(opj_image_create(components, layout.data(), OPJ_CLRSPC_SRGB));
    if (!image) return image;
    image->x1 = width;
    image->y1 = height;
    const std::span planes(image->comps, components);
    if (components == 4) planes[3].alpha = 1;
    std::size_t at = 0;
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::uint32_t* row = bitmap.row(y);
        for (int x = 0; x < bitmap.width(); ++x, ++at) {
            const std::uint32_t pixel = straight(row[x]);
            planes[0].data[at] = static_cast<OPJ_INT32>(redOf(pixel));
            planes[1].data[at] = static_cast<OPJ_INT32>(greenOf(pixel));
            planes[2].data[at] = static_cast<OPJ_INT32>(blueOf(pixel));
            if (components == 4) planes[3].data[at] = static_cast<OPJ_INT32>(alphaOf(pixel));
        }
    }
    return image;
}

std::optional<Bytes> encode(const Bitmap& bitmap) {
    const Image image = toImage(bitmap);
    const Codec codec(opj_create_compress(OPJ_CODEC_JP2));
    Jpeg2000Target target;
    const Jpeg2000Stream stream = writingStream(target);
    if (!image || !codec || !stream) return std::nullopt;

    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.tcp_rates[0] = 0;  // Lossless.
    parameters.cp_disto_alloc = 1;
    parameters.tcp_mct = 1;
    // Each decomposition level halves the sides, and the lowest resolution must have a pixel.
    const int shorter = std::min(bitmap.width(), bitmap.height());
    while (1 << (parameters.numresolution - 1) > shorter)
        --parameters.numresolution;
    if (!opj_setup_encoder(codec.get(), &parameters, image.get())) return std::nullopt;
    if (!opj_start_compress(codec.get(), image.get(), stream.get()) ||
        !opj_encode(codec.get(), stream.get()) || !opj_end_compress(codec.get(), stream.get())) {
        return std::nullopt;
    }
    stateResolution(target.file, dotsPerInch(bitmap));
    return std::move(target.file);
}

}  // namespace

bool isJpeg2000(ByteView head) {
    return startsWith(head, kBoxedStart) || startsWith(head, kBareStart);
}

std::optional<Bitmap> decodeJpeg2000(ByteView file, const NeededSize& needed) {
    return decode(file, needed);
}

std::optional<Bytes> encodeJpeg2000(const Bitmap& bitmap, std::optional<float> /*factor*/) {
    return encode(bitmap);
}

}  // namespace tkv
