#include <cmath>

#include "fuzzing.h"
#include "graphics/codecs/codecs.h"
#include "graphics/drawing.h"
#include "graphics/picture_faults.h"
#include "system/module.h"

// Any bytes, or what is made of them, as a picture file, whole and reduced, drawn as a page would.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

void look(const std::optional<Bitmap>& picture) {
    if (!picture) return;
    requireSound(*picture);
    require(canHold(picture->size(), 4 * pixelsOf(picture->size())),
            "a decoded picture is within the limits");
    const PixelRect& extent = picture->extent();
    require(extent.width > 0 && extent.height > 0 && std::isfinite(extent.left + extent.top),
            "a picture lies somewhere on its pixels");
    Bitmap page = Bitmap::create({48, 36}).value();
    require(drawPicture(page, *picture, {}, {4, 4, 40, 28}, Compositing::sourceOver, 0.5),
            "it can be drawn");
    requireSound(page);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Decoding a large picture in full would take the time of thousands of other inputs.
    constexpr std::int64_t kManyPixels = 4'000'000;
    const Bytes file = fileFrom({data, size});
    // Thrice what a picture costs at most, for the sanitizers; small ones are decoded twice.
    const TimeLimit limit(9);
    const std::string path = scratchFile("picture", file.data(), file.size());
    PixelSize full;
    const std::optional<Bitmap> picture = decodePicture(path, [&](PixelSize upright) {
        full = upright;
        return PixelSize{40, 28};
    });
    look(picture);
    require(picture || !whyNoPicture(path, full).empty(), "it is said why there is none");
    if (std::int64_t{full.width} * full.height <= kManyPixels) look(decodePicture(path));
    require(!wasModuleMissed(), "the formats of the desktop module are tried");
    return 0;
}
