#include "system/mounts.h"

#ifdef __APPLE__
#include <sys/mount.h>
#else
#include <mntent.h>

#include <cstdio>
#include <memory>
#endif

namespace tkv {

#ifdef __APPLE__

std::optional<std::vector<std::string>> mountPoints() {
    struct statfs* systems = nullptr;  // The C library's own.
    const int count = getmntinfo(&systems, MNT_NOWAIT);
    if (count <= 0) return std::nullopt;
    std::vector<std::string> points;
    for (int i = 0; i < count; ++i)
        points.emplace_back(systems[i].f_mntonname);
    return points;
}

#else

std::optional<std::vector<std::string>> mountPoints() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(
        setmntent("/proc/self/mounts", "re"), endmntent);
    if (!table) return std::nullopt;
    std::vector<std::string> points;
    // Only the thread that removes asks. NOLINTNEXTLINE(concurrency-mt-unsafe)
    while (const mntent* entry = getmntent(table.get()))
        points.emplace_back(entry->mnt_dir);
    return points;
}

#endif

}  // namespace tkv
