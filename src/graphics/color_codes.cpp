#include "graphics/color_codes.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "graphics/releaser.h"

namespace tkv {

namespace {

using Profile = std::unique_ptr<void, Releaser<cmsCloseProfile>>;
using Curve = std::unique_ptr<cmsToneCurve, Releaser<cmsFreeToneCurve>>;

/// Chromaticities of the white and the primaries behind a code.
struct Primaries {
    int code;
    cmsCIExyY white;
    cmsCIExyYTRIPLE colors;
};

constexpr cmsCIExyY kD65{0.3127, 0.329, 1}, kDciWhite{0.314, 0.351, 1};
constexpr cmsCIExyYTRIPLE kBt709{{0.64, 0.33, 1}, {0.3, 0.6, 1}, {0.15, 0.06, 1}};
constexpr cmsCIExyYTRIPLE kBt601Ntsc{{0.63, 0.34, 1}, {0.31, 0.595, 1}, {0.155, 0.07, 1}};
constexpr cmsCIExyYTRIPLE kP3{{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}};
constexpr std::array<Primaries, 7> kCodedPrimaries{{
    {1, kD65, kBt709},
    {5, kD65, {{0.64, 0.33, 1}, {0.29, 0.6, 1}, {0.15, 0.06, 1}}},  // BT.601 with 625 lines
    {6, kD65, kBt601Ntsc},
    {7, kD65, kBt601Ntsc},
    {9, kD65, {{0.708, 0.292, 1}, {0.17, 0.797, 1}, {0.131, 0.046, 1}}},  // BT.2020
    {11, kDciWhite, kP3},
    {12, kD65, kP3},
}};

/// The light of paper white in HDR pictures, and that of the display for which HLG is encoded
/// (BT.2408), in cd/m2.
constexpr double kPaperWhite = 203, kHlgPeak = 1000;

double lightOfPq(double level) {  // SMPTE ST 2084
    const double power = std::pow(level, 4096 / (128 * 2523.0));
    const double above = std::max(power - 3424 / 4096.0, 0.0);
    const double below = 2413 / 128.0 - 2392 / 128.0 * power;
    return 10000 / kPaperWhite * std::pow(above / below, 16384 / 2610.0);
}

double lightOfHlg(double level) {  // BT.2100, with the system gamma of that display
    const double scene = level <= 0.5
                             ? level * level / 3
                             : (std::exp((level - 0.55991073) / 0.17883277) + 0.28466892) / 12;
    return kHlgPeak / kPaperWhite * std::pow(scene, 1.2);
}

/// Light of any strength as what a display can show, 1 at most: unchanged up to the knee, above it
/// along a hyperbola that begins with the same slope.
double rolledOff(double light) {
    constexpr double kKnee = 0.7;
    if (light <= kKnee) return light;
    const double over = (light - kKnee) / (1 - kKnee);
    return kKnee + (1 - kKnee) * over / (1 + over);
}

Curve tabulated(double (*light)(double level)) {
    std::array<cmsFloat32Number, 4096> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<float>(rolledOff(light(static_cast<double>(i) / 4095)));
    return Curve(cmsBuildTabulatedToneCurveFloat(nullptr, values.size(), values.data()));
}

/// Null where it counts as sRGB's.
Curve curveOf(int transfer) {
    switch (transfer) {
        case 4:
            return Curve(cmsBuildGamma(nullptr, 2.2));
        case 5:
            return Curve(cmsBuildGamma(nullptr, 2.8));
        case 8:
            return Curve(cmsBuildGamma(nullptr, 1));
        case 16:
            return tabulated(lightOfPq);
        case 18:
            return tabulated(lightOfHlg);
        default:
            return nullptr;
    }
}

Curve curveOfSrgb() {
    constexpr int kGammaAboveLine = 4;
    constexpr cmsFloat64Number kParameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return Curve(cmsBuildParametricToneCurve(nullptr, kGammaAboveLine, kParameters));
}

}  // namespace

std::vector<std::uint8_t> profileOfCodes(const ColorCodes& codes) {
    const auto* row = std::ranges::find(kCodedPrimaries, codes.primaries, &Primaries::code);
    if (row == kCodedPrimaries.end()) row = kCodedPrimaries.begin();
    Curve curve = curveOf(codes.transfer);
    if (!curve && row == kCodedPrimaries.begin()) return {};
    if (!curve) curve = curveOfSrgb();
    cmsToneCurve* const curves[] = {curve.get(), curve.get(), curve.get()};
    const Profile profile(curve ? cmsCreateRGBProfile(&row->white, &row->colors, curves) : nullptr);
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) return {};
    std::vector<std::uint8_t> bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) return {};
    return bytes;
}

}  // namespace tkv
