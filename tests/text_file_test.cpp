#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support.h"
#include "utils/text_file.h"

namespace tkv {
namespace {

using test::errorsOf;
using test::readText;
using test::TempFolder;
using test::verboseErrorsOf;

const std::string kMark = "\xEF\xBB\xBF";

TEST(TextFile, AppendsAndMarksNewFilesOnly) {
    const TempFolder folder;
    const test::ScopedVariable home("HOME", folder.path());
    std::filesystem::create_symlink(folder.file("behind"), folder.file("link"));
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
        EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(ecritureFichier("~/" + c.name, c.text, c.withBOM)); }),
                  "");
        EXPECT_EQ(readText(folder.file(c.name)), c.content);
    }
    const std::string file = folder.file("verbose");
    EXPECT_EQ(
        verboseErrorsOf([&] { ecritureFichier(file, "abc", true); }),
        "a creer…\nFixed BOM           :-) " + file + "\necrit               :-) " + file + "\n");
}

TEST(TextFile, LeavesAloneWhatCannotBeWritten) {
    const TempFolder folder;
    const std::string file = folder.file("file");
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const struct {
        std::optional<std::string> path, text;
        const char* errors;
    } cases[] = {
        {std::nullopt, "abc", ""},
        {"", "abc", ""},
        {file, std::nullopt, ""},
        {file, "", ""},
        {folder.path(), "abc", ""},
        {fifo, "abc", ""},
        {"/dev/full", "abc", ""},
        {folder.file("no/folder"), "abc", "Impossible to create destination file !\n"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(ecritureFichier(c.path, c.text, true)); }), c.errors)
            << c.path.value_or("no path");
    }
    EXPECT_FALSE(fixBOM(std::nullopt));
    EXPECT_TRUE(fixBOM(file)) << "there is none";
    EXPECT_TRUE(fixBOM(fifo)) << "nobody reads it";
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"fifo"});
    EXPECT_TRUE(fixBOM(folder.write("file", "abcdef")));
    EXPECT_EQ(readText(file), kMark + "def") << "the mark goes over what is there";
}

}  // namespace
}  // namespace tkv
