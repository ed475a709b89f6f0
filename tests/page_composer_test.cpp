#include "composer/page_composer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "composer/jacket.h"
#include "composer/page_texts.h"
#include "imaging/rescale.h"
#include "platform/paths.h"
#include "support.h"

namespace tkv::test {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

template <typename LayerType>
std::vector<LayerType> layersOf(const Page& page) {
    std::vector<LayerType> found;
    for (const Layer& layer : page.layers) {
        if (const auto* wanted = std::get_if<LayerType>(&layer)) found.push_back(*wanted);
    }
    return found;
}

Names filesShown(const Page& page) {
    Names names;
    for (const PictureLayer& layer : layersOf<PictureLayer>(page)) {
        names.push_back(lastComponent(layer.file));
    }
    return names;
}

std::optional<Page> pageOf(PageComposer& composer, int number) {
    std::optional<Pass> pass = composer.composePass(number);
    return pass ? std::optional(std::move(pass->page)) : std::nullopt;
}

/// The first pass of a menu without background.
std::optional<Page> composed(const MenuRequest& request) {
    PageComposer composer(request, {});
    return pageOf(composer, 0);
}

/// Files are not decoded while a page is composed, so any content will do.
class Composing : public testing::Test {
  protected:
    Names stills(std::size_t count) {
        Names paths;
        for (std::size_t i = 0; i < count; ++i) {
            paths.push_back(folder.write("still" + std::to_string(i) + ".jpg", "x"));
        }
        return paths;
    }
    std::string loop(const std::string& name, int frames) {
        for (int i = 0; i < frames; ++i) {
            folder.write(name + "/" + name + std::to_string(i) + ".jpg", "x");
        }
        return folder.file(name);
    }

    TempFolder folder;
    MenuRequest request;
};

struct Place {
    bool isMainMenu;
    std::size_t thumbnails, index;
    Rect destination;
    Rect source;
    TextPlace caption;
};

const Rect kSmall{0, 0, 160, 120};
const Place kPlaces[] = {
    {false, 1, 0, {110, 355, 160, 120}, kSmall, Point{130, 342}},
    {false, 9, 1, {280, 355, 160, 120}, kSmall, Rect{270, 342, 180, 14}},
    {false, 9, 2, {450, 355, 160, 120}, kSmall, Rect{430, 342, 160, 14}},
    {false, 9, 3, {110, 221, 160, 120}, kSmall, Point{130, 208}},
    {false, 9, 7, {280, 87, 160, 120}, kSmall, Rect{270, 74, 180, 14}},
    {false, 10, 9, {450, 87, 160, 120}, kSmall, Rect{430, 74, 160, 14}},
    {true, 5, 4, {280, 221, 160, 120}, kSmall, Rect{270, 208, 180, 14}},
    {true, 1, 0, {120, 87, 480, 360}, {0, 0, 480, 360}, Point{130, 74}},
    {true, 2, 0, {120, 288, 480, 180}, {0, 120, 480, 180}, Point{130, 275}},
    {true, 3, 2, {120, 87, 480, 120}, {0, 180, 480, 120}, Point{130, 74}},
    {true, 4, 1, {370, 288, 240, 180}, {120, 90, 240, 180}, Rect{350, 275, 240, 14}},
    {true, 4, 2, {110, 87, 240, 180}, {120, 90, 240, 180}, Point{130, 74}},
};

TEST_F(Composing, ThumbnailsAndCaptionsStandInTheirPlaces) {
    for (const Place& place : kPlaces) {
        SCOPED_TRACE(testing::Message()
                     << place.isMainMenu << " " << place.thumbnails << " #" << place.index);
        request.isMainMenu = place.isMainMenu;
        request.thumbs = stills(place.thumbnails);
        request.captions = Names(place.thumbnails, "caption");
        const auto page = composed(request);
        ASSERT_TRUE(page);
        const PictureLayer picture = layersOf<PictureLayer>(*page)[place.index];
        EXPECT_EQ(picture.destination, place.destination);
        EXPECT_EQ(picture.source, place.source);
        const bool isBig = place.source != kSmall;
        EXPECT_EQ(picture.scaledTo, isBig ? (Size{480, 360}) : (Size{160, 120}));
        EXPECT_EQ(layersOf<TextLayer>(*page)[place.index].place, place.caption);
    }
}

TEST_F(Composing, TextsOfAPage) {
    request.thumbs = stills(1);
    request.captions = {"le grand JOUR"};
    request.title = "chapitres";
    request.dvdBt_menuNext = "suite";
    request.dvdBt_menuPrev = "";
    const auto page = composed(request);
    const Shadow shadow{kBlack, 0, -1.5, 5.0};
    EXPECT_EQ(layersOf<TextLayer>(*page),
              (std::vector<TextLayer>{{"le grand JOUR",
                                       LetterCase::capitalized,
                                       {11, Alignment::left, shadow, kWhite},
                                       Point{130, 342}},
                                      {"chapitres",
                                       LetterCase::upper,
                                       {16, Alignment::left, shadow, kWhite},
                                       Point{130, 479}},
                                      {"suite",
                                       LetterCase::upper,
                                       {10.6F, Alignment::center, shadow, kOrange},
                                       Rect{450, 45, 160, 14}}}));

    request.icon = folder.write("icon.png", "x");
    request.dvdBt_readAll = "Lire tout";
    const Page jacket = composeJacket(request, {folder.file("b.png"), 1.0});
    const Color faint{1, 1, 1, 0.8F};
    std::vector<TextLayer> texts = layersOf<TextLayer>(jacket);
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0], (TextLayer{"chapitres",
                                   LetterCase::upper,
                                   {22, Alignment::right, shadow, faint},
                                   Rect{0, 320, 500, 30}}));
    EXPECT_EQ(texts[1].place, (TextPlace{Point{320, 200}}));
    EXPECT_EQ(texts[1].letterCase, LetterCase::upper);
    EXPECT_EQ(texts[2], (TextLayer{"Lire tout",
                                   LetterCase::asItIs,
                                   {14, Alignment::left, shadow, faint},
                                   Point{320, 170}}));
    EXPECT_EQ(layersOf<PictureLayer>(jacket)[0].opacity, 0.6F);
    EXPECT_EQ(layersOf<PictureLayer>(jacket)[1].destination, (Rect{505, 255, 100, 100}));
    request.icon = folder.file("no icon.png");
    EXPECT_EQ(layersOf<PictureLayer>(composeJacket(request, {})).size(), 0U);
}

