#include "disc/make/cover_list.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>

#include "disc/project/names.h"

namespace tkv::disc {

namespace {

// Millimetres.
constexpr double kPoint = 25.4 / 72;
constexpr double kColumnGap = 6;

// Parts of the size of a film's name.
constexpr double kLine = 1.17;
constexpr double kFilmGap = 0.55;
constexpr double kChapterGap = 0.15;
constexpr double kChapterSize = 0.8;
constexpr double kTimeWidth = 4.4;

// Lines break at words, so that they are seldom full.
constexpr double kFullLine = 0.9;

constexpr Color kTimeColor = withAlpha(kWhite, 0.85F);
constexpr Color kChapterColor = withAlpha(kWhite, 0.7F);

struct ListStyle {
    std::size_t stillsInRow;
    double points;
    int columns;
    int nameLines;     // at most
    int chapterLines;  // at most, below a film's name
};

// From the most beautiful to what holds most.
constexpr ListStyle kStyles[] = {
    {2, 14, 1, 3, 3},  {2, 12, 1, 3, 3}, {2, 10.5, 1, 3, 3}, {4, 10.5, 1, 3, 3}, {4, 9, 1, 3, 2},
    {4, 8.5, 2, 3, 2}, {4, 8, 2, 2, 1},  {4, 7, 2, 2, 1},    {4, 7, 2, 2, 0},    {4, 7, 2, 1, 0},
};

// A film, or a chapter of an only one.
struct Entry {
    std::string name;
    std::string time;
    std::string chapters;  // in one text; empty for none
    bool isChapter = false;
    double nameWidth = 0;  // at a size of 1, as are all widths here
    double chaptersWidth = 0;
};

double widthAtOne(const std::string& text) {
    constexpr float kSize = 16;
    constexpr PixelSize kCanvas{16384, 64};
    const auto drawn =
        rasterizeText(text, {kSize, Alignment::left, {}, kWhite}, Point{0, 20}, kCanvas);
    return drawn ? drawn->pixels.width() / double{kSize} : 0;
}

bool areNamed(const std::vector<Chapter>& chapters) {
    return chapters.size() > 1 && std::ranges::any_of(chapters, [](const Chapter& chapter) {
               return !chapter.name.empty();
           });
}

std::string chapterName(const std::vector<Chapter>& chapters, std::size_t i, const Labels& labels) {
    const std::string& name = chapters[i].name;
    return name.empty() ? withNumber(labels.chapter, static_cast<int>(i + 1)) : name;
}

// With spaces at which no line ends.
std::string unbroken(const std::string& text) {
    std::string result;
    for (const char byte : text)
        result += byte == ' ' ? "\u00A0" : std::string(1, byte);
    return result;
}

// Those that somebody has set, not those that only the Next key knows.
std::string chaptersText(const DiscFilm& film, const Labels& labels) {
    const std::vector<Chapter>& chapters = film.conversion.chapters;
    if (!areNamed(chapters)) {
        return film.chapterPages.count == 0
                   ? ""
                   : fmt::format("{} 1–{}", labels.chapters, chapters.size());
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < chapters.size(); ++i)
        names.push_back(unbroken(chapterName(chapters, i, labels)));
    return fmt::format("{}", fmt::join(names, "  ·  "));
}

std::string playingTimeText(double seconds) {
    return timeText(std::max(1.0, std::round(seconds)));
}

Entry measured(Entry entry) {
    entry.nameWidth = widthAtOne(entry.name);
    entry.chaptersWidth = entry.chapters.empty() ? 0 : widthAtOne(entry.chapters);
    return entry;
}

std::vector<Entry> entriesOf(const DiscPlan& plan, const Labels& labels) {
    std::vector<Entry> entries;
    for (const DiscFilm& film : plan.films) {
        const Conversion& conversion = film.conversion;
        const std::vector<Chapter>& chapters = conversion.chapters;
        const bool isOnly = plan.films.size() == 1 && areNamed(chapters);
        entries.push_back(measured({film.caption, playingTimeText(conversion.seconds),
                                    isOnly ? "" : chaptersText(film, labels)}));
        for (std::size_t i = 0; isOnly && i < chapters.size(); ++i) {
            const double end =
                i + 1 < chapters.size() ? chapters[i + 1].seconds : conversion.seconds;
            entries.push_back(measured({chapterName(chapters, i, labels),
                                        playingTimeText(end - chapters[i].seconds), "", true}));
        }
    }
    return entries;
}

// The entries in one style, in columns of one width.
class SetList {
  public:
    SetList(const std::vector<Entry>& entries, const ListStyle& style, const SheetPlace& place)
        : entries_(entries),
          style_(style),
          place_(place),
          em_(style.points * kPoint),
          width_((place.width - (style.columns - 1) * kColumnGap) / style.columns) {
        for (const Entry& entry : entries)
            heights_.push_back(heightOf(entry));
    }

