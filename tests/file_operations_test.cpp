#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support.h"
#include "utils/existence.h"
#include "utils/file_operations.h"

namespace tkv {
namespace {

namespace fs = std::filesystem;
using test::errorsOf;
using test::ScopedVariable;
using test::TempFolder;
using test::verboseErrorsOf;

TEST(Existence, TellsWhatIsThere) {
    const TempFolder folder;
    const ScopedVariable home("HOME", folder.path());
    ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);
    fs::create_symlink(folder.file("none"), folder.file("dangling"));
    fs::create_symlink(folder.path(), folder.file("link"));
    const struct {
        std::optional<std::string> path;
        bool file, folder;
    } cases[] = {
        {std::nullopt, false, false},       {"", false, false},
        {"~/none", false, false},           {"~/dangling", false, false},
        {folder.file("fifo"), true, false}, {folder.file("link"), true, true},
        {folder.path(), true, true},        {"~", true, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fileExists(c.path), c.file) << c.path.value_or("no path");
        EXPECT_EQ(folderExists(c.path), c.folder) << c.path.value_or("no path");
    }
}

TEST(MakeFolder, MakesParentsAndOpensTheFolderToAll) {
    const TempFolder folder;
    const ScopedVariable home("HOME", folder.path());
    const mode_t before = umask(077);
    EXPECT_EQ(verboseErrorsOf([] { EXPECT_TRUE(mkdirCocoa("~/a/b/")); }),
              "mkdir               :    '~/a/b/'\n"
              "mkdir               :-)  '~/a/b/'\n");
    umask(before);
    EXPECT_EQ(fs::status(folder.file("a/b")).permissions(), fs::perms::all);
    EXPECT_EQ(fs::status(folder.file("a")).permissions(), fs::perms::all);
    EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(mkdirCocoa(folder.path())); }), "");
    EXPECT_EQ(fs::status(folder.path()).permissions(), fs::perms::owner_all) << "it was there";
    folder.write("file", "");
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(mkdirCocoa("~/file")); }),
              "mkdir               :-(  '~/file'\n"
              "mkdir               :-(( '~/file'\n");
}

TEST(ListFolder, GivesFullPathsInNaturalOrder) {
    const TempFolder folder;
    EXPECT_FALSE(lsCocoa(folder.path()));
    for (const char* name : {"f10", "f9", ".f"})
        folder.write(name, "");
    const std::vector<std::string> paths = {folder.file(".f"), folder.file("f9"),
                                            folder.file("f10")};
    EXPECT_EQ(verboseErrorsOf([&] { EXPECT_EQ(lsCocoa(folder.path() + "/"), paths); }),
              "lsCocoa             - begin : " + folder.path() +
                  "/\nlsCocoa             - end : 3 items : (\n    \"" + paths[0] + "\",\n    \"" +
                  paths[1] + "\",\n    \"" + paths[2] + "\"\n)\n");
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
    for (const auto& c : cases) {
        EXPECT_EQ(fichier_dirname(c.path), c.folder) << c.path.value_or("no path");
    }
    EXPECT_EQ(verboseErrorsOf([] { fichier_dirname("/a/b.iMovieProject/Shared Movies/iDVD"); }),
              "bundle imovie        : /a/b\n"
              "EyetvBundle         - begin - /a/b\n"
              "EyetvBundle         - end   - /a/b\n"
              "fichier_dirname     - end   - /a\n");
}

TEST(ShortDescription, CutsAfterFiftyCharacters) {
    const std::string fifty = std::string(49, 'x') + "é";
    EXPECT_EQ(shortDescription(fifty), fifty);
    EXPECT_EQ(shortDescription(fifty + "x"), fifty + " […]");
}

}  // namespace
}  // namespace tkv
