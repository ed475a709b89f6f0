#include "utils/guarded_removal.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "system/description.h"
#include "system/files.h"
#include "system/held_item.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/unicode.h"
#include "system/verbose.h"
#include "utils/existence.h"
#include "utils/file_operations.h"
#include "utils/removal_guard.h"

namespace tkv {

namespace {

constexpr std::array<std::string_view, 3> kGuardedFolders = {"/", "/Volumes", "/Users"};
constexpr std::array<std::string_view, 4> kWildcards = {"*", "/*", "/Volumes/*",
                                                        "/Volumes/Users/*"};

constexpr std::string_view kMovieShare = ".iMovieProject/Shared Movies/iDVD";

// An empty `piece` counts as absent.
bool isPieceOf(std::string_view piece, std::string_view text) {
    return !piece.empty() && text.find(piece) != std::string_view::npos;
}

// The item at a path. With a trailing slash only a folder is meant: anything else stays.
std::error_code removeItem(const std::string& path, const std::optional<HeldItem>& item,
                           Removable what) {
    if (!item) return std::make_error_code(std::errc::no_such_file_or_directory);
    if (path.ends_with('/') && !folderExists(item->location())) {
        return std::make_error_code(std::errc::not_a_directory);
    }
    return what == Removable::oneFile ? item->removeFile() : item->removeAll();
}

bool removeOrTrash(const std::string& path, const std::optional<HeldItem>& item, Removable what) {
    verboseLine("File current        : exists: {}", path);
    if (!removeItem(path, item, what)) return true;
    logLine("File current        :-( not deleted 1");
    const bool isMeant = what == Removable::anything || (item && !item->isFolder());
    if (item && isMeant && item->isInPlace()) trashCocoa(item->location());
    logLine("File current        :-/ …to trash");
    if (!fileExists(path)) return true;
    logLine("File current        :-( failure");
    return false;
}

std::string describeFileSystem(const FileSystemFigures& system) {
    return describe({{"NSFileSystemFreeNodes", std::to_string(system.freeNodes)},
                     {"NSFileSystemFreeSize", std::to_string(system.freeBytes)},
                     {"NSFileSystemNodes", std::to_string(system.nodes)},
                     {"NSFileSystemNumber", std::to_string(system.number)},
                     {"NSFileSystemSize", std::to_string(system.bytes)}});
}

// Whether something is at a path that could not be opened; if not, removes what may be left there,
// such as a dangling symbolic link.
bool isPresentOrRemoved(const std::string& path, const std::optional<HeldItem>& item,
                        Removable what) {
    std::error_code error;
    const std::optional<FileSystemFigures> system = fileSystemOf(path, error);
    verboseLine("rmCocoa d           : {}",
                system ? shortDescription(describeFileSystem(*system)) : "nil");
    if (system) {
        logLine("Cocoa:exists!!!     :-( {}", path);
        return true;
    }
    verboseLine("Cocoa:does not exist:-/ ERR: {} ({})", error.message(), path);
    const std::error_code left = removeItem(path, item, what);
    verboseLine("Cocoa:does not exist;-) ERR: {} ({})", left ? left.message() : "nil", path);
    return false;
}

}  // namespace

std::string fichier_dirname(const std::optional<std::string>& path) {
    if (!path) return "";
    std::string item = expandTilde(*path);
    if (item.find(kMovieShare) != std::string::npos) {
        // The share's length is cut from the end, wherever it occurs: that is the interface.
        item = firstCharacters(item, characterCount(item) - kMovieShare.size());
        verboseLine("bundle imovie        : {}", item);
    }
    std::string folder = parentFolder(EyetvBundle(item).value_or(""));
    verboseLine("fichier_dirname     - end   - {}", folder);
    return folder;
}

std::optional<std::string> EyetvBundle(const std::optional<std::string>& path) {
    if (!path) return std::nullopt;
    verboseLine("EyetvBundle         - begin - {}", *path);
    std::string bundle = parentFolder(*path);
    if (path->find(".eyetv/") == std::string::npos || !bundle.ends_with(".eyetv")) bundle = *path;
    verboseLine("EyetvBundle         - end   - {}", bundle);
    return bundle;
}

std::string shortDescription(const std::string& text) {
    constexpr std::size_t kLongest = 50;
    if (characterCount(text) <= kLongest) return text;
    return std::string(firstCharacters(text, kLongest)) + " […]";
}

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
        if (std::any_of(kWildcards.begin(), kWildcards.end(),
                        [&](std::string_view wildcard) { return path.starts_with(wildcard); })) {
            return RemovalVerdict::refusedWildcard;
        }
    }
    const std::string name = lastComponent(path);
    if (name == "." || name == "..") return RemovalVerdict::refusedDirname;
    return RemovalVerdict::allowed;
}

bool rmCocoa(const std::optional<std::string>& path, Removable what) {
    if (!path) return false;
    verboseLine("rmCocoa             - begin - {}", *path);
    const std::string target = expandTilde(*path);
    const std::string home = parentFolder(expandTilde("~/Movies"));
    const std::string login = loginName();
    // Found once, so that what is checked is what is removed.
    const std::optional<HeldItem> item = HeldItem::at(target);
    if (item && !item->isFolder()) what = Removable::oneFile;
    RemovalVerdict verdict = removalVerdict(target, home, login);
    if (verdict == RemovalVerdict::allowed && item && isGuarded(item->location(), home, login)) {
        verdict = RemovalVerdict::refusedDirname;
    }
    switch (verdict) {
        case RemovalVerdict::allowed:
            break;
        case RemovalVerdict::refused:
            return false;
        case RemovalVerdict::refusedDirname:
            logLine("alerte de sécurité dirname");
            return false;
        case RemovalVerdict::refusedWildcard:
            logLine("alerte de sécurité joker");
            return false;
    }
    if (fileExists(target)) {
        if (!removeOrTrash(target, item, what)) return false;
    } else if (!isPresentOrRemoved(target, item, what)) {
        return true;
    }
    verboseLine("rmCocoa             - pre-fin");
    noteFileChanged(target);
    verboseLine("rmCocoa             - end - {}", target);
    return true;
}

}  // namespace tkv
