#pragma once

#include <functional>
#include <string>
#include <vector>

#include "composer/menu_request.h"

namespace tkv {

/// What makes the picture; true when it could.
using Composer = std::function<bool(const MenuRequest&)>;

/// Reads a command line (without the program's name; words of any bytes), sets the verbose flag and
/// calls `composer` once. Banner, complaints and usage go to the standard error stream.
/// Answers the exit status: 0 when the composer answered true, or else 1. Without a usable -mode,
/// without -o, and with -h, the composer is not called.
int runFrontEnd(const std::vector<std::string>& words, const Composer& composer);

}  // namespace tkv
