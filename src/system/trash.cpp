#include "system/trash.h"

namespace tkv {

bool moveToTrash(const std::string& path) {
    const DesktopTrash* const module = moduleTable<DesktopTrash>();
    return module != nullptr && module->moveToTrash(path);
}

}  // namespace tkv
