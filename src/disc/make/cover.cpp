#include "disc/make/cover.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "disc/make/cover_list.h"
#include "disc/plan/report.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

// Millimetres, in a cover from its top left corner.
constexpr double kPanel = 129.5;  // back and front
constexpr double kSpine = 14;
constexpr double kCoverWidth = 2 * kPanel + kSpine;
constexpr double kCoverHeight = 183;
constexpr double kFront = kPanel + kSpine;

constexpr double kMargin = 9;
constexpr double kInner = kPanel - 2 * kMargin;

constexpr double kStillGap = 2;
constexpr double kStillFrame = 0.25;

constexpr double kHeading = 7;  // the title on the back
constexpr double kHeadingGap = 3;
constexpr double kTextGap = 4;
constexpr double kListEnd = 164;

constexpr double kFactsTop = 169;
constexpr double kFactHeight = 5;
constexpr double kFactGap = 2;
constexpr double kFactLetter = 1.75;
constexpr double kFactLine = 0.25;

constexpr SheetPlace kFrontTitle{kFront + 10, 123, kPanel - 20, 46};
constexpr SheetPlace kSpineTitle{kPanel + 1.5, 10, kSpine - 3, kCoverHeight - 20};

constexpr double kMarkLength = 5;
constexpr double kMarkDistance = 3;
constexpr double kMarkWidth = 0.2;
constexpr double kRuler = 50;  // to see whether it was printed at its size

constexpr Color kFaint = withAlpha(kWhite, 0.6F);
constexpr Color kMarkColor = kBlack;

// What is printed around the cover, so that no cut leaves a white edge. On Letter there is no room
// for marks beside the cover: its own upper and lower edge are the marks.
struct PaperFacts {
    double width, height;
    double bleedAside, bleedAbove;
    bool hasMarksAside;
};

constexpr PaperFacts factsOf(Paper paper) {
    if (paper == Paper::letter) return {279.4, 215.9, 2, 0, false};
    return {297, 210, 2, 2, true};
}

// With what is cut off around it.
SheetPlace frontOf(const PaperFacts& paper) {
    return {kFront, -paper.bleedAbove, kPanel + paper.bleedAside,
            kCoverHeight + 2 * paper.bleedAbove};
}

Color darker(const Color& color) {
    constexpr float kPart = 0.75F;
    return {color.red * kPart, color.green * kPart, color.blue * kPart};
}

// What cases tell of a disc, most of all in capital letters.
std::vector<std::string> coverFacts(const DiscPlan& plan, const Labels& labels) {
    std::vector<std::string> facts{"DVD", plan.standard == Standard::pal ? "PAL" : "NTSC"};
    bool isWide = false, isNarrow = false, isStereo = false, isSurround = false;
    std::string languages;
    for (const DiscFilm& film : plan.films) {
        (film.conversion.isWide ? isWide : isNarrow) = true;
        for (const DiscTrack& track : film.conversion.tracks) {
            (track.isSurround ? isSurround : isStereo) = true;
            const std::string language = upperCased(track.language);
            if (language == "XX" || languages.find(language) != std::string::npos) continue;
            languages += (languages.empty() ? "" : " ") + language;
        }
    }
    if (isWide) facts.emplace_back("16:9");
    if (isNarrow) facts.emplace_back("4:3");
    if (isSurround) facts.emplace_back("5.1");
    if (isStereo) facts.emplace_back("2.0");
    facts.push_back(jacketLine(plan, labels.minutes));
    if (!languages.empty()) facts.push_back(languages);
    return facts;
}

// Puts together a sheet in the coordinates of its cover.
class CoverSheet {
  public:
    CoverSheet(const DiscPlan& plan, const Labels& labels, CoverPictures pictures, Paper paper)
        : plan_(plan),
          labels_(labels),
          pictures_(std::move(pictures)),
          paper_(factsOf(paper)),
          sheet_{paper_.width, paper_.height, plan.title, {}} {}

    Sheet made() {
        addGround();
        addFront();
        addBack();
        addFacts();
        addMarks();
        return std::move(sheet_);
    }

  private:
    SheetPlace onPaper(const SheetPlace& place) const {
        return {place.left + (paper_.width - kCoverWidth) / 2,
                place.top + (paper_.height - kCoverHeight) / 2, place.width, place.height};
    }

    void fill(const SheetPlace& place, std::vector<Color> colors) {
        sheet_.items.emplace_back(SheetFill{onPaper(place), std::move(colors)});
    }
    void fill(const SheetPlace& place, const Color& color) { fill(place, std::vector{color}); }

    void add(CoverPicture picture, const SheetPlace& place) {
        sheet_.items.emplace_back(
            SheetPicture{onPaper(place), std::move(picture.jpeg), picture.size});
    }

    void add(SheetText text) {
        text.place = onPaper(text.place);
        sheet_.items.emplace_back(std::move(text));
    }

    // Its line lies within the place.
    void frame(const SheetPlace& place, double line, const Color& color) {
        const auto [left, top, width, height] = place;
        fill({left, top, width, line}, color);
        fill({left, top + height - line, width, line}, color);
        fill({left, top + line, line, height - 2 * line}, color);
        fill({left + width - line, top + line, line, height - 2 * line}, color);
    }

    void addGround() {
        const double above = paper_.bleedAbove, height = kCoverHeight + 2 * above;
        const Color dark = darker(pictures_.ground);
        fill({-paper_.bleedAside, -above, kPanel + paper_.bleedAside, height}, pictures_.ground);
        fill({kPanel, -above, kSpine, height}, dark);
        fill(frontOf(paper_), dark);
        add({plan_.title, kSpineTitle, 19, 9, 1, kWhite, Alignment::center, SheetEdge::middle, true,
             true});
    }

