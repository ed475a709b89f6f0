#include "composer/page_composer.h"

#include "composer/jacket.h"
#include "composer/page_texts.h"
#include "support.h"
#include "system/paths.h"
#include "system/unicode.h"

namespace tkv::test::composing {

template <typename LayerType>
std::vector<LayerType> layersOf(const Page& page) {
    std::vector<LayerType> found;
    for (const Layer& layer : page.layers) {
        if (const auto* wanted = std::get_if<LayerType>(&layer)) found.push_back(*wanted);
    }
    return found;
}

Strings filesShown(const Page& page) {
    Strings names;
    for (const PictureLayer& layer : layersOf<PictureLayer>(page))
        names.push_back(lastComponent(layer.file));
    return names;
}

/// Files are not decoded while a page is composed, so any content will do.
struct Composing : testing::Test {
    /// Files "name0.jpg" and so on below a folder of the name.
    Strings files(const std::string& name, int count) {
        Strings paths;
        for (int i = 0; i < count; ++i)
            paths.push_back(folder.write(fmt::format("{0}/{0}{1}.jpg", name, i), "x"));
        return paths;
    }
    std::string loop(const std::string& name, int frames) {
        files(name, frames);
        return folder.file(name);
    }
    Page pageOf(PageComposer& from, int pass) { return from.composePass(pass).value().page; }
    /// The first pass of a menu without background.
    Page composed() {
        PageComposer composer(request, {});
        return pageOf(composer, 0);
    }

    TempFolder folder;
    MenuRequest request;
};

const Rect kSmall{0, 0, 160, 120};
using enum Alignment;
/// Whether of a main menu, thumbnails, which, destination, source, caption and its alignment.
const std::tuple<bool, int, std::size_t, Rect, Rect, TextPlace, Alignment> kPlaces[] = {
    {false, 1, 0, {110, 355, 160, 120}, kSmall, Point{130, 342}, left},
    {false, 9, 1, {280, 355, 160, 120}, kSmall, Rect{270, 342, 180, 14}, center},
    {false, 9, 2, {450, 355, 160, 120}, kSmall, Rect{430, 342, 160, 14}, right},
    {false, 9, 3, {110, 221, 160, 120}, kSmall, Point{130, 208}, left},
    {false, 9, 7, {280, 87, 160, 120}, kSmall, Rect{270, 74, 180, 14}, center},
    {false, 10, 9, {450, 87, 160, 120}, kSmall, Rect{430, 74, 160, 14}, right},
    {true, 5, 4, {280, 221, 160, 120}, kSmall, Rect{270, 208, 180, 14}, center},
    {true, 1, 0, {120, 87, 480, 360}, {0, 0, 480, 360}, Point{130, 74}, left},
    {true, 2, 0, {120, 288, 480, 180}, {0, 120, 480, 180}, Point{130, 275}, left},
    {true, 3, 2, {120, 87, 480, 120}, {0, 180, 480, 120}, Point{130, 74}, left},
    {true, 4, 1, {370, 288, 240, 180}, {120, 90, 240, 180}, Rect{350, 275, 240, 14}, right},
    {true, 4, 2, {110, 87, 240, 180}, {120, 90, 240, 180}, Point{130, 74}, left},
};

TEST_F(Composing, ThumbnailsAndCaptionsStandInTheirPlaces) {
    for (const auto& [isMain, count, index, destination, source, caption, alignment] : kPlaces) {
        SCOPED_TRACE(fmt::format("{} of {}", index, count));
        request.isMainMenu = isMain;
        request.thumbs = files("still", count);
        request.captions = Strings(10, "caption");
        const Page page = composed();
        const PictureLayer picture = layersOf<PictureLayer>(page).at(index);
        EXPECT_EQ(picture.destination, destination);
        EXPECT_EQ(picture.source, source);
        EXPECT_EQ(picture.scaledTo, source == kSmall ? (Size{160, 120}) : (Size{480, 360}));
        const TextLayer text = layersOf<TextLayer>(page).at(index);
        EXPECT_EQ(text.place, caption);
        EXPECT_EQ(text.attributes.alignment, alignment);
    }
}

// How the texts of a page look is for the golden pages to tell.
TEST_F(Composing, TextsWithoutAnAlignmentOrSizeHaveTheUsualOnes) {
    const Shadow shadow{kBlack, 0, -1.5, 5.0};
    EXPECT_EQ(captionTextAttributes(kBlack, 'j', 0),
              (TextAttributes{0, justified, shadow, kBlack}));
    EXPECT_EQ(captionTextAttributes({}, 'x', -1), (TextAttributes{11, left, shadow, kWhite}));
}

TEST_F(Composing, AJacketGoesWithoutAMissingIcon) {
    request.icon = folder.write("icon.png", "x");
    EXPECT_EQ(layersOf<PictureLayer>(composeJacket(request, {}, 0)).size(), 1U);
    request.icon = folder.file("no icon.png");
    EXPECT_EQ(layersOf<PictureLayer>(composeJacket(request, {}, 0)).size(), 0U);
}

TEST_F(Composing, FoldersPlayAsLoopsOverAZoomedBackground) {
    request.thumbs = {loop("a", 3), loop("b", 11), files("still", 1)[0]};
    PageComposer plain(request, {});
    PageComposer zoomed(request, {folder.file("bkgV.jpg"), 1.8});
    PageComposer withoutPicture(request, {std::nullopt, 1.8});
    for (int pass = 0; pass < 40; ++pass) {
        const std::string a = fmt::format("a{}.jpg", pass % 3);
        const std::string b = fmt::format("b{}.jpg", pass % 11);
        ASSERT_EQ(filesShown(pageOf(plain, pass)), (Strings{a, b, "still0.jpg"}));
        ASSERT_EQ(filesShown(pageOf(withoutPicture, pass)), (Strings{a, a, b, "still0.jpg"}));
        const Page page = pageOf(zoomed, pass);
        ASSERT_EQ(filesShown(page), (Strings{"bkgV.jpg", a, a, b, "still0.jpg"}));
        for (const std::size_t i : {0U, 1U}) {
            const PictureLayer layer = layersOf<PictureLayer>(page)[i];
            EXPECT_EQ(layer.destination, (Rect{-288, -216, 1296, 972}));
            EXPECT_EQ(layer.opacity, 0.6F);
        }
    }
}

TEST_F(Composing, PlacesFromEightOnShareACounterThatMayRunPastTheEnd) {
    request.thumbs = Strings(8, folder.write("s.jpg", "x"));
    request.thumbs->insert(request.thumbs->end(), 3, loop("f", 3));
    PageComposer composer(request, {});
    for (int pass = 0; const bool isShown : {true, false, false, true, true}) {
        const Strings shown = filesShown(pageOf(composer, pass++));
        EXPECT_EQ(Strings(shown.begin() + 8, shown.end()),
                  isShown ? (Strings{"f0.jpg", "f1.jpg", "f2.jpg"}) : Strings{});
    }
}

TEST_F(Composing, FirstPlaceWrapsOnlyExactlyAtTheEndOfItsLoop) {
    request.thumbs = {loop("a", 5), loop("b", 5)};
    PageComposer composer(request, {});
    for (int pass = 0; pass < 5; ++pass)
        composer.composePass(pass);
    // Both folders lose frames: only the other place finds back to its first frame.
    for (const char* name : {"a/a2", "a/a3", "a/a4", "b/b2", "b/b3", "b/b4"})
        fs::remove(folder.file(name + std::string(".jpg")));
    EXPECT_EQ(filesShown(pageOf(composer, 5)), (Strings{"b0.jpg"}));
    EXPECT_EQ(filesShown(pageOf(composer, 6)), (Strings{"b1.jpg"}));
}

TEST_F(Composing, MissingThumbnailEndsTheLoopNotThePage) {
    request.thumbs = files("still", 3);
    request.captions = {"one", "two", "three"};
    request.title = "title";
    fs::remove(folder.file("still/still1.jpg"));
    Page page;
    EXPECT_EQ(errorsOf([&] { page = composed(); }), "dvdMenuPicture end  :-( no thumb available\n");
    EXPECT_EQ(filesShown(page), (Strings{"still0.jpg"}));
    const auto texts = layersOf<TextLayer>(page);
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts.back().text, "title");
}

