#pragma once

#include <string>

#include "platform/resources.h"

namespace tkv {

/// The version of the `spumux` program among the resources, minor and patch number only: 0.7.2
/// gives 0.0702. 0 when it tells none, and when the program that must be there is not: `spumux`
/// with `requireSpumux`, `dvdauthor` without.
float versionSpumux(bool requireSpumux, const std::string& resources = resourceFolder());

}  // namespace tkv
