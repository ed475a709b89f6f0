#include "system/mounts.h"

#include <mntent.h>

#include <cstdio>
#include <memory>

namespace tkv {

std::optional<std::vector<std::string>> mountPoints() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(
        setmntent("/proc/self/mounts", "re"), endmntent);
    if (!table) return std::nullopt;
    std::vector<std::string> points;
    // Only the thread that removes calls this. NOLINTNEXTLINE(concurrency-mt-unsafe)
    while (const mntent* entry = getmntent(table.get()))
        points.emplace_back(entry->mnt_dir);
    return points;
}

}  // namespace tkv
