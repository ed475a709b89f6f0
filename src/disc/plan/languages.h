#pragma once

#include <string>
#include <vector>

#include "disc/plan/plan.h"

namespace tkv::disc {

/// A language that a viewer can choose.
struct LanguageChoice {
    std::string caption;  ///< its own name: "Deutsch"
    Action action;
};

/// What a viewer can choose of a film: its sound, or its subtitles.
struct LanguageList {
    std::string title;
    std::vector<LanguageChoice> choices;
};

/// None of a film of one sound track and one language of subtitles at most. Forced subtitles are no
/// choice: a film shows them by itself.
std::vector<LanguageList> languageLists(const DiscFilm& film, const Labels& labels);

}  // namespace tkv::disc
