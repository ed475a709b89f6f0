#include "disc/film/languages.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace tkv::disc {

namespace {

// The languages that librarians abbreviate by their English names, which ICU does not know.
struct Abbreviation {
    std::string_view three, two;
};
constexpr std::array<Abbreviation, 20> kBibliographic{{
    {"alb", "sq"}, {"arm", "hy"}, {"baq", "eu"}, {"bur", "my"}, {"chi", "zh"},
    {"cze", "cs"}, {"dut", "nl"}, {"fre", "fr"}, {"geo", "ka"}, {"ger", "de"},
    {"gre", "el"}, {"ice", "is"}, {"mac", "mk"}, {"mao", "mi"}, {"may", "ms"},
    {"per", "fa"}, {"rum", "ro"}, {"slo", "sk"}, {"tib", "bo"}, {"wel", "cy"},
}};

}  // namespace

std::string discLanguage(const std::string& tag) {
    std::array<char, 16> buffer{};
    UErrorCode error = U_ZERO_ERROR;
    uloc_getLanguage(tag.c_str(), buffer.data(), buffer.size(), &error);
    if (U_FAILURE(error) != 0 || error == U_STRING_NOT_TERMINATED_WARNING) return "xx";

    const std::string_view language = buffer.data();
    const auto* const row = std::ranges::find(kBibliographic, language, &Abbreviation::three);
    if (row != kBibliographic.end()) return std::string(row->two);
    return language.size() == 2 ? std::string(language) : "xx";
}

}  // namespace tkv::disc
