#include "disc/project/settings.h"

#include "disc/project/languages.h"
#include "disc/project/names.h"

namespace tkv::disc {

namespace {

constexpr double kShortestChapter = 2;  // seconds
constexpr std::string_view kEvery = "every=";

// Which of two words it is, as no or yes; none for any other.
std::optional<bool> choice(const std::string& word, std::string_view no, std::string_view yes) {
    if (word == no) return false;
    if (word == yes) return true;
    return {};
}

bool setFormat(Project& project, const std::string& text) {
    for (const Standard standard : {Standard::pal, Standard::ntsc}) {
        if (text != factsOf(standard).name) continue;
        project.standard = standard;
        return true;
    }
    return false;
}

bool setChapters(Project& project, const std::string& text) {
    using Source = ChapterRule::Source;
    if (const auto isNone = choice(text, "marks", "none")) {
        project.chapters = {*isNone ? Source::none : Source::marks, 0};
        return true;
    }
    if (!text.starts_with(kEvery)) return false;
    const auto seconds = secondsOf(text.substr(kEvery.size()));
    if (!seconds || *seconds < kShortestChapter) return false;
    project.chapters = {Source::every, *seconds};
    return true;
}

std::string chaptersText(const ChapterRule& rule) {
    switch (rule.source) {
        case ChapterRule::Source::every:
            return std::string(kEvery) + timeText(rule.seconds);
        case ChapterRule::Source::none:
            return "none";
        default:
            return "marks";
    }
}

template <std::optional<std::string> Project::*member>
bool setText(Project& project, const std::string& text) {
    project.*member = text;
    return true;
}

template <std::optional<std::string> Project::*member>
bool setPath(Project& project, const std::string& text) {
    if (text.empty()) return false;
    return setText<member>(project, text);
}

template <std::optional<std::string> Project::*member>
std::optional<std::string> textOf(const Project& project) {
    return project.*member;
}

}  // namespace

std::span<const TextSetting> textSettings() {
    static const std::string languages = labelLanguages();
    static const std::string ofMenus = "of the menus: " + languages;
    static const std::array<TextSetting, 11> settings{{
        {"title", "TEXT", "heads the menus and names the disc", "a text", "Our summer", false,
         setText<&Project::title>, textOf<&Project::title>},
        {"background", "PICTURE", "picture behind the menus, or none; else the first film's",
         "the path of a picture", "background.jpg", true, setPath<&Project::background>,
         textOf<&Project::background>},
        {"music", "SOUND", "sound of the menus, or none; else the first film's",
         "the path of a sound", "music.flac", true, setPath<&Project::music>,
         textOf<&Project::music>},
        {"format", "", "pal or ntsc; else what most films suggest", "pal or ntsc", "pal", false,
         setFormat,
         [](const Project& project) -> std::optional<std::string> {
             if (!project.standard) return {};
             return std::string(factsOf(*project.standard).name);
         }},
        {"size", "DISC", "the blank disc: dvd5 (4.7 GB) or dvd9 (8.5 GB)", "dvd5 or dvd9", "",
         false,
         [](Project& project, const std::string& text) {
             const auto isLarge = choice(text, "dvd5", "dvd9");
             if (isLarge) project.size = *isLarge ? DiscSize::dvd9 : DiscSize::dvd5;
             return isLarge.has_value();
         },
         [](const Project& project) -> std::optional<std::string> {
             return project.size == DiscSize::dvd9 ? "dvd9" : "dvd5";
         }},
        {"chapters", "RULE", "marks (the films' own), none or every=5m",
         "marks, none or every=TIME, such as every=5m, every=90s or every=1:30", "", false,
         setChapters,
         [](const Project& project) -> std::optional<std::string> {
             return chaptersText(project.chapters);
         }},
        {"subtitles", "WHICH", "auto (on demand), none, or a language to show: fr",
         "auto, none or the two letters of a language", "", false,
         [](Project& project, const std::string& text) {
             if (text != kAuto && text != kNone && !isLanguage(text)) return false;
             project.subtitles = text;
             return true;
         },
         [](const Project& project) -> std::optional<std::string> { return project.subtitles; }},
        {"titles", "WHICH", "of DVDs: all, or only the longest", "all or longest", "", false,
         [](Project& project, const std::string& text) {
             const auto areAll = choice(text, "longest", "all");
             if (areAll) project.hasAllTitles = *areAll;
             return areAll.has_value();
         },
         [](const Project& project) -> std::optional<std::string> {
             return project.hasAllTitles ? "all" : "longest";
         }},
        {"volume", "HOW", "keep, or even for films of one loudness", "keep or even", "", false,
         [](Project& project, const std::string& text) {
             const auto isEven = choice(text, "keep", "even");
             if (isEven) project.evenVolume = *isEven;
             return isEven.has_value();
         },
         [](const Project& project) -> std::optional<std::string> {
             return project.evenVolume ? "even" : "keep";
         }},
        {"pitch", "HOW", "keep, or film: higher where 24 frames play as 25", "keep or film", "",
         false,
         [](Project& project, const std::string& text) {
             const auto isHigher = choice(text, "keep", "film");
             if (isHigher) project.keepsPitch = !*isHigher;
             return isHigher.has_value();
         },
         [](const Project& project) -> std::optional<std::string> {
             return project.keepsPitch ? "keep" : "film";
         }},
        {"language", "XX", ofMenus, languages, "", false,
         [](Project& project, const std::string& text) {
             if (!hasLabels(text)) return false;
             project.labels = inLanguage(project.labels, text);
             return true;
         },
         [](const Project& project) -> std::optional<std::string> {
             return project.labels.language;
         }},
    }};
    return settings;
}

}  // namespace tkv::disc
