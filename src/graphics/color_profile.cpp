#include "graphics/color_profile.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

using Profile = std::unique_ptr<void, Releaser<cmsCloseProfile>>;
using Transform = std::unique_ptr<void, Releaser<cmsDeleteTransform>>;

constexpr bool kBlueFirst = std::endian::native == std::endian::little;
constexpr cmsUInt32Number kPixelType = kBlueFirst ? TYPE_BGRA_8 : TYPE_ARGB_8;
// A grey pixel has equal channels: blue, at one end of the word, serves as the grey.
constexpr cmsUInt32Number kGreyPixels = COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | BYTES_SH(1) |
                                        EXTRA_SH(3) | (kBlueFirst ? 0 : SWAPFIRST_SH(1));

struct KindOfProfile {
    std::uint32_t space;
    cmsUInt32Number pixels;
};

constexpr KindOfProfile profileFor(ColorKind kind) {
    switch (kind) {
        case ColorKind::grey:
            return {cmsSigGrayData, kGreyPixels};
        case ColorKind::inks:
            return {cmsSigCmykData, TYPE_CMYK_8};
        case ColorKind::rgb:
            break;
    }
    return {cmsSigRgbData, kPixelType};
}

/// A primary's colorant and tone curve tags, and its place in sRGB (IEC 61966-2-1, adapted to D50).
struct Primary {
    cmsTagSignature colorant;
    cmsTagSignature curve;
    cmsCIEXYZ place;
};
constexpr std::array<Primary, 3> kPrimaries{{
    {cmsSigRedColorantTag, cmsSigRedTRCTag, {0.4361, 0.2225, 0.0139}},
    {cmsSigGreenColorantTag, cmsSigGreenTRCTag, {0.3851, 0.7169, 0.0971}},
    {cmsSigBlueColorantTag, cmsSigBlueTRCTag, {0.1431, 0.0606, 0.7140}},
}};

double encoded(double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

/// Whether the profile has that primary of sRGB, within a tolerance of a level or two in any pixel:
/// hardly two makers of such profiles round alike.
bool hasPrimary(const Profile& profile, const Primary& primary) {
    const auto* place = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile.get(), primary.colorant));
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile.get(), primary.curve));
    if (place == nullptr || curve == nullptr) return false;
    const double apart =
        std::max({std::abs(place->X - primary.place.X), std::abs(place->Y - primary.place.Y),
                  std::abs(place->Z - primary.place.Z)});
    if (!(apart < 0.0005)) return false;
    for (int level = 0; level <= 255; level += 15) {
        const double light = cmsEvalToneCurveFloat(curve, static_cast<float>(level) / 255);
        if (!(std::abs(255 * encoded(light) - level) < 0.5)) return false;
    }
    return true;
}

/// Whether an RGB profile is sRGB's, as most are, so that there is nothing to convert. Their names
/// do not tell.
bool isSrgb(const Profile& profile) {
    return cmsIsMatrixShaper(profile.get()) && !cmsIsTag(profile.get(), cmsSigAToB0Tag) &&
           std::ranges::all_of(
               kPrimaries, [&](const Primary& primary) { return hasPrimary(profile, primary); });
}

/// A number of four bytes; as if zeros followed the profile.
std::uint32_t numberAt(std::span<const std::uint8_t> icc, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8U | (at + i < icc.size() ? icc[at + i] : 0U);
    return number;
}

/// Whether the library can be shown the profile. Tags that chain any number of processing elements
/// (D2B0 to D2B3, B2D0 to B2D3) can take hours for each pixel, and hardly any camera or editor
/// writes them; nor more than a few megabytes.
bool isBounded(std::span<const std::uint8_t> icc) {
    constexpr std::size_t kMost = std::size_t{4} << 20U, kCount = 128, kEntry = 12, kMostTags = 100;
    const std::size_t tags = numberAt(icc, kCount);
    if (icc.size() > kMost || tags > kMostTags) return false;
    for (std::size_t i = 0; i < tags; ++i) {
        const std::uint32_t name = numberAt(icc, kCount + 4 + i * kEntry) >> 8U;
        if (name == cmsSigDToB0Tag >> 8U || name == cmsSigBToD0Tag >> 8U) return false;
    }
    return true;
}

/// A cached transform of one kind of pictures from one profile to sRGB.
struct Conversion {
    Conversion() = default;
    Conversion(std::span<const std::uint8_t> icc, ColorKind pictures)
        : profile(icc.begin(), icc.end()), kind(pictures) {
        constexpr std::size_t kSpace = 16;  // The colour space, in the header.
        const auto [space, pixels] = profileFor(kind);
        if (!isBounded(icc) || numberAt(icc, kSpace) != space) return;
        const Profile source(
            cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size())));
        if (!source) return;
        isNone = kind == ColorKind::rgb && isSrgb(source);
        const Profile srgb(isNone ? nullptr : cmsCreate_sRGBProfile());
        if (!srgb) return;
        transform.reset(
            cmsCreateTransform(source.get(), pixels, srgb.get(), kPixelType, INTENT_PERCEPTUAL, 0));
    }

    bool isFor(std::span<const std::uint8_t> icc, ColorKind pictures) const {
        return kind == pictures && std::ranges::equal(profile, icc);
    }

    std::vector<std::uint8_t> profile;
    ColorKind kind = ColorKind::rgb;
    bool isNone = false;  ///< The colours are sRGB's already.
    Transform transform;
};

}  // namespace

bool convertToSrgb(Bitmap& bitmap, std::span<const std::uint8_t> icc, ColorKind kind) {
    // Creating a transform takes longer than decoding a small picture, and the frames of a loop
    // share one.
    thread_local Conversion conversion;  // The module keeps one of its own.
    if (!conversion.isFor(icc, kind)) conversion = Conversion(icc, kind);
    if (!conversion.transform) return conversion.isNone;

    const bool inks = kind == ColorKind::inks;
    const auto width = static_cast<std::size_t>(bitmap.width());
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::span row(bitmap.row(y), width);
        // The profile applies to straight colours; alpha is kept.
        if (!inks) std::ranges::transform(row, row.begin(), straight);
        cmsDoTransform(conversion.transform.get(), row.data(), row.data(),
                       static_cast<cmsUInt32Number>(width));
        std::ranges::transform(row, row.begin(), [inks](std::uint32_t pixel) {
            return inks ? pixel | 0xFF000000U : premultiplied(pixel);
        });
    }
    return true;
}

}  // namespace tkv
