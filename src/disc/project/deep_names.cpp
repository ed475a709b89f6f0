#include "disc/project/deep_names.h"

#include <algorithm>

namespace tkv::disc {

namespace {

constexpr int kMostParts = 8;

// The length of the quoted text that `text` begins with, its quotes included.
std::size_t quotedLength(std::string_view text) {
    const char quote = text.front();
    const bool isLong = text.size() >= 3 && text[1] == quote && text[2] == quote;
    const std::string_view end = isLong ? text.substr(0, 3) : text.substr(0, 1);
    std::size_t at = end.size();
    while (at < text.size() && !text.substr(at).starts_with(end)) {
        if (!isLong && text[at] == '\n') return at;
        at += quote == '"' && text[at] == '\\' ? 2U : 1U;
    }
    at += end.size();
    // A long text may end with two quotes of its own.
    while (isLong && at < text.size() && text[at] == quote)
        ++at;
    return std::min(at, text.size());
}

}  // namespace

std::optional<int> lineOfDeepName(std::string_view text) {
    int line = 1;
    int parts = 1;
    for (std::size_t at = 0; at < text.size();) {
        const char byte = text[at];
        std::size_t length = 1;
        if (byte == '"' || byte == '\'') {
            length = quotedLength(text.substr(at));
        } else if (byte == '#') {
            length = std::min(text.find('\n', at), text.size()) - at;
        } else if (byte == '.') {
            if (++parts > kMostParts) return line;
        } else if (std::string_view("\n,={[").find(byte) != std::string_view::npos) {
            parts = 1;
        }
        const std::string_view passed = text.substr(at, length);
        line += static_cast<int>(std::ranges::count(passed, '\n'));
        at += length;
    }
    return {};
}

}  // namespace tkv::disc
