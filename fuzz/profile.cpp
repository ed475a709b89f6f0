#include "graphics/color_profile.h"

#include "fuzzing.h"

// Any bytes, or what is made of them, as a colour profile, for each kind of pixels.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

constexpr std::uint32_t kPixels[] = {0xFF000000, 0xFFFFFFFF, 0xFF3264C8, 0x80402010,
                                     0x00000000, 0xFF808080, 0x01010100, 0xFFFF0000};
constexpr int kCount = std::size(kPixels);
/// Of a square of different colours, enough to tell what a profile costs for each.
constexpr int kSide = 64;

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes file = fileFrom({data, size});
    for (const ColorKind kind : {ColorKind::rgb, ColorKind::grey, ColorKind::inks}) {
        const TimeLimit limit(3);
        Bitmap bitmap = Bitmap::create({kCount, 1}).value();
        for (int i = 0; i < kCount; ++i)
            bitmap.row(0)[i] = kPixels[i];
        const bool isConverted = convertToSrgb(bitmap, file, kind);
        if (isConverted) requireSound(bitmap);
        for (int i = 0; i < kCount && !isConverted; ++i)
            require(bitmap.row(0)[i] == kPixels[i], "what is not converted stays");
        Bitmap square = Bitmap::create({kSide, kSide}).value();
        for (int y = 0; isConverted && y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x)
                square.row(y)[x] = 0xFF000000U | static_cast<unsigned>(y * kSide + x) * 977U;
        }
        if (isConverted) convertToSrgb(square, file, kind);
    }
    return 0;
}
