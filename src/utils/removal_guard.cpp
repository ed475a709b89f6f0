#include "utils/removal_guard.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <utility>

#include "system/files.h"
#include "system/mounts.h"
#include "system/paths.h"

namespace tkv {

namespace fs = std::filesystem;

namespace {

bool isAtOrAbove(const std::string& folder, const std::string& path) {
    return path == folder || path.starts_with(folder + "/");
}

bool isAtOrAboveAny(const std::string& folder, const std::vector<std::string>& paths) {
    return std::ranges::any_of(paths, [&](const auto& path) { return isAtOrAbove(folder, path); });
}

bool isDirectlyIn(const std::vector<std::string>& folders, const std::string& location) {
    return std::ranges::count(folders, parentFolder(location)) > 0;
}

/// Adds the canonical path of each, symbolic links resolved.
std::vector<std::string> withResolved(std::vector<std::string> paths) {
    for (std::size_t i = paths.size(); i > 0; --i) {
        std::error_code error;
        const fs::path resolved = fs::canonical(paths[i - 1], error);
        if (!error && resolved != paths[i - 1]) paths.push_back(resolved);
    }
    return paths;
}

ItemKind kindOf(const std::string& location) {
    std::error_code error;
    switch (fs::status(location, error).type()) {
        case fs::file_type::directory:
            return ItemKind::folder;
        case fs::file_type::regular:
            return ItemKind::file;
        case fs::file_type::not_found:
        case fs::file_type::none:  // A symbolic link whose target is inaccessible.
            return ItemKind::nothing;
        default:
            return ItemKind::other;
    }
}

/// The places that matter to an item of that kind.
GuardedPlaces guardedPlaces(ItemKind kind, const std::string& home, const std::string& login) {
    GuardedPlaces places;
    places.roots = withResolved({"/", "/Volumes", "/Users"});
    if (kind != ItemKind::folder) return places;
    places.holders =
        withResolved({"/home", "/mnt", "/media", "/media/" + login, "/run/media/" + login});
    places.homes = accountHomes();
    places.homes.push_back(home);
    places.homes = withResolved(std::move(places.homes));
    places.mountPoints = mountPoints();
    return places;
}

using Identities = std::set<FileId>;

enum class Upwards { no, yes };

/// Of the folders that are there; `yes`: also of all above them.
void add(Identities& identities, const std::vector<std::string>& folders, Upwards upwards) {
    for (const std::string& folder : folders) {
        std::string at = folder;
        do {
            if (const std::optional<FileId> id = fileId(at)) identities.insert(*id);
        } while (upwards == Upwards::yes && at != std::exchange(at, parentFolder(at)));
    }
}

bool isOneOf(const std::string& folder, const std::vector<std::string>& folders) {
    Identities identities;
    add(identities, folders, Upwards::no);
    const std::optional<FileId> id = fileId(folder);
    return id && identities.contains(*id);
}

/// Whether one of the folders lies anywhere below; also true where that cannot be said.
bool holdsAny(const std::string& location, const std::vector<std::string>& folders) {
    Identities identities;
    add(identities, folders, Upwards::no);
    std::error_code error;
    fs::recursive_directory_iterator entry(location, fs::directory_options::skip_permission_denied,
                                           error);
    for (const fs::recursive_directory_iterator end; !error && entry != end;
         entry.increment(error)) {
        if (entry->symlink_status(error).type() != fs::file_type::directory) continue;
        const std::optional<FileId> id = fileId(entry->path());
        if (id && identities.contains(*id)) return true;
    }
    return static_cast<bool>(error);
}

/// The same as isGuardedPlace for places that are reached by another path than their own, through
/// a bind mount.
bool isGuardedByIdentity(const std::string& location, ItemKind kind, const GuardedPlaces& places) {
    const std::string parent = parentFolder(location);
    if (isOneOf(parent, places.roots) && !location.starts_with(kHostFolder)) return true;
    if (kind != ItemKind::folder) return false;
    if (isOneOf(parent, places.holders)) return true;
    std::error_code error;
    if (fs::is_symlink(location, error)) return false;
    Identities kept;
    add(kept, places.holders, Upwards::yes);
    add(kept, places.homes, Upwards::yes);
    const std::optional<FileId> id = fileId(location);
    // What holds a home need not lie above its path, where that leads through a mount of its own.
    return !id || kept.contains(*id) || holdsAny(location, places.homes);
}

}  // namespace

bool isGuardedPlace(const std::string& location, ItemKind kind, const GuardedPlaces& places) {
    if (kind == ItemKind::other) return true;
    if (isDirectlyIn(places.roots, location) && !location.starts_with(kHostFolder)) return true;
    if (kind != ItemKind::folder) return false;
    return isDirectlyIn(places.holders, location) || isAtOrAboveAny(location, places.holders) ||
           isAtOrAboveAny(location, places.homes) || !places.mountPoints ||
           isAtOrAboveAny(location, *places.mountPoints);
}

bool isGuarded(const std::string& location, const std::string& home, const std::string& login) {
    const ItemKind kind = kindOf(location);
    const GuardedPlaces places = guardedPlaces(kind, home, login);
    return isGuardedPlace(location, kind, places) || isGuardedByIdentity(location, kind, places);
}

}  // namespace tkv
