#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tkv::disc {

/// The texts of the menus. `language`: the two letters of ISO 639-1, which the disc names too.
struct Labels {
    std::string language;
    std::string playAll, playFilm;
    std::string previous, next;
    std::string menu;       ///< leads from a chapter menu or a further page back to the films
    std::string chapters;   ///< leads to the chapter menu of an only film
    std::string chapter;    ///< a chapter without a name; its number is put in at "{}"
    std::string title;      ///< one of a DVD's; its number is put in at "{}"
    std::string minutes;    ///< the jacket's line, with the playing time at "{}"
    std::string languages;  ///< leads to the choice of a film's sound and subtitles
    std::string sound, subtitles, noSubtitles;
    bool operator==(const Labels&) const = default;
};

/// What people call a label, on the command line and in project files.
struct LabelName {
    std::string_view name;
    std::string Labels::*text;
};
inline constexpr std::array<LabelName, 13> kLabelNames{{
    {"play-all", &Labels::playAll},
    {"play-film", &Labels::playFilm},
    {"previous", &Labels::previous},
    {"next", &Labels::next},
    {"menu", &Labels::menu},
    {"chapters", &Labels::chapters},
    {"chapter", &Labels::chapter},
    {"title", &Labels::title},
    {"minutes", &Labels::minutes},
    {"languages", &Labels::languages},
    {"sound", &Labels::sound},
    {"subtitles", &Labels::subtitles},
    {"no-subtitles", &Labels::noSubtitles},
}};

/// The label of a name; null for any other name.
std::string Labels::*labelNamed(std::string_view name);

/// All those names, with commas between.
std::string labelNames();

/// The labels in a language; English for one that is not in the table, and then `language` is "en".
/// `language`: two letters, or a locale such as "fr_CA.UTF-8", of which they are the first.
Labels labelsOf(std::string_view language);

/// Whether labelsOf knows it.
bool hasLabels(std::string_view language);

/// The languages that labelsOf knows: "de, en or fr".
std::string labelLanguages();

/// The labels in another language, but for those that somebody has worded; labels without a
/// language have no words yet.
Labels inLanguage(const Labels& labels, std::string_view language);

/// A label with a number put in at its first "{}"; the label as it is without one.
std::string withNumber(std::string_view label, int number);

}  // namespace tkv::disc
