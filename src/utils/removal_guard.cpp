#include "utils/removal_guard.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

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
    std::error_code error;
    const bool isHome = kind == ItemKind::folder && !fs::is_symlink(location, error) &&
                        fs::equivalent(location, home, error);
    return isHome || isGuardedPlace(location, kind, guardedPlaces(kind, home, login));
}

}  // namespace tkv
