#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tkv::disc {

/// The one of some names that somebody has probably meant with a word: at most two of its letters
/// are missing, too many, others or swapped, and fewer than half. Empty when there is none.
std::string nearestName(std::string_view word, const std::vector<std::string>& names);

}  // namespace tkv::disc
