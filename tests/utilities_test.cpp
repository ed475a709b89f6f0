#include <sys/stat.h>

#include <sstream>

#include "platform/description.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/unicode.h"
#include "support.h"
#include "utils/existence.h"
#include "utils/file_operations.h"
#include "utils/numbers.h"
#include "utils/text_file.h"

namespace tkv::test {
namespace {

TEST(Paths, AreTakenApart) {
    const struct {
        const char *path, *parent, *last, *extension, *without;
    } cases[] = {
        {"/a/b.jpg/", "/a", "b.jpg", "jpg", "/a/b"},
        {"/a.b/c", "/a.b", "c", "", "/a.b/c"},
        {"a//b.c.d", "a", "b.c.d", "d", "a//b.c"},
        {"//a", "/", "a", "", "//a"},
        {"a", "", "a", "", "a"},
        {"/a/.profile", "/a", ".profile", "", "/a/.profile"},
        {"//", "/", "/", "", "/"},
        {"", "", "", "", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parentFolder(c.path), c.parent) << c.path;
        EXPECT_EQ(lastComponent(c.path), c.last) << c.path;
        EXPECT_EQ(pathExtension(c.path), c.extension) << c.path;
        EXPECT_EQ(withoutExtension(c.path), c.without) << c.path;
    }
    const ScopedVariable home("HOME", "/h/ada/");
    EXPECT_EQ(expandTilde("~//Movies"), "/h/ada/Movies");
    EXPECT_EQ(expandTilde("~nobody-at-all/x"), "~nobody-at-all/x");
    const ScopedVariable empty("HOME", "");
    EXPECT_EQ(expandTilde("~"), expandTilde("~" + loginName())) << "the user database decides";
}

TEST(Description, QuotesAndEscapes) {
    const Strings items = {"word9", "", "a\"b\\c\n\t\r\x01\x7F", "é…\U0001F600", "\xFF"};
    EXPECT_EQ(describe(items), R"((
    word9,
    "",
    "a\"b\\c\n\t\r\U0001\U007f",
    "\U00e9\U2026\Ud83d\Ude00",
    "\Ufffd"
))");
    EXPECT_EQ(validUtf8("é\xE2\x82x\xFF"), "é\uFFFD\uFFFDx\uFFFD");
    const std::string fifty = std::string(48, 'x') + "…\U0001F600";
    EXPECT_EQ(shortDescription(fifty), fifty);
    EXPECT_EQ(shortDescription(fifty + "x"), fifty + " […]");
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
        const ScopedVariable all("LC_ALL", c.all), time("LC_TIME", c.time), lang("LANG", c.lang),
            zone("TZ", c.zone);
        tzset();
        EXPECT_EQ(longDate(1795303800), c.date) << "23:30 UTC";
    }
    tzset();
}

TEST(Files, ListsNamesInNaturalOrder) {
    const TempFolder folder;
    std::istringstream words(
        ".h 0007 007 07 7 a a1 a02b a2c a9b a10 a10b2 a99999999999999999998 "
        "a99999999999999999999 \xC3\xA9");
    const Strings sorted(std::istream_iterator<std::string>(words), {});
    for (const std::string& name : sorted)
        folder.write(name, "");
    EXPECT_EQ(folderNames(folder.path()), sorted);
}

