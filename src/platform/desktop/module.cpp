#include "platform/desktop_module.h"

// The module's only symbol that others see. The functions here are those that do the work; outside
// the module the same names forward to them.
extern "C" __attribute__((visibility("default"))) const tkv::DesktopModule tkvDesktopModule{
    tkv::rasterizeText, tkv::decodeWithPixbuf, tkv::encodeTiff, tkv::encodeBmp, tkv::moveToTrash};
