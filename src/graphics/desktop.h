#pragma once

#include "graphics/codecs/codecs.h"
#include "graphics/sheet.h"
#include "graphics/text.h"
#include "system/module.h"

namespace tkv {

/// What the desktop module has for pictures. The functions of the same names in this namespace
/// forward to it, and return none where the module is not installed.
struct DesktopGraphics {
    static constexpr const char* kSymbol = "tkvDesktopGraphics";
    TableStamp stamp;
    decltype(&tkv::rasterizeText) rasterizeText;
    decltype(&tkv::lettersWithoutFont) lettersWithoutFont;
    decltype(&tkv::fallbackFaces) fallbackFaces;
    decltype(&tkv::isReadByPixbuf) isReadByPixbuf;
    decltype(&tkv::decodeWithPixbuf) decodeWithPixbuf;
    decltype(&tkv::encodeTiff) encodeTiff;
    decltype(&tkv::encodeBmp) encodeBmp;
    decltype(&tkv::sheetPdf) sheetPdf;
};

}  // namespace tkv
