#include "system/module.h"

#include <dlfcn.h>

#include "system/log.h"

namespace tkv {

namespace {
bool wasMissed = false;
}

const void* moduleSymbol(const char* symbol) {
    // Looked for as any library is: in the folder that the program was linked with, unless the
    // environment names others.
    static void* const library = dlopen(TKV_DESKTOP_MODULE, RTLD_LAZY | RTLD_LOCAL);
    const void* const found = library == nullptr ? nullptr : dlsym(library, symbol);
    if (found == nullptr && !wasMissed) {
        const char* const reason = dlerror();
        logLine("desktop module      :-( {}", reason == nullptr ? symbol : reason);
        wasMissed = true;
    }
    return found;
}

bool wasModuleMissed() {
    return wasMissed;
}

}  // namespace tkv
