#include "cli/front_end.h"

#include <sstream>

#include "platform/verbose.h"
#include "support.h"

namespace tkv::test::front_end {

const std::string kBanner =
    "\n------------------------------------\n"
    "   tkvDvdMenuImg v1.5 - 2013-11-23  \n(UniversalBinary for Kinoveld)\n"
    "------------------------------------\n to generate menus for DVD-VIDEO...\n\n";
const std::string kUsage =
    "\nUSAGE:\ntkvDvdMenuImg [give some args to obtain some stuff] -o [output]\n\n";
const std::string kDescription =
    "DESCRIPTION:\nThe following options may be required:\n"
    " -isMainMenu   [optional] 1=main menu, (0||no arg)=submenus\n"
    " -mode         [required] -1=preview, 0=definitive, 1=jacket, 2=overlay(isPal)?PAL:NTSC\n"
    " -bkg\t\t\t[optional] input absolute path ( not used for overlays)\n"
    " -icon\t\t\t[optional] input absolute path (only used for jacket)\n\u2026\n";
const std::string kNoLists =
    "dvdBt_readAll       : NO\ndvdBt_menuPrev      : NO\ndvdBt_menuMain      : NO\n"
    "dvdBt_menuNext      : NO\n-thumbs NO parameter missing\n-captions NO parameter missing\n";

struct Transcript {
    int status = -1;
    std::string errors;
    std::optional<MenuRequest> request;  // none when the composer was not called
    int verbose = 0;
};

/// A command line without quotes.
Transcript runWith(const std::string& line, bool composed = true) {
    std::istringstream words(line);
    Transcript result;
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

TEST(FrontEnd, WritesTranscripts) {
    const std::string noMode = "-mode parameter missing, exit\n" + kUsage;
    const std::string badMode =
        " is not one of -1 (preview), 0 (definitive), 1 (jacket), 2 (overlay), exit\n";
    const std::string noOutput = "-title NO\n-o parameter missing\n" + kUsage;
    const std::tuple<const char*, int, std::string> cases[] = {
        {"", 1, noMode},
        {"-o out -mode", 1, noMode},
        {"-h -v 1", 1, kUsage},
        {"-mode 0 -o out -title -h", 1, kUsage},
        {"-mode 7 -o out", 1, "-mode 7" + badMode},
        {"-mode -2", 1, "-mode -2" + badMode},
        {"-mode 0", 1, noOutput},
        {"-mode 0 -v 1", 1, noOutput + kDescription},
        {"-mode 1 -icon /no/such -o out", 0, "-title NO\n-bkg parameters missing\n" + kNoLists},
        {"-mode 2 -o out -title T -bkg /no/such", 0, "bkg does not exist\n" + kNoLists},
    };
    for (const auto& [line, status, errors] : cases) {
        const Transcript result = runWith(line);
        EXPECT_EQ(result.errors, kBanner + errors);
        EXPECT_EQ(result.status, status) << line;
        EXPECT_EQ(result.request.has_value(), status == 0) << line;
        EXPECT_FALSE(result.request && (result.request->bkg || result.request->icon)) << line;
    }
}

TEST(FrontEnd, PassesEveryOptionOn) {
    const TempFolder folder;
    const std::string picture = folder.write("p\xE9.jpg", "");  // a name that is no UTF-8
    const Transcript result = runWith(
        "-mode -1 -isMainMenu 1 -isPal 0 -title -v -dvdBt_readAll all -dvdBt_menuPrev prev "
        "-dvdBt_menuMain main -dvdBt_menuNext next -thumbs /a.jpgtotoCestLePlusBeau/b -captions "
        "totoCestLePlusBeautotoCestLePlusBeauc -o out surplus -bkg " +
        picture + " -icon " + picture);
    EXPECT_EQ(result.errors, kBanner);
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
        const Transcript result = runWith(line, false);
        ASSERT_TRUE(result.request) << line;
        EXPECT_EQ(result.request->mode, mode) << line;
        EXPECT_EQ(result.request->isMainMenu, isMain) << line;
        EXPECT_EQ(result.verbose, verbose) << line;
        EXPECT_EQ(result.status, 1) << "the composer failed";
    }
}

}  // namespace tkv::test::front_end
