#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tkv {

/// Where file systems are mounted, as absolute paths without links; none when the system does not
/// tell.
std::optional<std::vector<std::string>> mountPoints();

}  // namespace tkv
