#include "graphics/codecs/heif_items.h"

#include "fuzzing.h"

// Any bytes, or what is made of them, as a HEIF or AVIF file, whose items are walked.

using namespace tkv;
using namespace tkv::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes file = fileFrom({data, size});
    const TimeLimit limit(0.5);
    require(bytesForHeif(file).value_or(16) >= 16, "a picture has a pixel");
    const HeifColors colors = colorsOfHeif(file);
    require(colors.icc.size() <= file.size(), "a profile lies in the file");
    static_cast<void>(profileOfCodes(colors.codes));
    std::size_t bytes = 0;
    for (const ByteView part : stillParts(file))
        bytes += part.size();
    require(bytes <= file.size(), "what is read is no more than the file");
    return 0;
}
