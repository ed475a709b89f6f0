#pragma once

#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace tkv {

/// Whether the bytes are valid UTF-8; a NUL is.
bool isUtf8(std::string_view bytes);

/// The text as valid UTF-8: invalid bytes (a stray one, a truncated sequence) and each NUL are
/// replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// Number of code points in a valid UTF-8 text.
std::size_t characterCount(std::string_view text);

/// The first `count` code points of a valid UTF-8 text.
std::string_view firstCharacters(std::string_view text, std::size_t count);

/// The text as valid UTF-8 for a line of a terminal: control characters are replaced by U+FFFD.
std::string printable(std::string_view text);

/// The beginning of a printable text that a terminal shows in `columns` columns; of East Asian
/// scripts most characters take two.
std::string firstColumns(std::string_view text, int columns);

/// Upper case by Unicode's full case mapping, independent of the locale: "straße" gives "STRASSE",
/// and "i" gives "I" for a Turkish user too. Georgian keeps its Mkhedruli letters.
/// The text may be any bytes; the result is valid UTF-8.
std::string upperCased(std::string_view text);

/// Title case, the other letters lower case, by Unicode's word boundaries: "l'été" gives "L'été".
/// Otherwise as upperCased.
std::string capitalized(std::string_view text);

/// The text transliterated to Latin letters without accents, as far as ICU knows its script: "Un
/// été à Αθήνα" gives "Un ete a Athena". The text may be any bytes; what has no such letters stays
/// in it.
std::string latinLetters(std::string_view text);

/// The local date of `time` in the long style of the user's date language, in that language's upper
/// case, such as "1 AOÛT 2026"; in English where ICU does not know that language.
std::string upperCasedLongDate(std::time_t time);

/// A day and a time of day in the style of a language, such as "12. Juli 2024, 18:42". `local`: of
/// the user's time zone. `language`: a locale of ICU's, or two letters.
std::string dateAndTime(const std::tm& local, const std::string& language);

/// The lines of a text as they are drawn: without control characters but tabs, blanks at their
/// ends, blanks before the first, and blank lines before the first and after the last. The text may
/// be any bytes; the lines are valid UTF-8, and none where nothing is left.
std::vector<std::string> linesToDraw(std::string_view text);

}  // namespace tkv
