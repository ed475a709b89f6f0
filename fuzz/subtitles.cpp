#include <sstream>

#include "disc/subtitle/bitmap_picture.h"
#include "disc/subtitle/dvb_canvas.h"
#include "disc/subtitle/dvd_units.h"
#include "disc/subtitle/encoding.h"
#include "disc/subtitle/pgs.h"
#include "disc/subtitle/vobsub.h"
#include "disc/subtitle/vobsub_index.h"
#include "fuzzing.h"
#include "system/unicode.h"

// Any bytes as a file of subtitles: a text of whatever encoding, the pictures of Blu-ray discs and
// DVDs, and the words about those of DVDs and television.

using namespace tkv;
using namespace tkv::disc;
using namespace tkv::fuzz;

namespace {

void check(const BitmapCue& cue) {
    const SubtitleFrame frame{{720, 576}, 16.0 / 9, 0, 72, {}};
    if (cue.canvas.width <= 0 || cue.canvas.height <= 0) return;
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
    const std::string bytes(data, data + size);
    std::istringstream pictures(bytes), units(bytes);
    readPgs(pictures, 100, check);
    readDvdUnits(units, {}, 100, check);
    tracksInIndex(bytes);
    dvbCanvas(bytes);
    return 0;
}
