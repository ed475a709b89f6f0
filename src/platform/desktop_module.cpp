#include <dlfcn.h>

#include <stdexcept>

#include "platform/desktop_module.h"

namespace tkv {

namespace {

/// Looked for as any library is: in the folder that the program was linked with, unless the
/// environment names others. Never unloaded: the libraries keep what they have set up. Throws when
/// the installation lacks the module.
const DesktopModule& desktopModule() {
    static const DesktopModule* const module = [] {
        void* const library = dlopen(TKV_DESKTOP_MODULE, RTLD_LAZY | RTLD_LOCAL);
        const void* const found = library == nullptr ? nullptr : dlsym(library, "tkvDesktopModule");
        if (found == nullptr) throw std::runtime_error(dlerror());
        return static_cast<const DesktopModule*>(found);
    }();
    return *module;
}

}  // namespace

std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas) {
    return desktopModule().rasterizeText(text, attributes, place, canvas);
}

std::optional<Bitmap> decodeWithPixbuf(ByteView file, const NeededSize& needed) {
    return desktopModule().decodeWithPixbuf(file, needed);
}

std::optional<Bytes> encodeTiff(const Bitmap& bitmap) {
    return desktopModule().encodeTiff(bitmap);
}

std::optional<Bytes> encodeBmp(const Bitmap& bitmap) {
    return desktopModule().encodeBmp(bitmap);
}

bool moveToTrash(const std::string& path) {
    return desktopModule().moveToTrash(path);
}

}  // namespace tkv
