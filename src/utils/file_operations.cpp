#include "utils/file_operations.h"

#include <filesystem>
#include <string_view>

#include "platform/description.h"
#include "platform/files.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/trash.h"
#include "platform/unicode.h"
#include "platform/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kMovieShare = ".iMovieProject/Shared Movies/iDVD";

// Makes the folder and its missing parents; false as soon as one cannot be made. `openToAll`:
// everyone may read, write and search those that were made, whatever the umask.
bool makeFolders(const fs::path& folder, bool openToAll) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return true;
    if (error == std::errc::filename_too_long) return false;
    const fs::path parent = folder.parent_path();
    if (!parent.empty() && parent != folder && !makeFolders(parent, openToAll)) return false;
    // By now it may be there: made by another run at the same time, or as its own parent where the
    // path ends in a slash or in dots.
    const bool isMade = fs::create_directory(folder, error);
    if (isMade && openToAll) fs::permissions(folder, fs::perms::all, error);
    return !error;
}

}  // namespace

bool mkdirCocoa(const std::optional<std::string>& path) {
    if (!path) return false;
    if (isVerbose()) logLine("mkdir               :    '{}'", *path);
    const std::string folder = expandTilde(*path);
    if (!makeFolders(folder, true)) {
        logLine("mkdir               :-(  '{}'", *path);
        if (!makeFolders(folder, false)) {
            logLine("mkdir               :-(( '{}'", *path);
            return false;
        }
    }
    if (isVerbose()) logLine("mkdir               :-)  '{}'", *path);
    noteFileChanged(folder);
    return true;
}

std::optional<std::vector<std::string>> lsCocoa(const std::optional<std::string>& folder) {
    if (!folder) return std::nullopt;
    if (isVerbose()) logLine("lsCocoa             - begin : {}", *folder);
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
    moveToTrash(expandTilde(path));
    return true;
}

std::string fichier_dirname(const std::optional<std::string>& path) {
    if (!path) return "";
    std::string item = expandTilde(*path);
    if (item.find(kMovieShare) != std::string::npos) {
        // The share's length is cut from the end wherever it stands: the callers count on it.
        item = firstCharacters(item, characterCount(item) - kMovieShare.size());
        if (isVerbose()) logLine("bundle imovie        : {}", item);
    }
    std::string folder = parentFolder(EyetvBundle(item).value_or(""));
    if (isVerbose()) logLine("fichier_dirname     - end   - {}", folder);
    return folder;
}

std::optional<std::string> EyetvBundle(const std::optional<std::string>& path) {
    if (!path) return std::nullopt;
    if (isVerbose()) logLine("EyetvBundle         - begin - {}", *path);
    std::string bundle = parentFolder(*path);
    if (path->find(".eyetv/") == std::string::npos || !bundle.ends_with(".eyetv")) bundle = *path;
    if (isVerbose()) logLine("EyetvBundle         - end   - {}", bundle);
    return bundle;
}

std::string shortDescription(const std::string& text) {
    constexpr std::size_t kLongest = 50;
    if (characterCount(text) <= kLongest) return text;
    return std::string(firstCharacters(text, kLongest)) + " […]";
}

}  // namespace tkv
