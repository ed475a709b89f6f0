#include <fmt/chrono.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <csignal>
#include <ctime>
#include <iterator>
#include <sstream>

#include "support.h"
#include "system/description.h"
#include "system/descriptor.h"
#include "system/files.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/syslog_socket.h"
#include "system/unfinished_file.h"
#include "system/unicode.h"
#include "utils/guarded_removal.h"
#include "utils/numbers.h"
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

TEST(Unicode, ChangesCaseInNoLanguagesOwnWay) {
    for (const auto& [locale, text, upper, capital] :
         {std::tuple{"fr_FR.UTF-8", "l'été", "L'ÉTÉ", "L'été"},
          {"de_DE", "straße", "STRASSE", "Straße"},
          {"C.UTF-8", "the big DAY", "THE BIG DAY", "The Big Day"},
          {"tr_TR.UTF-8", "1st\xFF iı", "1ST\uFFFD II", "1st\uFFFD Iı"},
          {"ka_GE", "თბილისი ᲗᲑᲘᲚᲘᲡᲘ", "თბილისი თბილისი",
           "თბილისი თბილისი"}}) {
        const ScopedVariable all("LC_ALL", locale), type("LC_CTYPE", locale);
        EXPECT_EQ(upperCased(text), upper) << locale;
        EXPECT_EQ(capitalized(text), capital) << locale;
    }
}

TEST(Unicode, WritesLongDatesInTheUsersLanguageAndZone) {
    const ScopedVariable zone("TZ", "ABC-1");
    tzset();
    const std::string endless(300, 'x'), english = "APRIL 23, 2026";
    for (const auto& [all, time, lang, date] :
         {std::tuple{"", "fr_FR.UTF-8", "es_ES", std::string("23 AVRIL 2026")},
          {"", "", "es_ES", "23 DE ABRIL DE 2026"},
          {"de_DE", "fr_FR", "es_ES", "23. APRIL 2026"},
          {"tr_TR", "", "", "23 NİSAN 2026"},
          {"ka_GE", "", "", "23 აპრილი, 2026"},
          {"el_GR", "", "", "23 ΑΠΡΙΛΙΟΥ 2026"},
          {"sr_RS.UTF-8", "", "", "23. АПРИЛ 2026."},
          {"sr_RS.UTF-8@latin", "", "", "23. APRIL 2026."},
          {"fr_FR@euro", "", "", "23 AVRIL 2026"},
          {"", "POSIX", "fr_FR", english},
          {"", "xx_YY", "fr_FR", english},
          {"", "", "", english},
          {"@latin", "", "", english},
          {endless.c_str(), "", "fr_FR", english}}) {
        const ScopedVariable first("LC_ALL", all), second("LC_TIME", time), third("LANG", lang);
        EXPECT_EQ(upperCasedLongDate(1776900600), date) << all << time << " at 23:30 UTC";
    }
}

TEST(Log, BeginsWithTheLocalTime) {
    const ScopedVariable zone("TZ", "ABC-14");  // A day with another date for most of the world.
    tzset();
    const auto hour = [] {
        return fmt::format("{:%Y-%m-%d %H:}", fmt::localtime(std::time(nullptr)));
    };
    const std::string before = hour();
    testing::internal::CaptureStderr();
    logLine("text\xFF");
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(line.starts_with(before) || line.starts_with(hour())) << line;
    EXPECT_TRUE(line.ends_with("text\uFFFD\n")) << line;
}

TEST(Log, DropsEntriesThatTheSystemDoesNotTake) {
    const TempFolder folder;
    sockaddr_un address{AF_UNIX, {}};
    folder.file("log").copy(address.sun_path, sizeof(address.sun_path) - 1);
    const Descriptor listener(socket(AF_UNIX, SOCK_DGRAM, 0));
    ASSERT_EQ(bind(listener.number(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    const SyslogSocket syslog(folder.file("log"));
    for (int i = 0; i < 10'000; ++i)
        syslog.send("program", "entry");
    std::array<char, 100> entry{};
    ASSERT_GT(recv(listener.number(), entry.data(), entry.size(), MSG_DONTWAIT), 0);
    EXPECT_TRUE(std::string(entry.data()).ends_with(" program: entry")) << entry.data();
    EXPECT_TRUE(std::string(entry.data()).starts_with("<13>"));
}

TEST(UnfinishedFile, IsRemovedByARunThatEnds) {
    const TempFolder folder;
    fs::create_symlink(folder.write("file", "half"), folder.file("link"));
    { const UnfinishedFile finished(folder.file("file")); }
    removeUnfinishedFile();
    EXPECT_TRUE(fs::exists(folder.file("file")));
    const UnfinishedFile unfinished(folder.file("link"));
    removeUnfinishedFile();
    EXPECT_EQ(namesIn(folder.path()), Strings{"link"}) << "the file behind the link";
}

TEST(Numbers, StayWithin32Bits) {
    for (const auto& [text, value] : {std::pair{" \t+7x", 7},
                                      {"4294967297", 2147483647},
                                      {"-99999999999999999999", -2147483647 - 1},
                                      {"x1", 0}})
        EXPECT_EQ(intValue(text), value);
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

TEST(Files, AreWrittenWholeOrNotAtAll) {
    const TempFolder folder;
    const std::string big = folder.write("big", std::string(100'000, 'x'));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t most : {rlim_t{50'000}, limit.rlim_max}) {
        const bool isEnough = most == limit.rlim_max;
        const rlimit set{most, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &set);
        EXPECT_EQ(copyFile(big, folder.file("copy")), isEnough);
        EXPECT_EQ(writeFile(folder.file("new"), *readFile(big)), isEnough);
        for (const char* name : {"copy", "new"})
            EXPECT_EQ(fs::exists(folder.file(name)), isEnough) << name;
    }
    static_cast<void>(std::signal(SIGXFSZ, handler));
    setrlimit(RLIMIT_FSIZE, &limit);
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
        EXPECT_EQ(errorsOf([&, path = path] { EXPECT_FALSE(ecritureFichier(path, "abc", true)); }),
                  lines);
    EXPECT_EQ(namesIn(folder.path()), (Strings{"fifo", "file"}));
    EXPECT_TRUE(fixBOM(file));
    EXPECT_EQ(readText(file), kMark + "def") << "the mark goes over what is there";
}

}  // namespace tkv::test::utilities
