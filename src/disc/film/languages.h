#pragma once

#include <string>

namespace tkv::disc {

/// The two letters of ISO 639-1 of a language that a film names in two or three letters ("fra",
/// "ger", "en-US"), the only ones that a disc can name; "xx" for any other.
std::string discLanguage(const std::string& tag);

}  // namespace tkv::disc