TEST(Existence, TellsWhatIsThere) {
    const TempFolder folder;
    const ScopedVariable home("HOME", folder.path());
    fs::create_symlink(folder.file("none"), folder.file("dangling"));
    fs::create_symlink(folder.path(), folder.file("link"));
    const struct {
        std::optional<std::string> path;
        bool file, folder;
    } cases[] = {{std::nullopt, false, false},
                 {"~/none", false, false},
                 {"~/dangling", false, false},
                 {folder.file("link"), true, true},
                 {"~", true, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(fileExists(c.path), c.file) << c.path.value_or("no path");
        EXPECT_EQ(folderExists(c.path), c.folder) << c.path.value_or("no path");
    }
}

TEST(MakeFolder, MakesParentsAndOpensTheFolderToAll) {
    const TempFolder folder;
    const ScopedVariable home("HOME", folder.path());
    const mode_t before = umask(077);
    EXPECT_TRUE(mkdirCocoa("~/a/b/"));
    umask(before);
    EXPECT_EQ(fs::status(folder.file("a/b")).permissions(), fs::perms::all);
    EXPECT_EQ(fs::status(folder.file("a")).permissions(), fs::perms::all);
    EXPECT_TRUE(mkdirCocoa(folder.path()));
    EXPECT_EQ(fs::status(folder.path()).permissions(), fs::perms::owner_all) << "it was there";
}

TEST(Dirname, TakesBundlesAsOneItem) {
    const struct {
        std::optional<std::string> path;
        const char* folder;
    } cases[] = {
        {std::nullopt, ""},
        {"/a/b.iMovieProject/Shared Movies/iDVD", "/a"},
        // The cut counts characters from the end, wherever the share stands.
        {"/a/b/c/d.iMovieProject/Shared Movies/iDVD/ééééé", "/a/b/c"},
        {"/a/rec.eyetv/file.mpg", "/a"},
        {"/a/rec.eyetv/deep/file.mpg", "/a/rec.eyetv/deep"},
        {"/a/rec.eyetv", "/a"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fichier_dirname(c.path), c.folder) << c.path.value_or("no path");
}

const std::string kMark = "\xEF\xBB\xBF";

TEST(TextFile, AppendsAndMarksNewFilesOnly) {
    const TempFolder folder;
    const ScopedVariable home("HOME", folder.path());
    fs::create_symlink(folder.file("behind"), folder.file("link"));
    const struct {
        std::string name, text;
        bool withBOM;
        std::string content;
    } cases[] = {
        {"marked", "abc", true, kMark + "abc"},
        {"marked", "def", true, kMark + "abcdef"},
        {"bare", "é\n", false, "é\n"},
        {"bare", "\xFF", true, "é\n\uFFFD"},
        {"link", "to none", true, kMark + "to none"},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(ecritureFichier("~/" + c.name, c.text, c.withBOM));
        EXPECT_EQ(readText(folder.file(c.name)), c.content);
    }
    const std::string file = folder.file("verbose");
    EXPECT_EQ(
        verboseErrorsOf([&] { ecritureFichier(file, "abc", true); }),
        "a creer…\nFixed BOM           :-) " + file + "\necrit               :-) " + file + "\n");
}

TEST(TextFile, LeavesAloneWhatCannotBeWritten) {
    const TempFolder folder;
    const std::string file = folder.file("file"), fifo = folder.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const struct {
        std::optional<std::string> path, text;
        const char* errors = "";
    } cases[] = {
        {std::nullopt, "abc"},
        {file, std::nullopt},
        {file, ""},
        {folder.path(), "abc"},
        {fifo, "abc"},
        {"/dev/full", "abc"},
        {folder.file("no/folder"), "abc", "Impossible to create destination file !\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(ecritureFichier(c.path, c.text, true)); }), c.errors)
            << c.path.value_or("no path");
    }
    EXPECT_TRUE(fixBOM(file)) << "there is none";
    EXPECT_TRUE(fixBOM(fifo)) << "nobody reads it";
    EXPECT_EQ(namesIn(folder.path()), Strings{"fifo"});
    EXPECT_TRUE(fixBOM(folder.write("file", "abcdef")));
    EXPECT_EQ(readText(file), kMark + "def") << "the mark goes over what is there";
}

TEST(Numbers, AreReadLeniently) {
    for (const auto& [text, value] :
         {std::pair{" \t-3 x", -3}, {"+7.9", 7}, {"- 5", 0}, {"99999999999", 2147483647}})
        EXPECT_EQ(intValue(text), value) << text;
    EXPECT_EQ(linesOfText("a\r\n \vé\u0085b\u2028c\u2029\n"), (Strings{"a", " ", "é", "b", "c"}));
}

}  // namespace
}  // namespace tkv::test
