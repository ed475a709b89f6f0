#include "utils/guarded_removal.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>

#include "platform/description.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/unicode.h"
#include "platform/verbose.h"
#include "utils/existence.h"
#include "utils/file_operations.h"

namespace tkv {

namespace fs = std::filesystem;

namespace {

// The host application's own folder, at the root of the disk.
constexpr std::string_view kHostFolder = "/TKVauthoring";
constexpr std::array<std::string_view, 3> kGuardedFolders = {"/", "/Volumes", "/Users"};
constexpr std::array<std::string_view, 4> kJokers = {"*", "/*", "/Volumes/*", "/Volumes/Users/*"};

// An empty `piece` counts as absent.
bool isPieceOf(std::string_view piece, std::string_view text) {
    return !piece.empty() && text.find(piece) != std::string_view::npos;
}

bool isAtOrAbove(const std::string& folder, const std::string& path) {
    return path == folder || path.starts_with(folder + "/");
}

// The absolute path of the item itself, without "." and ".." and with no link on the way to it.
std::string locationOf(const std::string& path) {
    const fs::path parent = fs::weakly_canonical(fs::current_path() / parentFolder(path));
    const fs::path location = (parent / lastComponent(path)).lexically_normal();
    return joinPath(location.string(), "");
}

// The spelling of a path may hide where it leads ("/tmp/../home", a link to "/"), and other
// systems keep homes and volumes elsewhere than below /Users and /Volumes. So a folder is guarded
// when, wherever its path leads, it lies directly in a folder that holds the system, homes or
// volumes, or when it is or holds such a folder or the user's home.
bool isGuardedFolder(const std::string& path, const std::string& home, const std::string& login) {
    if (!folderExists(path)) return false;
    try {
        const std::string location = locationOf(path);
        if (location.starts_with(kHostFolder)) return false;
        for (const std::string& holder :
             {std::string("/"), std::string("/Volumes"), std::string("/Users"),
              std::string("/home"), std::string("/mnt"), std::string("/media"), "/media/" + login,
              "/run/media/" + login}) {
            if (parentFolder(location) == holder || isAtOrAbove(location, holder)) return true;
        }
        return isAtOrAbove(location, locationOf(home)) ||
               isAtOrAbove(location, fs::weakly_canonical(home).string());
    } catch (const fs::filesystem_error&) {
        return true;  // nobody knows where the path leads
    }
}

std::error_code removeItem(const std::string& path) {
    // With a slash behind it, a link would stand for the folder that it points to.
    const std::string item = joinPath(parentFolder(path), lastComponent(path));
    std::error_code error;
    if (fs::remove_all(item, error) == 0 && !error) {
        error = std::make_error_code(std::errc::no_such_file_or_directory);
    }
    return error;
}

bool removeOrTrash(const std::string& path) {
    if (isVerbose()) logLine("File current        : exists: {}", path);
    if (!removeItem(path)) return true;
    logLine("File current        :-( not deleted 1");
    trashCocoa(path);
    logLine("File current        :-/ …to trash");
    if (!fileExists(path)) return true;
    logLine("File current        :-( failure");
    return false;
}

std::string describeFileSystem(const struct statvfs& system) {
    return describe({{"NSFileSystemFreeNodes", std::to_string(system.f_ffree)},
                     {"NSFileSystemFreeSize", std::to_string(system.f_bavail * system.f_frsize)},
                     {"NSFileSystemNodes", std::to_string(system.f_files)},
                     {"NSFileSystemNumber", std::to_string(system.f_fsid)},
                     {"NSFileSystemSize", std::to_string(system.f_blocks * system.f_frsize)}});
}

// Whether something is at a path that could not be opened; if not, removes what may be left there,
// such as a link to nothing.
bool isPresentOrRemoved(const std::string& path) {
    struct statvfs system {};
    const int error = statvfs(path.c_str(), &system) == 0 ? 0 : errno;
    if (isVerbose()) {
        logLine("rmCocoa d           : {}",
                error == 0 ? shortDescription(describeFileSystem(system)) : "nil");
    }
    if (error == 0) {
        logLine("Cocoa:exists!!!     :-( {}", path);
        return true;
    }
    if (isVerbose()) {
        logLine("Cocoa:does not exist:-/ ERR: {} ({})", std::generic_category().message(error),
                path);
    }
    const std::error_code left = removeItem(path);
    if (isVerbose()) {
        logLine("Cocoa:does not exist;-) ERR: {} ({})", left ? left.message() : "nil", path);
    }
    return false;
}

}  // namespace

RemovalVerdict removalVerdict(const std::string& path, const std::string& home,
                              const std::string& login) {
    if (path == "/") return RemovalVerdict::refused;

    std::string_view piece = path;
    if (path.ends_with('/')) piece = firstCharacters(path, characterCount(path) - 2);
    if (isPieceOf(piece, home) || isPieceOf(piece, "/Users/" + login)) {
        return RemovalVerdict::refused;
    }

    if (!path.starts_with(kHostFolder)) {
        const std::string folder = fichier_dirname(path);
        if (std::find(kGuardedFolders.begin(), kGuardedFolders.end(), folder) !=
            kGuardedFolders.end()) {
            return RemovalVerdict::refusedDirname;
        }
        if (std::any_of(kJokers.begin(), kJokers.end(),
                        [&](std::string_view joker) { return path.starts_with(joker); })) {
            return RemovalVerdict::refusedJoker;
        }
    }
    return isGuardedFolder(path, home, login) ? RemovalVerdict::refusedDirname
                                              : RemovalVerdict::allowed;
}

bool rmCocoa(const std::optional<std::string>& path) {
    if (!path) return false;
    if (isVerbose()) logLine("rmCocoa             - begin - {}", *path);
    const std::string target = expandTilde(*path);
    switch (removalVerdict(target, parentFolder(expandTilde("~/Movies")), loginName())) {
        case RemovalVerdict::allowed:
            break;
        case RemovalVerdict::refused:
            return false;
        case RemovalVerdict::refusedDirname:
            logLine("alerte de sécurité dirname");
            return false;
        case RemovalVerdict::refusedJoker:
            logLine("alerte de sécurité joker");
            return false;
    }
    if (fileExists(target)) {
        if (!removeOrTrash(target)) return false;
    } else if (!isPresentOrRemoved(target)) {
        return true;
    }
    if (isVerbose()) logLine("rmCocoa             - pre-fin");
    noteFileChanged(target);
    if (isVerbose()) logLine("rmCocoa             - end - {}", target);
    return true;
}

}  // namespace tkv
