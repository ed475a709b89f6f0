#pragma once

#include <optional>
#include <string>
#include <vector>

// Folders made and listed, items moved to the Trash. A leading tilde in a path is expanded. Nothing
// on the disk makes these throw; what they do is logged while the verbose flag is set, failures
// always.

namespace tkv {

/// Makes the folder and all missing parents; each that is made gets mode 0777 whatever the umask
/// says.
/// True when the folder is there afterwards; one that was there before keeps its mode.
bool mkdirCocoa(const std::optional<std::string>& path);

/// The full paths of all items in a folder, hidden ones included, in natural order. None when there
/// is no item or the folder cannot be listed.
std::optional<std::vector<std::string>> lsCocoa(const std::optional<std::string>& folder);

/// Moves one item to the Trash; nothing at a path that ends in "." or "..". Always true: ask
/// `fileExists` whether it went.
bool trashCocoa(const std::string& path);

}  // namespace tkv
