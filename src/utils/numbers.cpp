#include "utils/numbers.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "system/log.h"
#include "system/verbose.h"

namespace tkv {

std::int32_t intValue(const std::string& text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(value, Limits::min(), Limits::max()));
}

std::int32_t nbMultipleArrondi(std::int32_t value, std::int32_t multiple) {
    // In 64 bits neither the remainder nor the sum of 32-bit values overflows.
    const std::int64_t remainder = std::int64_t{value} % multiple;
    if (remainder == 0) return value;
    const std::int64_t down = value - remainder;
    const std::int32_t half = multiple / 2;
    const bool below = static_cast<float>(half) > static_cast<float>(remainder);
    if (isVerbose()) {
        logLine("arrondiInferieur     : {}", down);
        logLine("nbMultipleArrondi    : arrondir {}", below ? "en-dessous" : "au dessus");
    }
    const auto rounded = static_cast<std::int32_t>(below ? down : down + multiple);
    logLine("nbMultipleArrondi    :-) {}", rounded);
    return rounded;
}

}  // namespace tkv
