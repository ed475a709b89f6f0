#include <gtest/gtest.h>
#include <sys/stat.h>

#include <iterator>
#include <sstream>

#include "platform/description.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/unicode.h"
#include "support.h"

namespace tkv {
namespace {

using test::ScopedVariable;
using test::TempFolder;

TEST(Paths, TakesPathsApart) {
    const struct {
        const char *path, *parent, *last, *extension, *without;
    } cases[] = {
        {"/a/b.jpg/", "/a", "b.jpg", "jpg", "/a/b"},
        {"/a.b/c", "/a.b", "c", "", "/a.b/c"},
        {"a//b.c.d", "a", "b.c.d", "d", "a//b.c"},
        {"//a", "/", "a", "", "//a"},
        {"a", "", "a", "", "a"},
        {"/a/.profile", "/a", ".profile", "", "/a/.profile"},
        {"/a/..", "/a", "..", "", "/a/.."},
        {"//", "/", "/", "", "/"},
        {"", "", "", "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parentFolder(c.path), c.parent) << c.path;
        EXPECT_EQ(lastComponent(c.path), c.last) << c.path;
        EXPECT_EQ(pathExtension(c.path), c.extension) << c.path;
        EXPECT_EQ(withoutExtension(c.path), c.without) << c.path;
    }
}

TEST(Paths, ExpandsALeadingTilde) {
    const struct {
        const char *home, *path, *expanded;
    } cases[] = {
        {"/h/ada", "~", "/h/ada"},
        {"/h/ada/", "~//Movies", "/h/ada/Movies"},
        {"/", "~/Movies", "/Movies"},
        {"/h/ada", "/x/~", "/x/~"},
        {"/h/ada", "~nobody-at-all/x", "~nobody-at-all/x"},
    };
    for (const auto& c : cases) {
        const ScopedVariable home("HOME", c.home);
        EXPECT_EQ(expandTilde(c.path), c.expanded);
    }
    const ScopedVariable empty("HOME", "");
    EXPECT_EQ(expandTilde("~"), expandTilde("~" + loginName())) << "the user database decides";
}

TEST(Description, QuotesAndEscapes) {
    const std::vector<std::string> items = {"word9", "", "a\"b\\c\n\t\r\x01\x7F", "é…\U0001F600",
                                            "\xFF"};
    EXPECT_EQ(describe(items), R"((
    word9,
    "",
    "a\"b\\c\n\t\r\U0001\U007f",
    "\U00e9\U2026\Ud83d\Ude00",
    "\Ufffd"
))");
    EXPECT_EQ(describe(std::optional<std::vector<std::string>>()), "(\n)");
}

TEST(Unicode, CountsAndReplaces) {
    EXPECT_EQ(validUtf8("é\xE2\x82x\xFF"), "é\uFFFD\uFFFDx\uFFFD");
    EXPECT_EQ(characterCount("aé…\U0001F600"), 4U);
    EXPECT_EQ(firstCharacters("aé…b", 2), "aé");
    EXPECT_EQ(firstCharacters("é…", 9), "é…");
}

TEST(Unicode, ChangesCaseInTheUsersLanguage) {
    const struct {
        const char *locale, *text, *upper, *capital;
    } cases[] = {
        {"fr_FR.UTF-8", "l'été", "L'ÉTÉ", "L'été"},
        {"de_DE", "straße", "STRASSE", "Straße"},
        {"C.UTF-8", "the big DAY", "THE BIG DAY", "The Big Day"},
        {"POSIX", "1st\xFF iı", "1ST\uFFFD II", "1st\uFFFD Iı"},
        {"tr_TR.UTF-8@x", "iı", "İI", "İı"},
    };
    for (const auto& c : cases) {
        const ScopedVariable locale("LC_ALL", c.locale);
        EXPECT_EQ(upperCased(c.text), c.upper) << c.locale;
        EXPECT_EQ(capitalized(c.text), c.capital) << c.locale;
    }
}

TEST(Unicode, WritesLongDatesInTheUsersLanguageAndZone) {
    const struct {
        const char *all, *time, *lang, *zone, *date;
    } cases[] = {
        {"", "", "C", "ABC12", "November 21, 2026"},
        {"", "fr_FR.UTF-8", "de_DE", "UTC0", "21 novembre 2026"},
        {"de_DE", "fr_FR", "", "ABC-1", "22. November 2026"},
    };
    for (const auto& c : cases) {
        const ScopedVariable all("LC_ALL", c.all);
        const ScopedVariable time("LC_TIME", c.time);
        const ScopedVariable lang("LANG", c.lang);
        const ScopedVariable zone("TZ", c.zone);
        tzset();
        EXPECT_EQ(longDate(1795303800), c.date) << "23:30 UTC";
    }
    tzset();
}

TEST(Files, ReadsAndWritesRegularFilesOnly) {
    const TempFolder folder;
    const std::vector<std::uint8_t> bytes = {0, 255, 10};
    const std::string path = folder.write("a", "longer than that");
    const auto before = fileStamp(path);
    ASSERT_TRUE(writeFile(path, bytes));
    EXPECT_EQ(readFile(path), bytes);
    EXPECT_NE(fileStamp(path), before);
    EXPECT_FALSE(writeFile(folder.file("no/folder"), bytes));
    ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);
    for (const std::string& refused : {folder.path(), folder.file("fifo"), folder.file("none")}) {
        EXPECT_FALSE(readFile(refused)) << refused;
    }
}

TEST(Files, ListsNamesInNaturalOrder) {
    const TempFolder folder;
    std::istringstream words(
        ".h 0007 007 07 7 a a1 a02b a2c a9b a10 a10b2 a99999999999999999998 "
        "a99999999999999999999 \xC3\xA9");
    const std::vector<std::string> sorted(std::istream_iterator<std::string>(words), {});
    for (const std::string& name : sorted)
        folder.write(name, "");
    EXPECT_EQ(folderNames(folder.path()), sorted);
    EXPECT_FALSE(folderNames(folder.file("no folder")));
}

}  // namespace
}  // namespace tkv
