#pragma once

#include <string>

namespace tkv::disc {

/// The file that tells a folder of this program from all others.
inline constexpr const char* kMarker = ".tkvDvdDisc";

/// Makes a folder and marks it as this program's, or takes one that is empty or marked already.
/// Throws DiscError for any other, in which nothing is touched. `path`: absolute.
void ownFolder(const std::string& path);

}  // namespace tkv::disc
