#pragma once

#include <optional>
#include <string>

// Whether something is there. None of these throws or writes a line; no path gives false.

namespace tkv {

/// Whether the path, taken as it stands (a leading tilde means no home folder here), names a
/// folder, links followed.
bool folderExists(const std::optional<std::string>& path);

/// Whether the path, its leading tilde expanded, can be opened for reading, as a folder may be too,
/// or is a link to something that exists. A file that may not be read counts as absent.
bool fileExists(const std::optional<std::string>& path);

/// Notifies the desktop that a path has changed, where it needs that. File managers on Linux watch
/// the disk themselves (inotify), so that this does nothing.
void noteFileChanged(const std::optional<std::string>& path);

}  // namespace tkv