TEST_F(Composing, FoldersPlayAsLoops) {
    request.thumbs = {loop("a", 3), loop("b", 11), stills(1)[0]};
    PageComposer composer(request, {});
    for (int pass = 0; pass < 40; ++pass) {
        EXPECT_EQ(filesShown(*pageOf(composer, pass)),
                  (Names{"a" + std::to_string(pass % 3) + ".jpg",
                         "b" + std::to_string(pass % 11) + ".jpg", "still0.jpg"}));
    }
}

TEST_F(Composing, PlacesFromEightOnShareACounterThatMayRunPastTheEnd) {
    request.thumbs = Names(8, folder.write("s.jpg", "x"));
    const std::string frames = loop("f", 3);
    for (int i = 0; i < 3; ++i)
        request.thumbs->push_back(frames);
    PageComposer composer(request, {});
    const Names passes[] = {{"f0.jpg", "f1.jpg", "f2.jpg"},
                            {},
                            {},
                            {"f0.jpg", "f1.jpg", "f2.jpg"},
                            {"f0.jpg", "f1.jpg", "f2.jpg"}};
    for (int pass = 0; pass < 5; ++pass) {
        const Names shown = filesShown(*pageOf(composer, pass));
        EXPECT_EQ(Names(shown.begin() + 8, shown.end()), passes[pass]) << pass;
    }
}

TEST_F(Composing, FirstPlaceWrapsOnlyExactlyAtTheEndOfItsLoop) {
    request.thumbs = {loop("a", 5), loop("b", 5)};
    PageComposer composer(request, {});
    for (int pass = 0; pass < 5; ++pass)
        pageOf(composer, pass);
    // Both folders lose frames: only the other place finds back to its first frame.
    for (const char* name : {"a2", "a3", "a4"})
        fs::remove(folder.file("a/" + std::string(name) + ".jpg"));
    for (const char* name : {"b2", "b3", "b4"})
        fs::remove(folder.file("b/" + std::string(name) + ".jpg"));
    EXPECT_EQ(filesShown(*pageOf(composer, 5)), (Names{"b0.jpg"}));
    EXPECT_EQ(filesShown(*pageOf(composer, 6)), (Names{"b1.jpg"}));
}

