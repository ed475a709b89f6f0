#include "utils/file_operations.h"

#include <filesystem>

#include "system/description.h"
#include "system/files.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/trash.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace fs = std::filesystem;

namespace {

enum class Permissions {
    asUmaskSays,
    openToAll,  ///< Everyone may read, write and search the folder, whatever the umask.
};

// Makes the folder and its missing parents; false as soon as one cannot be made. Those that were
// there before keep their permissions.
bool makeFolders(const fs::path& folder, Permissions permissions) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return true;
    if (error == std::errc::filename_too_long) return false;
    const fs::path parent = folder.parent_path();
    if (!parent.empty() && parent != folder && !makeFolders(parent, permissions)) return false;
    // It may exist by now: created by a concurrent run, or as its own parent where the path ends in
    // a slash or in dots.
    const bool isMade = fs::create_directory(folder, error);
    if (isMade && permissions == Permissions::openToAll)
        fs::permissions(folder, fs::perms::all, error);
    return !error;
}

}  // namespace

bool mkdirCocoa(const std::optional<std::string>& path) {
    if (!path) return false;
    verboseLine("mkdir               :    '{}'", *path);
    const std::string folder = expandTilde(*path);
    if (!makeFolders(folder, Permissions::openToAll)) {
        logLine("mkdir               :-(  '{}'", *path);
        if (!makeFolders(folder, Permissions::asUmaskSays)) {
            logLine("mkdir               :-(( '{}'", *path);
            return false;
        }
    }
    verboseLine("mkdir               :-)  '{}'", *path);
    noteFileChanged(folder);
    return true;
}

std::optional<std::vector<std::string>> lsCocoa(const std::optional<std::string>& folder) {
    if (!folder) return std::nullopt;
    verboseLine("lsCocoa             - begin : {}", *folder);
    const std::string expanded = expandTilde(*folder);
    std::optional<std::vector<std::string>> paths = folderNames(expanded);
    if (!paths) return std::nullopt;
    for (std::string& path : *paths)
        path = joinPath(expanded, path);
    if (isVerbose()) {
        logLine("lsCocoa             - end : {} items : {}", paths->size(), describe(paths));
    }
    if (paths->empty()) return std::nullopt;
    return paths;
}

bool trashCocoa(const std::string& path) {
    if (const auto location = itemLocation(expandTilde(path))) moveToTrash(*location);
    return true;
}

}  // namespace tkv
