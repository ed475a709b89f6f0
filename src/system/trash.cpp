#include "system/trash.h"

#include "system/module.h"

namespace tkv {

bool moveToTrash(const std::string& path) {
    return moduleTable<DesktopTrash>().moveToTrash(path);
}

}  // namespace tkv
