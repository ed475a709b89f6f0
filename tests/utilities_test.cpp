#include <sys/stat.h>

#include <iterator>
#include <sstream>

#include "support.h"
#include "system/description.h"
#include "system/files.h"
#include "system/paths.h"
#include "system/unicode.h"
#include "utils/guarded_removal.h"
#include "utils/text_file.h"

namespace tkv::test::utilities {

TEST(Description, QuotesAndEscapes) {
    const Strings items = {"word9", "", "a\"b\\c\n\t\r\x01\x7F", "é…\U0001F600", "\xFF"};
    EXPECT_EQ(describe(items),
              "(\n    word9,\n    \"\",\n    \"a\\\"b\\\\c\\n\\t\\r\\U0001\\U007f\",\n"
              "    \"\\U00e9\\U2026\\Ud83d\\Ude00\",\n    \"\\Ufffd\"\n)");
    EXPECT_EQ(validUtf8(std::string("é\xE2\x82x\xFF\0", 7)), "é\uFFFDx\uFFFD\uFFFD");
}

TEST(Description, ShortensByCharacters) {
    const std::string fifty = fmt::format("{:é>50}", "");
    EXPECT_EQ(shortDescription(fifty), fifty);
    EXPECT_EQ(shortDescription(fifty + "x"), fifty + " […]");
}

TEST(Tilde, StandsForAHomeFolder) {
    const ScopedVariable home("HOME", "/homes/ada");
    for (const auto& [path, expanded] : {std::pair{"~", "/homes/ada"},
                                         {"~/a", "/homes/ada/a"},
                                         {"~root/a", "/root/a"},
                                         {"~nobody we know", "~nobody we know"},
                                         {"a/~", "a/~"}})
        EXPECT_EQ(expandTilde(path), expanded);
}

TEST(Unicode, ChangesCaseInTheUsersLanguage) {
    for (const auto& [locale, text, upper, capital] :
         {std::tuple{"fr_FR.UTF-8", "l'été", "L'ÉTÉ", "L'été"},
          {"de_DE", "straße", "STRASSE", "Straße"},
          {"C.UTF-8", "the big DAY", "THE BIG DAY", "The Big Day"},
          {"POSIX", "1st\xFF iı", "1ST\uFFFD II", "1st\uFFFD Iı"},
          {"tr_TR.UTF-8@x", "iı", "İI", "İı"}}) {
        const ScopedVariable all("LC_ALL", locale);
        EXPECT_EQ(upperCased(text), upper) << locale;
        EXPECT_EQ(capitalized(text), capital) << locale;
    }
}

TEST(Unicode, WritesLongDatesInTheUsersLanguageAndZone) {
    const ScopedVariable all("LC_ALL", ""), time("LC_TIME", "fr_FR.UTF-8"), zone("TZ", "ABC-1");
    tzset();
    EXPECT_EQ(longDate(1795303800), "22 novembre 2026") << "23:30 UTC";
}

TEST(Files, ListsNamesInNaturalOrder) {
    const TempFolder folder;
    std::istringstream names(
        ".h 0007 007 07 7 a a1 a02b a2c a9b a10 a10b2 a99999999999999999998 "
        "a99999999999999999999 é");
    const Strings sorted(std::istream_iterator<std::string>(names), {});
    for (const std::string& name : sorted)
        folder.write(name, "");
    EXPECT_EQ(folderNames(folder.path()), sorted);
}

TEST(Dirname, TakesBundlesAsOneItem) {
    // The cut counts characters from the end, wherever the share stands.
    for (const auto& [path, folder] :
         {std::pair{"/a/b.iMovieProject/Shared Movies/iDVD", "/a"},
          {"/a/b/c/d.iMovieProject/Shared Movies/iDVD/ééééé", "/a/b/c"},
          {"/a/rec.eyetv/file.mpg", "/a"},
          {"/a/rec.eyetv/deep/file.mpg", "/a/rec.eyetv/deep"},
          {"/a/rec.eyetv", "/a"}})
        EXPECT_EQ(fichier_dirname(path), folder) << path;
}

const std::string kMark = "\xEF\xBB\xBF";

TEST(TextFile, AppendsAndMarksNewFilesOnly) {
    const TempFolder folder;
    const ScopedVariable home("HOME", folder.path());
    fs::create_symlink(folder.file("behind"), folder.file("link"));
    for (const auto& [name, text, withBOM, content] :
         {std::tuple{"marked", "abc", true, kMark + "abc"},
          {"marked", "def", true, kMark + "abcdef"},
          {"bare", "é\n", false, "é\n"},
          {"bare", "\xFF", true, "é\n\uFFFD"},
          {"link", "to none", true, kMark + "to none"}}) {
        EXPECT_TRUE(ecritureFichier(std::string("~/") + name, text, withBOM));
        EXPECT_EQ(readText(folder.file(name)), content);
    }
}

TEST(TextFile, LeavesAloneWhatCannotBeWritten) {
    const TempFolder folder;
    const std::string file = folder.write("file", "abcdef"), fifo = folder.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const auto& [path, lines] : {std::pair(std::string(), ""),
                                      {folder.path(), ""},
                                      {fifo, ""},
                                      {"/dev/full", ""},
                                      {file + "/a", "Impossible to create destination file !\n"}})
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(ecritureFichier(path, "abc", true)); }), lines);
    EXPECT_EQ(namesIn(folder.path()), (Strings{"fifo", "file"}));
    EXPECT_TRUE(fixBOM(file));
    EXPECT_EQ(readText(file), kMark + "def") << "the mark goes over what is there";
}

}  // namespace tkv::test::utilities
