#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What must not be removed, however its path is spelled.

namespace tkv {

/// The host application's own folder, at the root of the disk: what begins with it may be removed.
inline constexpr std::string_view kHostFolder = "/TKVauthoring";

/// The folders that must stay; absolute paths, both as spelled and canonical.
struct GuardedPlaces {
    std::vector<std::string> roots;    ///< No item directly in one of these is removed.
    std::vector<std::string> holders;  ///< No folder directly in one: homes and volumes.
    std::vector<std::string> homes;    ///< Of all accounts.
    /// None when unknown: then any folder may hold one.
    std::optional<std::vector<std::string>> mountPoints;
};

enum class ItemKind {
    nothing,
    file,    ///< A regular file.
    folder,  ///< Also a link to one.
    other,   ///< A device, a FIFO, a socket, or a link to one.
};

/// Whether the item at `location` (as itemLocation returns it) must stay because of its place:
/// whatever is no file or folder; what lies directly in one of the roots; a folder that lies
/// directly in a holder, or that is or holds a holder, a home or a mount point. The host
/// application's folder may lie in a root: a location that begins with kHostFolder.
/// A pure function of its arguments.
bool isGuardedPlace(const std::string& location, ItemKind kind, const GuardedPlaces& places);

/// The same for what is on the running system, by whatever path it is reached: roots, holders and
/// homes are also recognised through bind mounts. `home`, `login`: of the user.
bool isGuarded(const std::string& location, const std::string& home, const std::string& login);

}  // namespace tkv
