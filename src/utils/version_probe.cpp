#include "utils/version_probe.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "system/description.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/existence.h"
#include "utils/numbers.h"
#include "utils/tool_runner.h"

namespace tkv {

static constexpr std::size_t kLongestAnswer = std::size_t{1} << 20;

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
    verboseLine("returnedFloat {:f}", value);
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

float versionSpumux(bool requireSpumux, const std::string& resources,
                    std::chrono::milliseconds patience) {
    if (resources.empty()) return 0.0F;
    const std::string tools = joinPath(resources, "tools");
    const std::string spumux = joinPath(tools, "spumux");
    if (!fileExists(requireSpumux ? spumux : joinPath(tools, "dvdauthor"))) return 0.0F;
    const PipelineLimits limits{kLongestAnswer, patience};
    const auto output = taskArrayPipes({spumux, "-h"}, &limits);
    verboseLine("versionSpumux       : {}", describe(output));
    if (!output) return 0.0F;
    float version = 0.0F;
    for (const std::string& line : linesOfText(output)) {
        const std::size_t start = line.find("version ");
        if (start == std::string::npos) continue;
        // With the word before it the major number parses as 0, which is the scale of the result.
        version = floatFromString(line.substr(start));
        if (version > 0.0F) break;
    }
    verboseLine("versionSpumuxDvdauth: {:f}", version);
    return version;
}

}  // namespace tkv
