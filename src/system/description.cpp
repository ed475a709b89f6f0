#include "system/description.h"

#include <fmt/format.h>
#include <unicode/unistr.h>

#include <algorithm>

#include "system/unicode.h"

namespace tkv {

namespace {

bool isBare(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string escaped(char16_t unit) {
    switch (unit) {
        case u'"':
            return "\\\"";
        case u'\\':
            return "\\\\";
        case u'\n':
            return "\\n";
        case u'\t':
            return "\\t";
        case u'\r':
            return "\\r";
        default:
            break;
    }
    if (unit >= u' ' && unit < u'\x7F') return {static_cast<char>(unit)};
    return fmt::format("\\U{:04x}", static_cast<unsigned>(unit));
}

std::string quotedUnlessBare(const std::string& text) {
    if (!text.empty() && std::all_of(text.begin(), text.end(), isBare)) return text;
    const auto units = icu::UnicodeString::fromUTF8(validUtf8(text));
    std::string quoted = "\"";
    for (int i = 0; i < units.length(); ++i)
        quoted += escaped(units[i]);
    return quoted + '"';
}

}  // namespace

std::string describe(const std::optional<std::string>& text) {
    return text.value_or("nil");
}

std::string describe(const std::vector<std::string>& list) {
    std::string lines;
    for (const std::string& item : list) {
        lines += fmt::format("{}\n    {}", lines.empty() ? "" : ",", quotedUnlessBare(item));
    }
    return "(" + lines + "\n)";
}

std::string describe(const std::optional<std::vector<std::string>>& list) {
    return describe(list.value_or(std::vector<std::string>{}));
}

std::string describeLists(const std::vector<std::vector<std::string>>& lists) {
    std::string lines;
    for (const std::vector<std::string>& list : lists) {
        lines += fmt::format("{}\n        ", lines.empty() ? "" : ",");
        for (const char c : describe(list)) {
            lines += c;
            if (c == '\n') lines += "    ";
        }
    }
    return "(" + lines + "\n)";
}

std::string describe(const std::vector<std::pair<std::string, std::string>>& dictionary) {
    std::string lines;
    for (const auto& [name, value] : dictionary) {
        lines += fmt::format("\n    {} = {};", quotedUnlessBare(name), quotedUnlessBare(value));
    }
    return "{" + lines + "\n}";
}

}  // namespace tkv
