#include "system/module.h"

#include <dlfcn.h>

#include "system/log.h"

namespace tkv {

namespace {
bool wasMissed = false;
}

const void* moduleTable(const char* symbol, std::size_t bytes) {
    // Looked for as any library is: in the folder that the program was linked with, unless the
    // environment names others.
    static void* const library = dlopen("tkv_desktop.so", RTLD_LAZY | RTLD_LOCAL);
    const void* const found = library == nullptr ? nullptr : dlsym(library, symbol);
    const auto* const stamp = static_cast<const TableStamp*>(found);
    if (stamp != nullptr && *stamp == TableStamp{TKV_MODULE_VERSION, bytes}) return found;
    if (!wasMissed) {
        const char* const reason =
            // Each thread has a message of its own. NOLINTNEXTLINE(concurrency-mt-unsafe)
            stamp == nullptr ? dlerror() : "tkv_desktop.so: built for another version";
        logLine("desktop module      :-( {}", reason == nullptr ? symbol : reason);
        wasMissed = true;
    }
    return nullptr;
}

bool wasModuleMissed() {
    return wasMissed;
}

}  // namespace tkv
