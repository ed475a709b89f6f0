#include <gio/gio.h>

#include <memory>

#include "desktop/functions.h"
#include "graphics/releaser.h"

namespace tkv::desktop {

bool moveToTrash(const std::string& path) {
    const std::unique_ptr<GFile, Releaser<g_object_unref>> file(g_file_new_for_path(path.c_str()));
    return g_file_trash(file.get(), nullptr, nullptr) != FALSE;
}

}  // namespace tkv::desktop
