#pragma once

#include <optional>
#include <string>

// Text files, written as UTF-8. None of these throws.

namespace tkv {

/// Appends the text to a file, made when it is missing; the path's leading tilde is expanded. What
/// is in a file stays there. Invalid parts of the text are written as U+FFFD.
/// `withBOM`: a file that is made begins with the byte-order mark. Only a file that is made counts
/// as unfinished (system/unfinished_file.h) meanwhile.
/// True when all the text was written; false also for no or an empty path or text.
bool ecritureFichier(const std::optional<std::string>& path, const std::optional<std::string>& text,
                     bool withBOM);

/// Writes the byte-order mark over the first three bytes of a file, at a path taken as it stands.
/// False only for no path: a file that cannot be opened is left alone.
bool fixBOM(const std::optional<std::string>& path);

}  // namespace tkv
