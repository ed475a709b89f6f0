#include "platform/trash.h"

#include <gio/gio.h>

#include <memory>

namespace tkv {

bool moveToTrash(const std::string& path) {
    const std::unique_ptr<GFile, decltype(&g_object_unref)> file(g_file_new_for_path(path.c_str()),
                                                                 g_object_unref);
    return g_file_trash(file.get(), nullptr, nullptr) != FALSE;
}

}  // namespace tkv
