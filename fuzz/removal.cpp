#include <algorithm>

#include "fuzzing.h"
#include "system/paths.h"
#include "utils/guarded_removal.h"
#include "utils/removal_guard.h"

// Any words as a path, a home, a login name and guarded places: only the decision, nothing is
// removed, or even looked at.

using namespace tkv;
using namespace tkv::fuzz;

namespace {

constexpr std::string_view kHostFolder = "/TKVauthoring";

bool isAtOrAbove(const std::string& folder, const std::string& path) {
    return path == folder || path.starts_with(folder + "/");
}

void checkVerdict(const std::string& path, const std::string& home, const std::string& login) {
    if (removalVerdict(path, home, login) != RemovalVerdict::allowed) return;
    // Of a path with a trailing slash the text tells less, and the item's location the rest.
    const bool hasSlash = path.ends_with('/');
    for (const std::string& kept : {home, "/Users/" + login}) {
        const bool isPiece = !path.empty() && kept.find(path) != std::string::npos;
        require(hasSlash || !isPiece, "no piece of the home's path goes");
        const std::string folder = hasSlash ? path.substr(0, path.size() - 1) : path;
        require(!path.starts_with('/') || !isAtOrAbove(folder, kept), "no home goes");
    }
    const std::string name = lastComponent(path);
    require(name != "." && name != ".." && path != "/", "a name is a name");
    if (path.starts_with(kHostFolder)) return;
    require(path.ends_with(".eyetv") || path.find(".eyetv/") != std::string::npos ||
                path.find("iMovieProject") != std::string::npos ||
                (parentFolder(path) != "/" && parentFolder(path) != "/Volumes" &&
                 parentFolder(path) != "/Users"),
            "nothing directly in the root goes");
    require(!path.starts_with('*') && !path.starts_with("/*"), "no wildcard goes");
}

void checkPlace(const std::string& location, ItemKind kind, const GuardedPlaces& places) {
    if (isGuardedPlace(location, kind, places)) return;
    require(kind != ItemKind::other, "no device goes");
    const bool isHost = location.starts_with(kHostFolder);
    for (const std::string& root : places.roots)
        require(isHost || parentFolder(location) != root, "nothing directly in a root goes");
    if (kind != ItemKind::folder) return;
    require(places.mountPoints.has_value(), "no folder goes where mounts are unknown");
    for (const auto* const kept : {&places.holders, &places.homes, &*places.mountPoints}) {
        require(std::ranges::none_of(
                    *kept, [&](const std::string& path) { return isAtOrAbove(location, path); }),
                "no folder goes that holds what must stay");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    scratchFolder();
    Input input(data, size);
    const auto kind = static_cast<ItemKind>(input.below(4));
    const bool knowsMounts = input.flag();
    const std::string path = input.word();
    const std::string home = "/home/" + input.word();
    const std::string login = input.word();
    checkVerdict(path, home, login);
    GuardedPlaces places{{"/", "/Volumes", "/Users"}, {"/home", "/mnt"}, {home, "/root"}, {}};
    if (knowsMounts) places.mountPoints.emplace();
    while (!input.isAtEnd()) {
        std::string place = input.word();
        if (knowsMounts) places.mountPoints->push_back(place);
        places.homes.push_back("/" + place);
    }
    // As itemLocation returns it: absolute, without a trailing slash.
    std::string location = path.starts_with('/') ? path : "/" + path;
    while (location.size() > 1 && location.ends_with('/'))
        location.pop_back();
    checkPlace(location, kind, places);
    return 0;
}