    // How many fit into columns of that height.
    std::size_t fitting(double height) const {
        double left = height;
        int column = 1;
        for (std::size_t i = 0; i < heights_.size(); ++i) {
            if (heights_[i] > left && (++column > style_.columns || heights_[i] > height)) return i;
            left = (heights_[i] > left ? height : left) - heights_[i];
        }
        return heights_.size();
    }

    std::vector<SheetText> texts() const {
        const std::size_t count = entries_.size();
        double height = place_.height;
        std::size_t shown = fitting(height);
        if (shown < count) {
            height -= em_ * kLine;  // for what is left out
            shown = fitting(height);
        } else {
            // Columns of about one length.
            height = std::accumulate(heights_.begin(), heights_.end(), 0.0) / style_.columns;
            while (fitting(height) < count)
                height += em_;
        }
        return textsOf(shown, height);
    }

  private:
    double sizeOf(const Entry& entry) const { return entry.isChapter ? em_ * kChapterSize : em_; }

    double nameWidth(const Entry& entry) const { return width_ - kTimeWidth * sizeOf(entry); }

    static int linesFor(double length, double width, int most) {
        const double lines = length <= width ? length / width : length / (width * kFullLine);
        return std::min(static_cast<int>(std::ceil(lines)), most);
    }

    int nameLines(const Entry& entry) const {
        const double length = entry.nameWidth * sizeOf(entry);
        return std::max(1, linesFor(length, nameWidth(entry), style_.nameLines));
    }

    int chapterLines(const Entry& entry) const {
        return linesFor(entry.chaptersWidth * em_ * kChapterSize, width_, style_.chapterLines);
    }

    double heightOf(const Entry& entry) const {
        return sizeOf(entry) * (nameLines(entry) * kLine) +
               em_ * (chapterLines(entry) * kLine * kChapterSize +
                      (entry.isChapter ? kChapterGap : kFilmGap));
    }

    std::vector<SheetText> textsOf(std::size_t count, double height) const {
        std::vector<SheetText> texts;
        double left = place_.left, top = place_.top;
        for (std::size_t i = 0; i < count; ++i) {
            if (top + heights_[i] > place_.top + height + 0.001) {
                left += width_ + kColumnGap;
                top = place_.top;
            }
            addEntry(texts, entries_[i], left, top);
            top += heights_[i];
        }
        if (count < entries_.size())
            texts.push_back(textOf(fmt::format("… + {}", entries_.size() - count),
                                   {left, top, width_, em_ * kLine}, style_.points, 1));
        return texts;
    }

    void addEntry(std::vector<SheetText>& texts, const Entry& entry, double left,
                  double top) const {
        const double size = sizeOf(entry), points = size / kPoint, width = nameWidth(entry);
        const double height = size * kLine * nameLines(entry);
        const Color& color = entry.isChapter ? kChapterColor : kWhite;
        texts.push_back(textOf(entry.name, {left, top, width, height}, points, nameLines(entry)));
        texts.back().color = color;
        texts.push_back(
            textOf(entry.time, {left + width, top, width_ - width, size * kLine}, points, 1));
        texts.back().color = entry.isChapter ? kChapterColor : kTimeColor;
        texts.back().alignment = Alignment::right;
        const int lines = chapterLines(entry);
        if (lines == 0) return;
        texts.push_back(textOf(entry.chapters,
                               {left, top + height, width_, em_ * kChapterSize * kLine * lines},
                               style_.points * kChapterSize, lines));
        texts.back().color = kChapterColor;
    }

    static SheetText textOf(const std::string& text, const SheetPlace& place, double points,
                            int lines) {
        return {text, place, points, points, lines, kWhite};
    }

    const std::vector<Entry>& entries_;
    const ListStyle& style_;
    SheetPlace place_;
    double em_;     // of a film's name, in millimetres
    double width_;  // of a column
    std::vector<double> heights_;
};

}  // namespace

CoverList coverList(const DiscPlan& plan, const Labels& labels,
                    const std::function<SheetPlace(std::size_t stillsInRow)>& placeBelow) {
    const std::vector<Entry> entries = entriesOf(plan, labels);
    for (const ListStyle& style : kStyles) {
        const SheetPlace place = placeBelow(style.stillsInRow);
        const SetList list(entries, style, place);
        if (&style == std::end(kStyles) - 1 || list.fitting(place.height) == entries.size())
            return {style.stillsInRow, list.texts()};
    }
    return {};
}

}  // namespace tkv::disc
