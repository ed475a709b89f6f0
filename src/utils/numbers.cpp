#include "utils/numbers.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "platform/log.h"
#include "platform/verbose.h"

namespace tkv {

std::int32_t intValue(const std::string& text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(value, Limits::min(), Limits::max()));
}

std::int32_t nbMultipleArrondi(std::int32_t value, std::int32_t multiple) {
    // In 64 bits neither the remainder nor the sum overflows at the limits of 32.
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

float floatFromString(const std::string& text) {
    float value = 0.0F;
    std::size_t start = 0;
    for (int place = 0; place < 3; ++place) {
        float part = static_cast<float>(intValue(text.substr(start)));
        for (int i = 0; i < place; ++i)
            part /= 100.0F;
        value += part;
        const std::size_t dot = text.find('.', start);
        if (dot == std::string::npos) break;
        start = dot + 1;
    }
    if (isVerbose()) logLine("returnedFloat {:f}", value);
    return value;
}

std::vector<std::string> linesOfText(const std::optional<std::string>& text) {
    static constexpr std::array<std::string_view, 7> kNewlines = {"\n",     "\v",     "\f",    "\r",
                                                                  "\u0085", "\u2028", "\u2029"};
    std::vector<std::string> lines;
    std::string_view rest = text ? std::string_view(*text) : std::string_view();
    std::size_t length = 0;
    const auto endLine = [&](std::size_t newline) {
        if (length > 0) lines.emplace_back(rest.substr(0, length));
        rest.remove_prefix(length + newline);
        length = 0;
    };
    while (length < rest.size()) {
        const auto newline = std::find_if(
            kNewlines.begin(), kNewlines.end(),
            [&](std::string_view candidate) { return rest.substr(length).starts_with(candidate); });
        if (newline == kNewlines.end()) {
            ++length;
        } else {
            endLine(newline->size());
        }
    }
    endLine(0);
    return lines;
}

}  // namespace tkv
