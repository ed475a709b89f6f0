#include "graphics/color_profile.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <string_view>

#include "graphics/pixels.h"
#include "graphics/releaser.h"

namespace tkv {

namespace {

using Profile = std::unique_ptr<void, Releaser<cmsCloseProfile>>;
using Transform = std::unique_ptr<void, Releaser<cmsDeleteTransform>>;

constexpr bool kBlueFirst = std::endian::native == std::endian::little;
constexpr cmsUInt32Number kPixels = kBlueFirst ? TYPE_BGRA_8 : TYPE_ARGB_8;
// A grey pixel has the same value in its three colours: blue, at one end of the word, will do.
constexpr cmsUInt32Number kGreyPixels = COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | BYTES_SH(1) |
                                        EXTRA_SH(3) | (kBlueFirst ? 0 : SWAPFIRST_SH(1));

/// Most pictures with a profile have this one, and converting them would change nothing.
bool isSrgb(const Profile& profile) {
    std::array<char, 8> name{};
    cmsGetProfileInfoASCII(profile.get(), cmsInfoDescription, cmsNoLanguage, cmsNoCountry,
                           name.data(), name.size());
    return std::string_view(name.data()).starts_with("sRGB");
}

Transform transformToSrgb(std::span<const std::uint8_t> icc) {
    const Profile source(
        cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size())));
    if (!source || isSrgb(source)) return nullptr;
    const cmsColorSpaceSignature space = cmsGetColorSpace(source.get());
    if (space != cmsSigRgbData && space != cmsSigGrayData) return nullptr;
    const Profile srgb(cmsCreate_sRGBProfile());
    if (!srgb) return nullptr;
    return Transform(cmsCreateTransform(source.get(),
                                        space == cmsSigRgbData ? kPixels : kGreyPixels, srgb.get(),
                                        kPixels, INTENT_PERCEPTUAL, 0));
}

}  // namespace

void convertToSrgb(Bitmap& bitmap, std::span<const std::uint8_t> icc) {
    const Transform transform = transformToSrgb(icc);
    if (!transform) return;
    const auto width = static_cast<std::size_t>(bitmap.width());
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::span row(bitmap.row(y), width);
        // The colours are converted as they are without their alpha, which stays.
        std::ranges::transform(row, row.begin(), straight);
        cmsDoTransform(transform.get(), row.data(), row.data(),
                       static_cast<cmsUInt32Number>(width));
        std::ranges::transform(row, row.begin(), premultiplied);
    }
}

}  // namespace tkv
