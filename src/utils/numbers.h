#pragma once

#include <cstdint>
#include <string>

// A number read from a text, and one rounding rule.

namespace tkv {

/// The number at the start of a text: white space is skipped, then come a sign, if any, and decimal
/// digits up to the first other character. No digits give 0; the result saturates at the limits of
/// 32 bits.
std::int32_t intValue(const std::string& text);

/// Rounds to a multiple of `multiple` (not 0): up from half of it, the half truncated to an
/// integer, down below. The result is logged each time something had to be rounded.
std::int32_t nbMultipleArrondi(std::int32_t value, std::int32_t multiple);

}  // namespace tkv