    void addFront() {
        const bool hasPicture = pictures_.front.has_value();
        const auto [left, above, width, height] = frontOf(paper_);
        if (hasPicture) add(*std::move(pictures_.front), {left, above, width, height});
        if (plan_.title.empty()) return;
        if (hasPicture) {
            // The title is to be readable on a white picture, too.
            const double below = above + height - kFrontTitle.top;
            fill({left, kFrontTitle.top - below, width, 2 * below},
                 {withAlpha(kBlack, 0), withAlpha(kBlack, 0.6F), withAlpha(kBlack, 0.85F)});
        }
        add({plan_.title, kFrontTitle, 36, 14, 3, kWhite, Alignment::center, SheetEdge::bottom,
             true});
    }

    // How wide the stills are, so many in a row.
    static double stillWidth(std::size_t inRow) {
        const auto count = static_cast<double>(inRow);
        return (kInner - (count - 1) * kStillGap) / count;
    }

    // From one row of stills to the next.
    static double stillPitch(std::size_t inRow) { return stillWidth(inRow) * 9 / 16 + kStillGap; }

    // Where the text begins below them.
    double textTop(std::size_t inRow) const {
        const std::size_t rows = (pictures_.stills.size() + inRow - 1) / inRow;
        return kMargin + (rows == 0 ? 0 : static_cast<double>(rows) * stillPitch(inRow) + kTextGap);
    }

    // What the list would only repeat is not there.
    bool hasHeading() const {
        return !plan_.title.empty() &&
               !(plan_.films.size() == 1 && plan_.films.front().caption == plan_.title);
    }

    void addBack() {
        const CoverList list = coverList(plan_, labels_, [&](std::size_t inRow) {
            const double top = textTop(inRow) + (hasHeading() ? kHeading + kHeadingGap : 0);
            return SheetPlace{kMargin, top, kInner, kListEnd - top};
        });
        addStills(list.stillsInRow);
        if (hasHeading()) {
            add({plan_.title,
                 {kMargin, textTop(list.stillsInRow), kInner, kHeading},
                 15,
                 9,
                 1,
                 kWhite,
                 Alignment::left,
                 SheetEdge::middle,
                 true});
        }
        for (const SheetText& text : list.texts)
            add(text);
    }

    void addStills(std::size_t inRow) {
        const double width = stillWidth(inRow), pitch = stillPitch(inRow);
        for (std::size_t i = 0; i < pictures_.stills.size(); ++i) {
            const std::size_t column = i % inRow, row = i / inRow;
            const SheetPlace place{kMargin + static_cast<double>(column) * (width + kStillGap),
                                   kMargin + static_cast<double>(row) * pitch, width,
                                   pitch - kStillGap};
            add(std::move(pictures_.stills[i]), place);
            frame(place, kStillFrame, kFaint);
        }
    }

    void addFacts() {
        double left = kMargin;
        for (const std::string& fact : coverFacts(plan_, labels_)) {
            const double width =
                kFactHeight + kFactLetter * static_cast<double>(characterCount(fact));
            if (left + width > kPanel - kMargin) break;
            const SheetPlace place{left, kFactsTop, width, kFactHeight};
            frame(place, kFactLine, kFaint);
            add({fact, place, 8, 5, 1, kWhite, Alignment::center, SheetEdge::middle});
            left += width + kFactGap;
        }
    }

    // A mark at a column of the cover, above and below it.
    void markColumn(double column, bool isFold) {
        constexpr double kDash = kMarkLength / 5;
        const double left = column - kMarkWidth / 2;
        for (const double top : {-kMarkDistance - kMarkLength, kCoverHeight + kMarkDistance}) {
            for (int dash = 0; isFold && dash < 5; dash += 2)
                fill({left, top + dash * kDash, kMarkWidth, kDash}, kMarkColor);
            if (!isFold) fill({left, top, kMarkWidth, kMarkLength}, kMarkColor);
        }
    }

    // Marks at a row of the cover, beside it.
    void markRow(double row) {
        for (const double left : {-kMarkDistance - kMarkLength, kCoverWidth + kMarkDistance})
            fill({left, row - kMarkWidth / 2, kMarkLength, kMarkWidth}, kMarkColor);
    }

    void addMarks() {
        for (const double column : {0.0, kCoverWidth})
            markColumn(column, false);
        for (const double column : {kPanel, kFront})
            markColumn(column, true);
        if (paper_.hasMarksAside) {
            markRow(0);
            markRow(kCoverHeight);
        }
        addRuler();
    }

    void addRuler() {
        const double left = (kPanel - kRuler) / 2, top = kCoverHeight + kMarkDistance + 2;
        fill({left, top, kRuler, kMarkWidth}, kMarkColor);
        for (const double end : {left, left + kRuler})
            fill({end - kMarkWidth / 2, top - 1, kMarkWidth, 2}, kMarkColor);
        add({fmt::format("{} mm", kRuler),
             {left, top + 0.4, kRuler, 3},
             6,
             6,
             1,
             kMarkColor,
             Alignment::center});
    }

    const DiscPlan& plan_;
    const Labels& labels_;
    CoverPictures pictures_;
    PaperFacts paper_;
    Sheet sheet_;
};

}  // namespace

SheetPlace coverFront(Paper paper) {
    return frontOf(factsOf(paper));
}

Sheet coverSheet(const DiscPlan& plan, const Labels& labels, CoverPictures pictures, Paper paper) {
    return CoverSheet(plan, labels, std::move(pictures), paper).made();
}

}  // namespace tkv::disc
