#pragma once

#include <functional>
#include <string>
#include <vector>

#include "composer/menu_request.h"

namespace tkv {

/// Makes the picture; returns true on success.
using Composer = std::function<bool(const MenuRequest&)>;

/// Reads a command line (without the program's name; arguments of any bytes), sets the verbose flag
/// and calls `composer` once. Banner, error messages and usage go to the standard error stream.
/// Returns the exit status: 0 when the composer returned true, 1 otherwise. Without a usable -mode,
/// without -o, and with -h, the composer is not called.
int runFrontEnd(const std::vector<std::string>& words, const Composer& composer);

}  // namespace tkv
