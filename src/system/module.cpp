#include "system/module.h"

#include <dlfcn.h>

#include <stdexcept>

namespace tkv {

const void* moduleSymbol(const char* symbol) {
    // Looked for as any library is: in the folder that the program was linked with, unless the
    // environment names others.
    static void* const library = dlopen(TKV_DESKTOP_MODULE, RTLD_LAZY | RTLD_LOCAL);
    const void* const found = library == nullptr ? nullptr : dlsym(library, symbol);
    if (found == nullptr) throw std::runtime_error(dlerror());
    return found;
}

}  // namespace tkv