TEST_F(Composing, MissingThumbnailEndsTheLoopNotThePage) {
    request.thumbs = stills(3);
    request.captions = {"one", "two", "three"};
    request.title = "title";
    fs::remove((*request.thumbs)[1]);
    std::optional<Page> page;
    EXPECT_EQ(errorsOf([&] { page = composed(request); }),
              "dvdMenuPicture end  :-( no thumb available\n");
    ASSERT_TRUE(page);
    EXPECT_EQ(filesShown(*page), (Names{"still0.jpg"}));
    const auto texts = layersOf<TextLayer>(*page);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].text, "one");
    EXPECT_EQ(texts[1].text, "title");

    (*request.thumbs)[0] = "";
    EXPECT_EQ(filesShown(*composed(request)), Names{});
}

TEST_F(Composing, MissingCaptionFailsOnlyWhenThereAreCaptions) {
    request.thumbs = stills(3);
    EXPECT_TRUE(composed(request)) << "no captions at all";
    request.captions = {"été", "b c"};
    std::optional<Page> page;
    EXPECT_EQ(errorsOf([&] { page = composed(request); }),
              "captionsA && i : out of range -> end (failure) …i=2 && captionsA:(\n"
              "    \"\\U00e9t\\U00e9\",\n"
              "    \"b c\"\n"
              ")\n"
              "dvdMenuPicture      :-( end\n");
    EXPECT_FALSE(page);
}

TEST_F(Composing, ThumbnailsResolveAgainstTheLastFolderFound) {
    const std::string first = folder.write("one/a.jpg", "x");
    const std::string second = folder.write("one/b.jpg", "x");
    const std::string third = folder.write("two/c.JPG", "x");
    EXPECT_EQ(resolveThumbnails({"b.jpg", first, "b.jpg", "none.jpg", "", third, "b.jpg", "c.JPG"}),
              (Names{first, second, folder.file("one"), third, third}));
}

TEST_F(Composing, OnlyLowerCaseJpgIsAPicture) {
    const std::string upper = folder.write("a.JPG", "x");
    const std::string png = folder.write("a.png", "x");
    const std::string emptyFolder = folder.file("empty");
    fs::create_directory(emptyFolder);
    const std::string jpgFolder = folder.file("folder.jpg");
    folder.write("folder.jpg/frame.png", "x");
    request.thumbs = {upper, png, emptyFolder, jpgFolder};
    request.captions = Names(4, "caption");
    const auto page = composed(request);
    EXPECT_EQ(filesShown(*page), (Names{"folder.jpg"})) << "a picture by its name";
    EXPECT_EQ(layersOf<TextLayer>(*page).size(), 5U) << "the captions stay";
}

TEST_F(Composing, ZoomedBackgroundLiesBelowTheGrid) {
    request.thumbs = {loop("a", 2), stills(1)[0]};
    PageComposer withPicture(request, {folder.file("bkgV.jpg"), 1.8});
    PageComposer withoutPicture(request, {std::nullopt, 1.8});
    const Rect zoomed{-288, -216, 1296, 972};
    for (int pass = 0; pass < 3; ++pass) {
        const std::string frame = "a" + std::to_string(pass % 2) + ".jpg";
        const auto page = pageOf(withPicture, pass);
        EXPECT_EQ(filesShown(*page), (Names{"bkgV.jpg", frame, frame, "still0.jpg"}));
        const auto layers = layersOf<PictureLayer>(*page);
        for (const int i : {0, 1}) {
            EXPECT_EQ(layers[static_cast<std::size_t>(i)].destination, zoomed);
            EXPECT_EQ(layers[static_cast<std::size_t>(i)].opacity, 0.6F);
        }
        EXPECT_EQ(filesShown(*pageOf(withoutPicture, pass)), (Names{frame, frame, "still0.jpg"}));
    }
}

TEST_F(Composing, AReplacedFileIsAnotherPage) {
    request.thumbs = stills(1);
    PageComposer composer(request, {});
    const auto before = pageOf(composer, 0);
    EXPECT_EQ(before, pageOf(composer, 1));
    folder.write("still0.jpg", "longer");
    EXPECT_NE(before, pageOf(composer, 2));
}

}  // namespace
}  // namespace tkv::test
