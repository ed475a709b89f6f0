#pragma once

#include <optional>
#include <string_view>

namespace tkv::disc {

/// The number of the first line of a TOML text that has a name of more than 8 parts, such as
/// "a.b.c": for each part there is a table in the one before it, and a parser that takes them away
/// again one inside the other needs as much of the stack. None when there is no such line.
std::optional<int> lineOfDeepName(std::string_view text);

}  // namespace tkv::disc
