#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What must not be removed, wherever the spelling of its path hides it.

namespace tkv {

/// The host application's own folder, at the root of the disk: what begins with it may be removed.
inline constexpr std::string_view kHostFolder = "/TKVauthoring";

/// Where the folders are that must stay; absolute paths, as they are written and as they resolve.
struct GuardedPlaces {
    std::vector<std::string> roots;    ///< No item directly in one of these is removed.
    std::vector<std::string> holders;  ///< No folder directly in one: homes and volumes.
    std::vector<std::string> homes;    ///< Of all accounts.
    /// None when nobody knows: then any folder may hold one.
    std::optional<std::vector<std::string>> mountPoints;
};

enum class ItemKind {
    nothing,
    file,    ///< A regular file.
    folder,  ///< Also a link to one.
    other,   ///< A device, a FIFO, a socket, or a link to one.
};

/// Whether the item at `location` (as itemLocation answers it) must stay, as far as its place
/// tells: whatever is no file or folder; what lies directly in one of the roots; a folder that lies
/// directly in a holder, or that is or holds a holder, a home or a mount point. The host
/// application's folder may lie in a root: a location that begins with kHostFolder.
/// Looks at its arguments alone.
bool isGuardedPlace(const std::string& location, ItemKind kind, const GuardedPlaces& places);

/// The same for what is on the running system, where a folder must also stay that is the user's
/// home by another name. `home`, `login`: of the user.
bool isGuarded(const std::string& location, const std::string& home, const std::string& login);

}  // namespace tkv
