#include "system/unicode.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace tkv {

namespace {

// The user's locale for what `category` governs, by the C library's order of variables. Codeset and
// modifier ("tr_TR.UTF-8@x") say nothing to ICU. The C locale has no language: it speaks English.
icu::Locale userLocale(const char* category) {
    std::string name;
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') continue;
        name = value;
        break;
    }
    name.erase(std::min(name.find_first_of(".@"), name.size()));
    if (name.empty() || name == "C" || name == "POSIX") name = "en_US";
    return {name.c_str()};
}

// What is not UTF-8 becomes U+FFFD, and so does a zero byte, which would end the text in the C
// libraries that it is handed to.
icu::UnicodeString decoded(std::string_view text) {
    return icu::UnicodeString::fromUTF8(text).findAndReplace(UChar32{0}, UChar32{0xFFFD});
}

std::string encoded(const icu::UnicodeString& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

// Whether a byte of valid UTF-8 begins a character.
bool isLeadByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    // What is not valid is decoded as U+FFFD and comes back as other bytes.
    return encoded(icu::UnicodeString::fromUTF8(bytes)) == bytes;
}

std::string validUtf8(std::string_view text) {
    return encoded(decoded(text));
}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isLeadByte));
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    for (std::size_t seen = 0; end < text.size(); ++end) {
        if (isLeadByte(text[end]) && ++seen > count) break;
    }
    return text.substr(0, end);
}

std::string upperCased(std::string_view text) {
    return encoded(decoded(text).toUpper(userLocale("LC_CTYPE")));
}

std::string capitalized(std::string_view text) {
    return encoded(decoded(text).toTitle(nullptr, userLocale("LC_CTYPE")));
}

std::string longDate(std::time_t time) {
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kLong, userLocale("LC_TIME")));
    if (!format) return {};
    // The C library knows every form of $TZ, ICU only zone names: ICU gets the local time as GMT.
    std::tm local{};
    localtime_r(&time, &local);
    format->setTimeZone(*icu::TimeZone::getGMT());
    icu::UnicodeString date;
    return encoded(format->format(static_cast<UDate>(timegm(&local)) * 1000.0, date));
}

}  // namespace tkv
