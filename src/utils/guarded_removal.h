#pragma once

#include <optional>
#include <string>

// A delete that refuses the paths whose loss could take a home, a volume or the whole disk along.

namespace tkv {

enum class RemovalVerdict {
    allowed,
    refused,         ///< a piece of the home folder's path, or the root
    refusedDirname,  ///< lies directly in a folder that holds homes, volumes or the system
    refusedJoker,    ///< begins with a wild card that some shell has left unexpanded
};

/// Whether `path` (tilde expanded) may be removed. `home`: the user's home folder; `login`: the
/// user's login name. Looks at the disk at most, changes nothing; writes no line of its own.
RemovalVerdict removalVerdict(const std::string& path, const std::string& home,
                              const std::string& login);

/// Removes a file, a link (never what it points to) or a folder with all it holds, at a path whose
/// leading tilde is expanded. What cannot be removed is moved to the Trash.
/// True when nothing is there afterwards, and also for a file that may not be opened, which is
/// left alone; false for a refused path and for what stayed in spite of both ways. Nothing
/// on the disk makes it throw; an installation without the desktop module has no Trash, and does.
bool rmCocoa(const std::optional<std::string>& path);

}  // namespace tkv
