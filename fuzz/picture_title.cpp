#include "graphics/picture_title.h"
#include "fuzzing.h"
#include "system/unicode.h"

// Any bytes as a picture that may have a title.

using namespace tkv;
using namespace tkv::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string title = titleOfPicture({data, size});
    require(isUtf8(title), "a title is a text");
    require(title.size() <= 1000, "a title can be read on a picture");
    return 0;
}
