#include "disc/make/missing_letters.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <compare>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <set>

#include "disc/make/text_fit.h"
#include "disc/plan/report.h"
#include "graphics/text.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

// Letters of one kind, as a sentence calls them, and the package of their font; empty for none.
struct Script {
    std::string letters;
    std::string package;
    auto operator<=>(const Script&) const = default;
};

UScriptCode scriptOf(UChar32 letter) {
    UErrorCode status = U_ZERO_ERROR;
    return uscript_getScript(letter, &status);
}

// Signs that all scripts share, or several.
bool isShared(UScriptCode script) {
    return script == USCRIPT_COMMON || script == USCRIPT_INHERITED;
}

constexpr std::initializer_list<UScriptCode> kKana{USCRIPT_HIRAGANA, USCRIPT_KATAKANA};

bool isOneOf(std::initializer_list<UScriptCode> scripts, UScriptCode script) {
    return std::ranges::find(scripts, script) != scripts.end();
}

bool holds(const std::string& text, std::initializer_list<UScriptCode> scripts) {
    const icu::UnicodeString letters = icu::UnicodeString::fromUTF8(text);
    for (std::int32_t i = 0; i < letters.length(); i = letters.moveIndex32(i, 1)) {
        if (isOneOf(scripts, scriptOf(letters.char32At(i)))) return true;
    }
    return false;
}

bool isEastAsian(UChar32 letter, UScriptCode script) {
    const int width = u_getIntPropertyValue(letter, UCHAR_EAST_ASIAN_WIDTH);
    return isOneOf({USCRIPT_HAN, USCRIPT_HANGUL, USCRIPT_BOPOMOFO}, script) ||
           isOneOf(kKana, script) ||
           (isShared(script) &&
            (width == U_EA_WIDE || width == U_EA_FULLWIDTH || width == U_EA_HALFWIDTH));
}

// By what else the text is written in.
std::string eastAsianLetters(const std::string& text, bool isJapanese) {
    if (holds(text, {USCRIPT_HANGUL})) return "Korean letters";
    if (holds(text, kKana)) return "Japanese letters";
    if (!holds(text, {USCRIPT_HAN, USCRIPT_BOPOMOFO})) return "East Asian signs";
    return isJapanese ? "Japanese letters" : "Chinese characters";
}

bool isEmoji(UChar32 letter) {
    return u_hasBinaryProperty(letter, UCHAR_EMOJI) != 0 ||
           u_hasBinaryProperty(letter, UCHAR_EMOJI_COMPONENT) != 0;
}

// `isJapanese`: whether the disc is, whatever the text may be.
Script scriptOf(UChar32 letter, const std::string& text, bool isJapanese) {
    const UScriptCode script = scriptOf(letter);
    if (script == USCRIPT_UNKNOWN) return {"private or unknown characters", ""};
    if (isEmoji(letter)) return {"emoji", "fonts-noto-color-emoji"};
    // These packages' fonts are older than what Unicode has had since its version 13.
    UVersionInfo age;
    u_charAge(letter, age);
    const bool hasFont = age[0] < 13;
    if (isEastAsian(letter, script))
        return {eastAsianLetters(text, isJapanese), hasFont ? "fonts-noto-cjk" : ""};
    std::string letters = "symbols";
    if (!isShared(script)) letters = fmt::format("{} letters", uscript_getName(script));
    std::ranges::replace(letters, '_', ' ');
    return {letters, hasFont ? "fonts-noto-core" : ""};
}

// As it stands in menus or on the cover, in one line.
std::string shownText(const std::string& text) {
    const std::string line = fmt::format("{}", fmt::join(linesToDraw(text), " "));
    return std::string(firstCharacters(line, kMostCharacters));
}

// The texts of menus, jacket and cover, each once: first what the person has called things.
std::vector<std::string> textsOf(const DiscPlan& plan, const Labels& labels) {
    std::vector<std::string> texts;
    std::set<std::string> known;
    const auto add = [&](const std::string& text) {
        if (known.insert(text).second) texts.push_back(shownText(text));
    };
    add(plan.title);
    for (const DiscFilm& film : plan.films) {
        add(film.caption);
        for (const Chapter& chapter : film.conversion.chapters)
            add(chapter.name);
    }
    for (const MenuPage& page : plan.pages) {
        for (const Button& button : page.buttons)
            add(button.text);
    }
    add(jacketLine(plan, labels.minutes));
    return texts;
}

struct Lack {
    Script script;
    std::string text;  // the first
    int others = 0;    // texts

    std::string line() const {
        const std::string more =
            others == 0 ? "" : fmt::format(" and {} other text{}", others, others == 1 ? "" : "s");
        return fmt::format("No installed font has the {} of \"{}\"{}{}", script.letters, text, more,
                           script.package.empty() ? ", and no package is known that has them"
                                                  : ": install " + script.package);
    }
};

}  // namespace

std::vector<std::string> missingLetterLines(const DiscPlan& plan, const Labels& labels) {
    const std::vector<std::string> texts = textsOf(plan, labels);
    const bool isJapanese =
        plan.language == "ja" ||
        std::ranges::any_of(texts, [](const std::string& text) { return holds(text, kKana); });
    std::vector<Lack> lacks;
    for (const std::string& text : texts) {
        std::set<Script> scripts;
        for (const char32_t letter : lettersWithoutFont(text))
            scripts.insert(scriptOf(static_cast<UChar32>(letter), text, isJapanese));
        for (const Script& script : scripts) {
            const auto lack = std::ranges::find(lacks, script, &Lack::script);
            if (lack == lacks.end()) {
                lacks.push_back({script, text});
            } else {
                ++lack->others;
            }
        }
    }
    std::vector<std::string> lines;
    std::ranges::transform(lacks, std::back_inserter(lines), &Lack::line);
    return lines;
}

}  // namespace tkv::disc
