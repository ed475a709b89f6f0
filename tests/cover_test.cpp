#include "disc/make/cover.h"

#include <algorithm>
#include <regex>

#include "disc/project/names.h"
#include "support.h"
#include "system/files.h"

// The cover of a case, as other people's programs read it.

namespace tkv::test::cover {

using namespace tkv::disc;

// A rectangle in millimetres from the cover's top left corner.
struct Box {
    double left, top, right, bottom;
    bool isWithin(const Box& other) const {
        return left >= other.left && top >= other.top && right <= other.right &&
               bottom <= other.bottom;
    }
};
constexpr Box kBack{5, 5, 124.5, 178}, kSpine{129.5, 5, 143.5, 178}, kFront{148, 5, 268, 178};
constexpr Box kFilms{5, 5, 124.5, 166};

struct Word {
    std::string text;
    Box box;
};

class Cover : public testing::Test {
  protected:
    Cover() {
        const Rgba green{0, 200, 0, 255};
        pictures_.front = pictureOf({100, 141}, green);
        pictures_.stills = std::vector<CoverPicture>(kCoverStills, pictureOf({16, 9}, green));
        plan_.title = "Été";
    }

    static CoverPicture pictureOf(PixelSize size, const Rgba& color) {
        return {encodePicture(painted(size, color), "jpg", 1).value(), size};
    }

    void addFilm(const std::string& caption, double seconds,
                 const std::vector<Chapter>& chapters = {}) {
        DiscFilm& film = plan_.films.emplace_back();
        film.caption = caption;
        film.conversion.seconds = seconds;
        film.conversion.isWide = true;
        film.conversion.chapters = chapters;
    }

    // Draws it as cover.pdf.
    void draw(Paper paper = Paper::a4) {
        const auto pdf = sheetPdf(coverSheet(plan_, labelsOf("de"), pictures_, paper));
        ASSERT_TRUE(pdf && writeFile(folder_.file("cover.pdf"), *pdf));
        const PixelSize size = paper == Paper::a4 ? PixelSize{2970, 2100} : PixelSize{2794, 2159};
        left_ = (size.width - 2730) / 20.0;
        top_ = (size.height - 1830) / 20.0;
        words_ = words();
    }

    std::string told(const std::string& command) const {
        return run(fmt::format("cd {}; {}", folder_.path(), command));
    }

    std::vector<Word> words() const {
        static const std::regex pattern(
            R"re(<word xMin="(.*?)" yMin="(.*?)" xMax="(.*?)" yMax="(.*?)">(.*?)</word>)re");
        constexpr double kPoint = 25.4 / 72;
        const std::string xml = told("pdftotext -bbox cover.pdf -");
        std::vector<Word> words;
        for (std::sregex_iterator at(xml.begin(), xml.end(), pattern), end; at != end; ++at) {
            const auto column = [&](std::size_t i) {
                return std::stod(at->str(i)) * kPoint - left_;
            };
            const auto row = [&](std::size_t i) { return std::stod(at->str(i)) * kPoint - top_; };
            words.push_back({at->str(5), {column(1), row(2), column(3), row(4)}});
        }
        return words;
    }

    // How often a word stands wholly within a part of the cover.
    long count(const std::string& text, const Box& part) const {
        return std::ranges::count_if(
            words_, [&](const Word& word) { return word.text == text && word.box.isWithin(part); });
    }

    // The page with five pixels to a millimetre.
    Bitmap shown() const {
        told("pdftoppm -r 127 -png -singlefile cover.pdf cover");
        return decodePicture(folder_.file("cover.png")).value();
    }

    // A place of the cover on it.
    Rgba at(const Bitmap& page, double x, double y) const {
        return pixel(page, static_cast<int>((left_ + x) * 5), static_cast<int>((top_ + y) * 5));
    }

    // Whether there is something black within a third of a millimetre.
    bool isMarked(const Bitmap& page, double x, double y) const {
        for (const double away : {-0.3, -0.1, 0.1, 0.3}) {
            if (at(page, x + away, y).red < 100 || at(page, x, y + away).red < 100) return true;
        }
        return false;
    }