TEST_F(Composing, MissingCaptionFailsOnlyWhenThereAreCaptions) {
    request.thumbs = files("still", 3);
    EXPECT_EQ(filesShown(composed()).size(), 3U) << "no captions at all";
    EXPECT_EQ(layersOf<TextLayer>(composed()).size(), 1U) << "only the title's";
    request.captions = {"été", "b c"};
    PageComposer composer(request, {});
    EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(composer.composePass(0)); }),
              "captionsA && i : out of range -> end (failure) …i=2 && captionsA:(\n"
              "    \"\\U00e9t\\U00e9\",\n    \"b c\"\n)\ndvdMenuPicture      :-( end\n");
}

TEST_F(Composing, ThumbnailsResolveAgainstTheLastFolderFound) {
    const std::string first = folder.write("one/a.jpg", "x");
    const std::string second = folder.write("one/b.jpg", "x");
    const std::string third = folder.write("two/c.JPG", "x");
    EXPECT_EQ(resolveThumbnails({"b.jpg", first, "b.jpg", "none.jpg", "", third, "b.jpg", "c.JPG"}),
              (Strings{first, second, folder.file("one"), third, third}));
}

TEST_F(Composing, OnlyLowerCaseJpgIsAPicture) {
    fs::create_directory(folder.file("empty"));
    folder.write("folder.jpg/frame.png", "x");
    request.thumbs = {folder.write("a.JPG", "x"), folder.write("a.png", "x"), folder.file("empty"),
                      folder.file("folder.jpg")};
    request.captions = Strings(4, "caption");
    EXPECT_EQ(filesShown(composed()), (Strings{"folder.jpg"})) << "a picture by its name";
    EXPECT_EQ(layersOf<TextLayer>(composed()).size(), 5U) << "the captions stay";
}

TEST_F(Composing, AReplacedFileIsAnotherPage) {
    request.thumbs = files("still", 1);
    const Page before = composed();
    EXPECT_EQ(before, composed());
    folder.write("still/still0.jpg", "longer");
    EXPECT_NE(before, composed());
}

}  // namespace tkv::test::composing
