#include "system/module.h"

#include <dlfcn.h>

#include "system/log.h"

namespace tkv {

namespace {
bool wasMissed = false;
}

const void* moduleTable(const char* symbol, std::size_t bytes) {
    // Found by the loader's search path: the program's RUNPATH, unless LD_LIBRARY_PATH overrides
    // it.
    static void* const library = dlopen("tkv_desktop.so", RTLD_LAZY | RTLD_LOCAL);
    const void* const found = library == nullptr ? nullptr : dlsym(library, symbol);
    const auto* const stamp = static_cast<const TableStamp*>(found);
    if (stamp != nullptr && *stamp == TableStamp{TKV_MODULE_VERSION, bytes}) return found;
    if (!wasMissed) {
        const char* const reason =
            // dlerror's message is thread-local. NOLINTNEXTLINE(concurrency-mt-unsafe)
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
