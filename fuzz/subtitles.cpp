#include "disc/subtitle/bitmap_picture.h"
#include "disc/subtitle/encoding.h"
#include "disc/subtitle/vobsub.h"
#include "fuzzing.h"
#include "system/unicode.h"

// Any bytes as a file of subtitles: a text of whatever encoding, and the pictures of a Blu-ray
// disc.

using namespace tkv;
using namespace tkv::disc;
using namespace tkv::fuzz;

namespace {

void check(const BitmapCue& cue) {
    const SubtitleFrame frame{{720, 576}, 16.0 / 9, 0, 72, {}};
    const SubtitlePicture picture = pictureOf(cue, frame);
    if (picture.isEmpty()) return;
    require(picture.x >= 0 && picture.y >= 0 && picture.x + picture.width <= frame.raster.width &&
                picture.y + picture.height <= frame.raster.height,
            "a picture is in the raster");
    const auto unit = unitOf(picture, 0, 1, false);
    require(!unit || unit->bytes.size() <= kMostUnitBytes, "players hold a unit");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto text = decodedText({data, size}, "pl"))
        require(isUtf8(text->text), "a text becomes UTF-8");
    readPgs({data, size}, check);
    return 0;
}
