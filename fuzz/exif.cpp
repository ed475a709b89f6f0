#include "fuzzing.h"
#include "graphics/orientation.h"

// Any bytes as EXIF data, with and without the header that JPEG puts before them.

using namespace tkv;
using namespace tkv::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int orientation = exifOrientation({data, size});
    require(orientation >= 1 && orientation <= 8, "an orientation is one of eight");
    const auto turned = upright(Bitmap::create({3, 2}).value(), orientation);
    require(turned && turned->width() == (swapsSides(orientation) ? 2 : 3),
            "a picture on its side is turned");
    return 0;
}