    TempFolder folder_;
    DiscPlan plan_;
    CoverPictures pictures_;
    std::vector<Word> words_;    // on what was drawn
    double left_ = 0, top_ = 0;  // of the cover on the paper
};

TEST_F(Cover, HasTheTitleOnFrontAndSpineAndTheFilmsOnTheBack) {
    addFilm("Ankunft", 61, {{0, "Hafen"}, {30, ""}});
    addFilm("夏の思い出", 3725.4);
    addFilm("الصيف", 59.6);
    plan_.films[1].conversion.tracks = {{.language = "ja", .isSurround = true}};
    plan_.films[2].conversion.chapters.resize(12);
    plan_.films[2].chapterPages.count = 2;
    draw();
    for (const Box& part : {kFront, kSpine, kBack})
        EXPECT_EQ(count("Été", part), 1);
    const auto spine = std::ranges::find_if(
        words_, [](const Word& word) { return word.text == "Été" && word.box.isWithin(kSpine); });
    ASSERT_NE(spine, words_.end());
    EXPECT_GT(spine->box.bottom - spine->box.top, spine->box.right - spine->box.left);
    for (const char* word : {"Ankunft", "1:01", "Hafen", "夏の思い出", "1:02:05", "1:00", "1–12"})
        EXPECT_EQ(count(word, kFilms), 1) << word << "\n" << told("pdftotext cover.pdf -");
    for (const char* word : {"PAL", "16:9", "5.1", "JA", "64"})
        EXPECT_EQ(count(word, kBack), 1) << word << "\n" << told("pdftotext cover.pdf -");
    EXPECT_EQ(count("4:3", kBack), 0);
    EXPECT_EQ(told("pdffonts cover.pdf | tail -n +3 | grep -vc ' yes yes yes ' || true"), "0\n");
    EXPECT_EQ(told("pdfinfo cover.pdf | grep -c Date || true"), "0\n") << "of this run";

    // An only film's chapters, each with its own time.
    plan_.films.resize(1);
    draw();
    for (const char* word : {"1:01", "Hafen", "0:30", "Kapitel", "0:31"})
        EXPECT_EQ(count(word, kFilms), 1) << word;
}

TEST_F(Cover, ListsFilmsAsLongAsThereIsRoom) {
    for (const int films : {1, 9, 14, 40, 99}) {
        SCOPED_TRACE(films);
        plan_.films.clear();
        for (int i = 1; i <= films; ++i)
            addFilm(fmt::format("n{} Third day of our journey to the lake of Constance", i), 60 * i,
                    {{0, "Morning"}, {9, "Evening"}});
        draw();
        int listed = 0;
        while (listed < films && count(fmt::format("n{}", listed + 1), kFilms) == 1 &&
               count(timeText(60 * (listed + 1)), kFilms) >= 1)
            ++listed;
        if (listed == films) continue;
        EXPECT_GT(listed, 50);  // of 99
        EXPECT_EQ(count(std::to_string(films - listed), kFilms), 1);
    }
}

TEST_F(Cover, FillsTheFrontAndIsMarkedOnBothPapers) {
    constexpr Rgba kGreen{0, 200, 0, 255}, kPaper{255, 255, 255, 255};
    plan_.title.clear();
    addFilm("Ankunft", 60);
    for (const bool isA4 : {true, false}) {
        SCOPED_TRACE(isA4);
        draw(isA4 ? Paper::a4 : Paper::letter);
        const std::string size = told("pdfinfo cover.pdf");
        EXPECT_NE(size.find(isA4 ? "841.89 x 595.276 pts (A4)" : "792 x 612 pts (letter)"),
                  std::string::npos)
            << size;
        const Bitmap page = shown();
        for (const auto& [x, y] : {std::pair{144, 1}, {144, 182}, {272, 1}, {272, 182}, {274, 90}})
            EXPECT_TRUE(near(at(page, x, y), kGreen, 8)) << x << " " << y;
        for (const double y : {-1.0, 184.0})
            EXPECT_TRUE(near(at(page, 200, y), isA4 ? kGreen : kPaper, 8)) << y;
        for (const double y : {-5.5, 188.5}) {
            for (const double x : {0.0, 129.5, 143.5, 273.0})
                EXPECT_TRUE(isMarked(page, x, y)) << x << " " << y;
            EXPECT_FALSE(isMarked(page, 129.5, y - 1)) << "folds are dashed";
            EXPECT_FALSE(isMarked(page, 20, y));
        }
        for (const double y : {0.0, 183.0}) {
            for (const double x : {-5.5, 278.5})
                EXPECT_TRUE(!isA4 || isMarked(page, x, y)) << x << " " << y;
        }
    }

    // White letters on a white picture.
    EXPECT_TRUE(near(at(shown(), 205, 165), kGreen, 8)) << "without a title, no shade";
    pictures_.front = pictureOf({100, 141}, kPaper);
    plan_.title = "M";
    draw();
    const Bitmap page = shown();
    EXPECT_LT(at(page, 160, 123).red, 110);
    EXPECT_GT(at(page, 160, 30).red, 250);
}

}  // namespace tkv::test::cover
