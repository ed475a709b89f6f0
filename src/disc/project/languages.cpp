#include "disc/project/languages.h"

#include <unicode/locid.h>
#include <unicode/stringoptions.h>
#include <unicode/uloc.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "system/paths.h"

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

std::string folded(const icu::UnicodeString& name) {
    std::string utf8;
    return icu::UnicodeString(name).foldCase().toUTF8String(utf8);
}

// By their names in English and in themselves, those of two letters.
std::map<std::string, std::string> languagesByName() {
    std::map<std::string, std::string> languages;
    for (const char* const* code = uloc_getISOLanguages(); *code != nullptr; ++code) {
        const std::string_view letters = *code;
        if (letters.size() != 2) continue;
        for (const char* in : {"en", *code}) {
            icu::UnicodeString name;
            icu::Locale(*code).getDisplayLanguage(icu::Locale(in), name);
            languages.emplace(folded(name), letters);
        }
    }
    return languages;
}

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

std::string languageOfWord(const std::string& word) {
    static const std::map<std::string, std::string> byName = languagesByName();
    const auto named = byName.find(folded(icu::UnicodeString::fromUTF8(word)));
    if (named != byName.end()) return named->second;
    const std::size_t letters = std::min(word.find_first_of("-_"), word.size());
    if (letters != 2 && letters != 3) return "xx";
    const std::string code = discLanguage(word);
    const bool isCode =
        std::ranges::any_of(byName, [&](const auto& language) { return language.second == code; });
    return isCode ? code : "xx";
}

std::string ownNameOf(const std::string& language) {
    const icu::Locale locale(language.c_str());
    icu::UnicodeString name;
    locale.getDisplayLanguage(locale, name);
    std::string utf8;
    name.toTitle(nullptr, locale, U_TITLECASE_NO_LOWERCASE).toUTF8String(utf8);
    return asciiLowered(utf8) == language ? "" : utf8;
}

bool isLanguage(const std::string& text) {
    return text.size() == 2 && languageOfWord(text) == text;
}

}  // namespace tkv::disc
