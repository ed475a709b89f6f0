#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tkv::disc {

/// The languages of the tracks in a VobSub's index (.idx), two letters each, "xx" when unknown: of
/// those that show anything, which alone count as ffmpeg numbers them.
std::vector<std::string> tracksInIndex(std::string_view index);

/// The file with the pictures of an index, in its folder; empty when it is not there.
std::string unitsOfIndex(const std::string& index);

}  // namespace tkv::disc
