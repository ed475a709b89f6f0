#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "cli/front_end.h"
#include "platform/verbose.h"
#include "support.h"

namespace tkv {
namespace {

using Words = std::vector<std::string>;

const std::string kBanner =
    "\n------------------------------------\n"
    "   tkvDvdMenuImg v1.5 - 2013-11-23  \n"
    "(UniversalBinary for Kinoveld)\n"
    "------------------------------------\n"
    " to generate menus for DVD-VIDEO...\n\n";
const std::string kUsage =
    "\nUSAGE:\ntkvDvdMenuImg [give some args to obtain some stuff] -o [output]\n\n";
const std::string kDescription =
    "DESCRIPTION:\n"
    "The following options may be required:\n"
    " -isMainMenu   [optional] 1=main menu, (0||no arg)=submenus\n"
    " -mode         [required] -1=preview, 0=definitive, 1=jacket, 2=overlay(isPal)?PAL:NTSC\n"
    " -bkg\t\t\t[optional] input absolute path ( not used for overlays)\n"
    " -icon\t\t\t[optional] input absolute path (only used for jacket)\n"
    "\u2026\n";
const std::string kNoLabels =
    "dvdBt_readAll       : NO\ndvdBt_menuPrev      : NO\n"
    "dvdBt_menuMain      : NO\ndvdBt_menuNext      : NO\n";
const std::string kNoLists = "-thumbs NO parameter missing\n-captions NO parameter missing\n";

// The words of a command line without quotes.
Words words(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

struct Transcript {
    int status = -1;
    std::string errors;
    std::optional<MenuRequest> request;  // none when the composer was not called
    int verbose = 0;
};

Transcript runWith(const Words& arguments, bool composed = true) {
    Transcript result;
    setVerbose(0);
    result.errors = test::errorsOf([&] {
        result.status = runFrontEnd(arguments, [&](const MenuRequest& request) {
            result.request = request;
            return composed;
        });
    });
    result.verbose = isVerbose();
    setVerbose(0);
    return result;
}

TEST(FrontEnd, WritesTranscripts) {
    const std::string badMode =
        " is not one of -1 (preview), 0 (definitive), 1 (jacket), 2 (overlay), exit\n";
    const struct {
        const char* line;
        int status;
        std::string errors;
    } cases[] = {
        {"", 1, "-mode parameter missing, exit\n" + kUsage},
        {"-o out -mode", 1, "-mode parameter missing, exit\n" + kUsage},
        {"-h -v 1", 1, kUsage},
        {"-mode 0 -o out -title -h", 1, kUsage},
        {"-mode 7 -o out", 1, "-mode 7" + badMode},
        {"-mode -2", 1, "-mode -2" + badMode},
        {"-mode 0", 1, "-title NO\n-o parameter missing\n" + kUsage},
        {"-mode 0 -v 1", 1, "-title NO\n-o parameter missing\n" + kUsage + kDescription},
        {"-mode 1 -icon /no/such -o out", 0,
         "-title NO\n-bkg parameters missing\n" + kNoLabels + kNoLists},
        {"-mode 2 -o out -title T -bkg /no/such", 0, "bkg does not exist\n" + kNoLabels + kNoLists},
    };
    for (const auto& c : cases) {
        const Transcript result = runWith(words(c.line));
        EXPECT_EQ(result.errors, kBanner + c.errors);
        EXPECT_EQ(result.status, c.status) << c.line;
        EXPECT_EQ(result.request.has_value(), c.status == 0) << c.line;
        EXPECT_FALSE(result.request && (result.request->bkg || result.request->icon)) << c.line;
    }
}

TEST(FrontEnd, PassesEveryOptionOn) {
    const test::TempFolder folder;
    const std::string picture = folder.write("p\xE9.jpg", "");  // a name that is no UTF-8
    const Transcript result = runWith(words(
        "-mode -1 -isMainMenu 1 -isPal 0 -title -v -dvdBt_readAll all -dvdBt_menuPrev prev "
        "-dvdBt_menuMain main -dvdBt_menuNext next -thumbs /a.jpgtotoCestLePlusBeau/b -captions "
        "totoCestLePlusBeautotoCestLePlusBeauc -o out surplus -bkg " +
        picture + " -icon " + picture));
    EXPECT_EQ(result.errors, kBanner);
    ASSERT_TRUE(result.request);
    const MenuRequest& request = *result.request;
    EXPECT_EQ(request.mode, MenuMode::preview);
    EXPECT_TRUE(request.isMainMenu);
    EXPECT_TRUE(request.isPal) << "whatever -isPal says";
    EXPECT_EQ(request.icon, std::nullopt) << "only a jacket has one";
    EXPECT_EQ((Words{*request.bkg, *request.title, *request.dvdBt_readAll, *request.dvdBt_menuPrev,
                     *request.dvdBt_menuMain, *request.dvdBt_menuNext, request.output}),
              (Words{picture, "-v", "all", "prev", "main", "next", "out"}));
    EXPECT_EQ(request.thumbs, (Words{"/a.jpg", "/b"}));
    EXPECT_EQ(request.captions, (Words{"", "", "c"}));
    EXPECT_EQ(result.verbose, 0) << "the title is an option -v too, but its value is no number";
}

TEST(FrontEnd, ReadsJacketsApart) {
    const test::TempFolder folder;
    const std::string icon = folder.write("icon.png", "");
    const auto request =
        runWith({"-mode", "1", "-isMainMenu", "1", "-icon", icon, "-thumbs", "", "-o", "out"})
            .request;
    ASSERT_TRUE(request);
    EXPECT_FALSE(request->isMainMenu);
    EXPECT_EQ(request->icon, icon);
    EXPECT_EQ(request->thumbs, Words{""}) << "an empty value is one empty item";
}

TEST(FrontEnd, ReadsNumbersLeniently) {
    const struct {
        const char* line;
        MenuMode mode;
        bool isMain;
        int verbose;
    } cases[] = {
        {"-mode abc -isMainMenu 1 -v 1 -o out", MenuMode::definitive, true, 1},
        {"-mode 2x -isMainMenu 01 -v 0 -o out", MenuMode::overlay, true, 0},
        {"-mode +0 -isMainMenu 2 -v -3 -o out", MenuMode::definitive, false, 0},
        {"-v 256 -mode -1 -mode 2 -o out -mode", MenuMode::preview, false, 1},
    };
    for (const auto& c : cases) {
        const Transcript result = runWith(words(c.line), false);
        ASSERT_TRUE(result.request) << c.line;
        EXPECT_EQ(result.request->mode, c.mode) << c.line;
        EXPECT_EQ(result.request->isMainMenu, c.isMain) << c.line;
        EXPECT_EQ(result.verbose, c.verbose) << c.line;
        EXPECT_EQ(result.status, 1) << "the composer failed";
    }
}

}  // namespace
}  // namespace tkv
