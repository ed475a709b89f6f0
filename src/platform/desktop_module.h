#pragma once

#include "platform/codecs/codecs.h"
#include "platform/text.h"
#include "platform/trash.h"

namespace tkv {

/// What needs the desktop's libraries (Pango, GdkPixbuf, GIO and the dozen that they bring along).
/// They are a module of their own, loaded by the first call of one of these functions: a run that
/// writes overlays or tells its usage draws no text, and need not wait for them. Where the module
/// is not installed they throw std::runtime_error.
struct DesktopModule {
    decltype(&tkv::rasterizeText) rasterizeText;
    decltype(&tkv::decodeWithPixbuf) decodeWithPixbuf;
    decltype(&tkv::encodeTiff) encodeTiff;
    decltype(&tkv::encodeBmp) encodeBmp;
    decltype(&tkv::moveToTrash) moveToTrash;
};

}  // namespace tkv
