#pragma once

#include <string>

namespace tkv {

/// Moves one file or folder to the desktop's Trash; false when that was not possible. Throws
/// std::runtime_error where the desktop module is not installed.
bool moveToTrash(const std::string& path);

/// What the desktop module has for this.
struct DesktopTrash {
    static constexpr const char* kSymbol = "tkvDesktopTrash";
    decltype(&tkv::moveToTrash) moveToTrash;
};

}  // namespace tkv
