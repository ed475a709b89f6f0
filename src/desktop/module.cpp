#include "desktop/functions.h"
#include "graphics/desktop.h"
#include "system/trash.h"

// The module's only exported symbols. The types of the tables name them, for the program's dlsym.

#define TKV_SEEN_OUTSIDE extern "C" __attribute__((visibility("default")))

TKV_SEEN_OUTSIDE const tkv::DesktopGraphics tkvDesktopGraphics{
    {TKV_MODULE_VERSION, sizeof(tkv::DesktopGraphics)},
    tkv::desktop::rasterizeText,
    tkv::desktop::lettersWithoutFont,
    tkv::desktop::fallbackFaces,
    tkv::desktop::isReadByPixbuf,
    tkv::desktop::decodeWithPixbuf,
    tkv::desktop::encodeTiff,
    tkv::desktop::encodeBmp,
    tkv::desktop::sheetPdf};

TKV_SEEN_OUTSIDE const tkv::DesktopTrash tkvDesktopTrash{
    {TKV_MODULE_VERSION, sizeof(tkv::DesktopTrash)}, tkv::desktop::moveToTrash};
