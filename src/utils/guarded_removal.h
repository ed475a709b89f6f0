#pragma once

#include <optional>
#include <string>
#include <vector>

// A delete that refuses paths whose removal could take a home, a volume or the whole disk along.

namespace tkv {

/// The folder that holds the item the path belongs to: a recording's bundle and the iDVD share of a
/// movie project count as one item. Empty for no path or a bare name.
std::string fichier_dirname(const std::optional<std::string>& path);

/// The ".eyetv" bundle that directly holds the path, or else the path as it is.
std::optional<std::string> EyetvBundle(const std::optional<std::string>& path);

/// The text, cut to its first 50 characters and " […]" when it has more.
std::string shortDescription(const std::string& text);

enum class RemovalVerdict {
    allowed,
    refused,          ///< a piece of the home folder's path, or the root
    refusedDirname,   ///< lies directly in a folder that holds homes, volumes or the system
    refusedWildcard,  ///< begins with a wildcard that some shell has left unexpanded
};

/// Whether `path` (tilde expanded) may be removed, by its text alone. `home`: the user's home
/// folder; `login`: the user's login name. Writes the lines of fichier_dirname.
RemovalVerdict removalVerdict(const std::string& path, const std::string& home,
                              const std::string& login);

enum class Removable {
    anything,
    oneFile,  ///< Leaves a folder, though one may come while the removal is under way.
};

/// Removes a file, a link (never what it points to) or a folder with all it holds, at a path whose
/// leading tilde is expanded. What cannot be removed is moved to the Trash.
/// Refused is what removalVerdict refuses, and what isGuarded guards at the place where the item
/// really is, as a refusedDirname.
/// True when nothing is there afterwards, and also for a file that may not be opened, or that is no
/// folder though the path ends in a slash: both are left alone. False for a refused path and for
/// what neither could be removed nor moved. Nothing on the disk makes it throw.
bool rmCocoa(const std::optional<std::string>& path, Removable what = Removable::anything);

}  // namespace tkv
