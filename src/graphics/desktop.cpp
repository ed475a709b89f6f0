#include "graphics/desktop.h"

#include "system/module.h"

namespace tkv {

std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas) {
    return moduleTable<DesktopGraphics>().rasterizeText(text, attributes, place, canvas);
}

std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed) {
    return moduleTable<DesktopGraphics>().decodeWithPixbuf(file, needed);
}

std::optional<Bytes> encodeTiff(const Bitmap& bitmap, std::optional<float> factor) {
    return moduleTable<DesktopGraphics>().encodeTiff(bitmap, factor);
}

std::optional<Bytes> encodeBmp(const Bitmap& bitmap, std::optional<float> factor) {
    return moduleTable<DesktopGraphics>().encodeBmp(bitmap, factor);
}

}  // namespace tkv
