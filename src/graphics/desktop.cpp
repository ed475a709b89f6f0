#include "graphics/desktop.h"

#include <utility>

namespace tkv {

namespace {

/// What the module's function returns; none or false without the module.
template <typename Function, typename... Args>
auto fromModule(Function DesktopGraphics::*function, const Args&... args)
    -> decltype((std::declval<DesktopGraphics>().*function)(args...)) {
    const DesktopGraphics* const module = moduleTable<DesktopGraphics>();
    if (module == nullptr) return {};
    return (module->*function)(args...);
}

}  // namespace

std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas) {
    return fromModule(&DesktopGraphics::rasterizeText, text, attributes, place, canvas);
}

std::u32string lettersWithoutFont(const std::string& text) {
    return fromModule(&DesktopGraphics::lettersWithoutFont, text);
}

std::string fallbackFaces() {
    return fromModule(&DesktopGraphics::fallbackFaces);
}

bool isReadByPixbuf(ByteView head) {
    return fromModule(&DesktopGraphics::isReadByPixbuf, head);
}

std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed) {
    return fromModule(&DesktopGraphics::decodeWithPixbuf, file, needed);
}

std::optional<Bytes> encodeTiff(const Bitmap& bitmap, std::optional<float> factor) {
    return fromModule(&DesktopGraphics::encodeTiff, bitmap, factor);
}

std::optional<Bytes> encodeBmp(const Bitmap& bitmap, std::optional<float> factor) {
    return fromModule(&DesktopGraphics::encodeBmp, bitmap, factor);
}

std::optional<Bytes> sheetPdf(const Sheet& sheet) {
    return fromModule(&DesktopGraphics::sheetPdf, sheet);
}

}  // namespace tkv
