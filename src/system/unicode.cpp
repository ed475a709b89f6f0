#include "system/unicode.h"

#include <unicode/datefmt.h>
#include <unicode/dtptngen.h>
#include <unicode/localebuilder.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

namespace tkv {

namespace {

// The user's locale for dates, by the C library's precedence of variables. Of what follows the name
// ("sr_RS.UTF-8@latin") ICU understands only a script. The C locale has no language: English.
icu::Locale dateLocale() {
    std::string name;
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): see makeDisc
        if (value == nullptr || *value == '\0') continue;
        name = value;
        break;
    }
    const std::size_t at = name.find('@');
    const std::string modifier = at == std::string::npos ? "" : name.substr(at + 1);
    name.erase(std::min(name.find_first_of(".@"), name.size()));
    if (name == "C" || name == "POSIX") return icu::Locale::getUS();
    icu::Locale locale(name.c_str());
    const int script = u_getPropertyValueEnum(UCHAR_SCRIPT, modifier.c_str());
    if (script != UCHAR_INVALID_CODE) {
        UErrorCode status = U_ZERO_ERROR;
        locale = icu::LocaleBuilder()
                     .setLocale(locale)
                     .setScript(uscript_getShortName(static_cast<UScriptCode>(script)))
                     .build(status);
    }
    const bool hasLanguage = !locale.isBogus() && *locale.getLanguage() != '\0';
    return hasLanguage ? locale : icu::Locale::getUS();
}

// What is not UTF-8 becomes U+FFFD, and so does a NUL, which would terminate the string in C
// libraries.
icu::UnicodeString decoded(std::string_view text) {
    return icu::UnicodeString::fromUTF8(text).findAndReplace(UChar32{0}, UChar32{0xFFFD});
}

std::string encoded(const icu::UnicodeString& text) {
    // ICU's strings do not throw: they are bogus, and read as empty, when memory is short.
    if (text.isBogus()) throw std::bad_alloc();
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

// Georgian capitals (Mtavruli) are for headlines and in few fonts: Mkhedruli letters replace them.
icu::UnicodeString withEverydayGeorgian(icu::UnicodeString text) {
    for (int32_t i = 0; i < text.length(); ++i) {
        if (ublock_getCode(text[i]) != UBLOCK_GEORGIAN_EXTENDED) continue;
        text.setCharAt(i, static_cast<char16_t>(u_tolower(text[i])));
    }
    return text;
}

std::string upperCased(const icu::UnicodeString& text, const icu::Locale& locale) {
    return encoded(withEverydayGeorgian(icu::UnicodeString(text).toUpper(locale)));
}

bool endsLine(char16_t unit) {
    return (unit >= u'\n' && unit <= u'\r') || unit == u'\u0085' || unit == u'\u2028' ||
           unit == u'\u2029';
}

void dropBlanksAtEnd(icu::UnicodeString& line) {
    int32_t length = line.length();
    while (length > 0 && u_isUWhiteSpace(line[length - 1]))
        --length;
    line.truncate(length);
}

// Whether a byte of valid UTF-8 is a lead byte.
bool isLeadByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    // Invalid sequences are decoded as U+FFFD and do not survive the round trip.
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

std::string printable(std::string_view text) {
    icu::UnicodeString line = decoded(text);
    for (std::int32_t i = 0; i < line.length(); ++i) {
        if (u_iscntrl(line.charAt(i)) != 0) line.setCharAt(i, 0xFFFD);
    }
    return encoded(line);
}

std::string firstColumns(std::string_view text, int columns) {
    const icu::UnicodeString line = decoded(text);
    std::int32_t end = 0;
    for (; end < line.length(); end = line.moveIndex32(end, 1)) {
        const int width = u_getIntPropertyValue(line.char32At(end), UCHAR_EAST_ASIAN_WIDTH);
        columns -= width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
        if (columns < 0) break;
    }
    return encoded(line.tempSubString(0, end));
}

std::string upperCased(std::string_view text) {
    return upperCased(decoded(text), icu::Locale::getRoot());
}

std::string capitalized(std::string_view text) {
    return encoded(withEverydayGeorgian(decoded(text).toTitle(nullptr, icu::Locale::getRoot())));
}

std::string latinLetters(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Transliterator> writer(
        icu::Transliterator::createInstance("Any-Latin; Latin-ASCII", UTRANS_FORWARD, status));
    icu::UnicodeString letters = decoded(text);
    if (writer && U_SUCCESS(status) != 0) writer->transliterate(letters);
    return encoded(letters);
}

std::string upperCasedLongDate(std::time_t time) {
    const icu::Locale locale = dateLocale();
    // For a locale that it does not know ICU takes the process's default, which would come from the
    // same environment.
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale::getUS(), status);
    const std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kLong, locale));
    if (!format) return {};
    // The C library knows every form of $TZ, ICU only zone names: ICU gets the local time as GMT.
    std::tm local{};
    localtime_r(&time, &local);
    format->setTimeZone(*icu::TimeZone::getGMT());
    icu::UnicodeString date;
    return upperCased(format->format(static_cast<UDate>(timegm(&local)) * 1000.0, date), locale);
}

std::string dateAndTime(const std::tm& local, const std::string& language) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale locale(language.c_str());
    const std::unique_ptr<icu::DateTimePatternGenerator> patterns(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    if (U_FAILURE(status)) return {};
    const icu::UnicodeString pattern = patterns->getBestPattern(u"yMMMMdHmm", status);
    icu::SimpleDateFormat format(pattern, locale, status);
    if (U_FAILURE(status)) return {};
    format.setTimeZone(*icu::TimeZone::getGMT());
    std::tm time = local;
    icu::UnicodeString text;
    return encoded(format.format(static_cast<UDate>(timegm(&time)) * 1000.0, text));
}

std::vector<std::string> linesToDraw(std::string_view text) {
    std::vector<std::string> lines;
    icu::UnicodeString line;
    const auto endLine = [&] {
        dropBlanksAtEnd(line);
        if (!lines.empty() || !line.isEmpty()) lines.push_back(encoded(line));
        line.remove();
    };
    const icu::UnicodeString all = decoded(text);
    for (int32_t i = 0; i < all.length(); ++i) {
        const char16_t unit = all[i];
        if (unit == u'\r' && all[i + 1] == u'\n') continue;
        if (endsLine(unit)) {
            endLine();
        } else if ((unit == u'\t' || !u_isISOControl(unit)) &&
                   !(lines.empty() && line.isEmpty() && u_isUWhiteSpace(unit))) {
            line += unit;
        }
    }
    endLine();
    while (!lines.empty() && lines.back().empty())
        lines.pop_back();
    return lines;
}

}  // namespace tkv
