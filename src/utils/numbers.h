#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Numbers and lines read from texts, and one rounding rule.

namespace tkv {

/// The number at the start of a text: white space is skipped, then come a sign, if any, and decimal
/// digits up to the first other character. No digits give 0; beyond 32 bits the limit is answered.
std::int32_t intValue(const std::string& text);

/// Rounds to a multiple of `multiple` (not 0): up from half of it, the half truncated to an
/// integer, down below. The result is logged each time something had to be rounded.
std::int32_t nbMultipleArrondi(std::int32_t value, std::int32_t multiple);

/// A dotted version as one number: the second part counts hundredths, the third ten-thousandths,
/// later ones nothing; "1.2.3" gives 1.0203.
float floatFromString(const std::string& text);

/// The lines of a text that are not empty, split at every Unicode newline; blanks make a line.
std::vector<std::string> linesOfText(const std::optional<std::string>& text);

}  // namespace tkv
