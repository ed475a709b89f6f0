#pragma once

#include <string>

#include "system/module.h"

namespace tkv {

/// Moves one file or folder to the desktop's Trash; false when that was not possible, as where the
/// desktop module is not installed. `path`: without "..", which the desktop's libraries resolve by
/// the text alone.
bool moveToTrash(const std::string& path);

/// The desktop module's function table for this.
struct DesktopTrash {
    static constexpr const char* kSymbol = "tkvDesktopTrash";
    TableStamp stamp;
    decltype(&tkv::moveToTrash) moveToTrash;
};

}  // namespace tkv
