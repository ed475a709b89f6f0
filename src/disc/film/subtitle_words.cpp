#include "disc/film/subtitle_words.h"

#include <algorithm>
#include <array>
#include <vector>

#include "disc/project/languages.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

struct Format {
    std::string_view extension, codec;
};
constexpr std::array<Format, 6> kFormats{{
    {"srt", "subrip"},
    {"ass", "ass"},
    {"ssa", "ass"},
    {"vtt", "webvtt"},
    {"idx", "dvd_subtitle"},
    {"sup", "hdmv_pgs_subtitle"},
}};

struct KindWord {
    std::string_view word;
    SubtitleKind kind;
};
// "hi" is Hindi, too.
constexpr std::string_view kAmbiguous = "hi";
constexpr std::array<KindWord, 7> kKindWords{{
    {"forced", SubtitleKind::forced},
    {"foreign", SubtitleKind::forced},
    {"sdh", SubtitleKind::hearing},
    {"cc", SubtitleKind::hearing},
    {kAmbiguous, SubtitleKind::hearing},
    {"commentary", SubtitleKind::commentary},
    {"comment", SubtitleKind::commentary},
}};

const KindWord* kindWord(std::string_view word) {
    const auto* const row = std::ranges::find(kKindWords, asciiLowered(word), &KindWord::word);
    return row == kKindWords.end() ? nullptr : row;
}

std::vector<std::string> splitAt(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        if (end > 0) parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

// Reads the words between a film's name and the extension.
class Words {
  public:
    explicit Words(FilmSubtitle& subtitle) : subtitle_(subtitle) {}

    // Takes what stands between two dots. False when something in it says nothing here.
    bool take(const std::string& part) {
        if (takeWord(part)) return true;
        bool areAllKnown = true;
        for (const std::string& word : splitAt(part, " _-()[],+"))
            areAllKnown = takeWord(word) && areAllKnown;
        return areAllKnown;
    }

    void finish() {
        if (!isAmbiguous_) return;
        if (subtitle_.language == "xx") {
            subtitle_.language = kAmbiguous;
        } else if (subtitle_.kind == SubtitleKind::normal) {
            subtitle_.kind = SubtitleKind::hearing;
        }
    }

  private:
    bool takeWord(const std::string& word) {
        const std::string lowered = asciiLowered(word);
        if (lowered == kAmbiguous) return isAmbiguous_ = true;
        if (lowered == "default") return subtitle_.isDefault = true;
        if (const KindWord* const found = kindWord(word)) {
            if (subtitle_.kind != SubtitleKind::forced) subtitle_.kind = found->kind;
            return true;
        }
        const std::string language = languageOfWord(word);
        if (language == "xx") return false;
        subtitle_.language = language;
        return true;
    }

    FilmSubtitle& subtitle_;
    bool isAmbiguous_ = false;
};

}  // namespace

SubtitleKind kindInTitle(std::string_view title) {
    for (const std::string& word : splitAt(title, " _-()[],.:/+")) {
        const KindWord* const found = kindWord(word);
        if (found != nullptr && found->word != kAmbiguous) return found->kind;
    }
    return SubtitleKind::normal;
}

std::optional<FilmSubtitle> subtitleNamed(const std::string& name, const std::string& stem) {
    const auto* const format =
        std::ranges::find(kFormats, asciiLowered(pathExtension(name)), &Format::extension);
    const std::string rest = withoutExtension(name);
    if (format == kFormats.end() || !rest.starts_with(stem)) return {};
    const std::string words = validUtf8(std::string_view(rest).substr(stem.size()));
    if (words.find_first_of(". _-([") != 0 && !words.empty()) return {};

    FilmSubtitle subtitle;
    subtitle.codec = format->codec;
    Words reader(subtitle);
    bool areAllKnown = true;
    for (const std::string& part : splitAt(words, "."))
        areAllKnown = reader.take(part) && areAllKnown;
    reader.finish();
    // Behind anything but a dot a longer name may be that of another film.
    if (!areAllKnown && !words.starts_with('.')) return {};
    return subtitle;
}

std::optional<FilmSubtitle> subtitleNamed(const std::string& name) {
    const std::string rest = withoutExtension(name);
    return subtitleNamed(name, rest.substr(0, rest.find('.')));
}

}  // namespace tkv::disc
