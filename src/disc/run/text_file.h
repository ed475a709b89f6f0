#pragma once

#include <string>
#include <string_view>

namespace tkv::disc {

/// What a text file holds; empty when it cannot be read.
std::string readText(const std::string& path);

/// Writes a text file; throws DiscError, and leaves none, when it could not be written whole.
void writeText(const std::string& path, std::string_view text);

}  // namespace tkv::disc
