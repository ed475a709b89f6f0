#pragma once

#include <string>

namespace tkv::disc {

/// The two letters of ISO 639-1 of a language that a film names in two or three letters ("fra",
/// "ger", "en-US"), the only ones that a disc can name; "xx" for any other.
std::string discLanguage(const std::string& tag);

/// The same of what somebody may write for a language: two or three letters, or its name in English
/// or in itself ("French", "français"), in any letter case; "xx" for all else. `word`: UTF-8.
std::string languageOfWord(const std::string& word);

/// What a language of two letters calls itself, as a list shows it: "Deutsch", "Français"; empty of
/// "xx" and others that have no name.
std::string ownNameOf(const std::string& language);

/// Whether the text is two letters of ISO 639-1 that stand for a language.
bool isLanguage(const std::string& text);

}  // namespace tkv::disc
