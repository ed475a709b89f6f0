#include "graphics/desktop.h"

// Its tables have the names and the size that the program looks for; what else they hold is not
// what it takes them for.

extern "C" __attribute__((visibility("default"))) const tkv::DesktopGraphics tkvDesktopGraphics{
    {1, sizeof(tkv::DesktopGraphics)}, {}, {}, {}, {}, {}, {}, {}, {}};
