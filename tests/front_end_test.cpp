#include "cli/front_end.h"

#include <sstream>

#include "support.h"
#include "system/verbose.h"

namespace tkv::test::front_end {

struct Outcome {
    int status = -1;
    std::string errors;
    std::optional<MenuRequest> request;  // none when the composer was not called
    int verbose = 0;
};

/// A command line without quotes.
Outcome runWith(const std::string& line, bool composed = true) {
    std::istringstream words(line);
    Outcome result;
    const auto compose = [&](const MenuRequest& request) {
        result.request = request;
        return composed;
    };
    result.errors = errorsOf([&] {
        result.status = runFrontEnd({std::istream_iterator<std::string>(words), {}}, compose);
    });
    result.verbose = isVerbose();
    setVerbose(0);
    return result;
}

TEST(FrontEnd, WritesEveryLineToTheLetter) {
    expectTranscript(TempFolder(), "front_end.txt");
}

TEST(FrontEnd, PassesEveryOptionOn) {
    const TempFolder folder;
    const std::string picture = folder.write("p\xE9.jpg", "");  // a name that is no UTF-8
    const Outcome result = runWith(
        "-mode -1 -isMainMenu 1 -isPal 0 -title -v -dvdBt_readAll all -dvdBt_menuPrev prev "
        "-dvdBt_menuMain main -dvdBt_menuNext next -thumbs /a.jpgtotoCestLePlusBeau/b -captions "
        "totoCestLePlusBeautotoCestLePlusBeauc -o out surplus -bkg " +
        picture + " -icon " + picture);
    EXPECT_TRUE(result.errors.ends_with("DVD-VIDEO...\n\n")) << "nothing but the banner";
    ASSERT_TRUE(result.request);
    const MenuRequest& request = *result.request;
    EXPECT_EQ(request.mode, MenuMode::preview);
    EXPECT_TRUE(request.isMainMenu);
    EXPECT_TRUE(request.isPal) << "whatever -isPal says";
    EXPECT_EQ(request.icon, std::nullopt) << "only a jacket has one";
    EXPECT_EQ(
        (Strings{*request.bkg, *request.title, *request.dvdBt_readAll, *request.dvdBt_menuPrev,
                 *request.dvdBt_menuMain, *request.dvdBt_menuNext, request.output}),
        (Strings{picture, "-v", "all", "prev", "main", "next", "out"}));
    EXPECT_EQ(request.thumbs, (Strings{"/a.jpg", "/b"}));
    EXPECT_EQ(request.captions, (Strings{"", "", "c"}));
    EXPECT_EQ(result.verbose, 0) << "the title is an option -v too, but its value is no number";

    const auto jacket = runWith("-mode 1 -isMainMenu 1 -o out -icon " + picture).request;
    ASSERT_TRUE(jacket);
    EXPECT_FALSE(jacket->isMainMenu);
    EXPECT_EQ(jacket->icon, picture);
}

TEST(FrontEnd, ReadsNumbersLeniently) {
    for (const auto& [line, mode, isMain, verbose] :
         {std::tuple{"-mode abc -isMainMenu 1 -v 1 -o out", MenuMode::definitive, true, 1},
          {"-mode 2x -isMainMenu 01 -v 0 -o out", MenuMode::overlay, true, 0},
          {"-mode +0 -isMainMenu 2 -v -3 -o out", MenuMode::definitive, false, 0},
          {"-v 256 -mode -1 -mode 2 -o out -mode", MenuMode::preview, false, 1}}) {
        const Outcome result = runWith(line, false);
        ASSERT_TRUE(result.request) << line;
        EXPECT_EQ(result.request->mode, mode) << line;
        EXPECT_EQ(result.request->isMainMenu, isMain) << line;
        EXPECT_EQ(result.verbose, verbose) << line;
        EXPECT_EQ(result.status, 1) << "the composer failed";
    }
}

}  // namespace tkv::test::front_end
