#pragma once

#include <string>

namespace tkv {

/// Moves one file or folder to the desktop's Trash; false when that was not possible.
bool moveToTrash(const std::string& path);

}  // namespace tkv
