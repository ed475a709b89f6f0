#include <unistd.h>

#include <memory>

#include "support.h"
#include "utils/guarded_removal.h"

namespace tkv::test {
namespace {

using enum RemovalVerdict;

constexpr uid_t kNobody = 65534;

// GLib looks for the home and the Trash once a process, so that one scratch home serves all tests:
// nothing here may reach the Trash of the user who runs them.
class ScratchHome : public testing::Environment {
  public:
    void SetUp() override {
        folder = std::make_unique<TempFolder>();
        setenv("HOME", folder->path().c_str(), 1);
        setenv("XDG_DATA_HOME", folder->file("data").c_str(), 1);
    }
    void TearDown() override { folder.reset(); }

    std::unique_ptr<TempFolder> folder;
};

auto* const scratch =
    dynamic_cast<ScratchHome*>(testing::AddGlobalTestEnvironment(new ScratchHome));

// Only a user without privileges meets what cannot be removed.
class Removal : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() == 0) {
            ASSERT_EQ(chown(scratch->folder->path().c_str(), kNobody, kNobody), 0);
            ASSERT_EQ(seteuid(kNobody), 0);
        }
        fs::create_directory(path("Movies"));
    }
    void TearDown() override {
        ASSERT_EQ(seteuid(getuid()), 0);
        fs::remove_all(path("Movies"));
        fs::remove_all(path("data"));
    }

    static std::string path(const std::string& name) { return scratch->folder->file(name); }
    static std::string write(const std::string& name) { return scratch->folder->write(name, "x"); }
    static void lock(const std::string& name) {
        fs::permissions(path(name), fs::perms::owner_read | fs::perms::owner_exec);
    }
};

TEST(RemovalVerdict, GuardsHomesVolumesAndTheSystem) {
    const struct {
        RemovalVerdict verdict;
        Strings paths;
    } cases[] = {
        // Of "/home/é/" not the last two bytes count, but the last two characters.
        {refused, {"", "/", "/home", "/home/ada", "/home/ada/", "/home/é/", "/Users", "/Us"}},
        {refusedDirname, {"//", "/Applications", "/Users/other", "/Volumes/Data", "/*"}},
        {refusedDirname, {"/Volumes/*", "/usr/.", "/usr/bin/../../usr"}},
        {refusedJoker, {"*foo", "/*/x", "/Volumes/Users/*"}},
        {allowed, {"/home/ada/Movies/old.jpg", "/Volumes/Data/x", "/tmp/a*b"}},
        {allowed, {"/TKVauthoring", "/TKVauthoring/menus"}},
    };
    for (const auto& c : cases) {
        for (const std::string& path : c.paths)
            EXPECT_EQ(removalVerdict(path, "/home/ada", "ada"), c.verdict) << path;
    }
    EXPECT_EQ(removalVerdict("/Volumes/Disk/ab/", "/Volumes/Disk/a", "ada"), refused);
}

TEST_F(Removal, LeavesRefusedPathsUntouched) {
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(rmCocoa("~")); }), "");
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(rmCocoa("~/Movies/..")); }),
              "alerte de sécurité dirname\n");
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(rmCocoa("*")); }), "alerte de sécurité joker\n");
    fs::create_directory_symlink("/", path("Movies/root"));
    fs::create_directory_symlink(path(""), path("Movies/home"));
    for (const auto& [item, home, verdict] : {std::tuple{"root/usr", "", refusedDirname},
                                              {"home/.", "", refusedDirname},
                                              {"home", "x", allowed},
                                              {"home/Movies/..", "home", refusedDirname}})
        EXPECT_EQ(removalVerdict(path("Movies/") + item, path("Movies/") + home, "ada"), verdict)
            << item;
}

TEST_F(Removal, RemovesFilesFoldersAndLinksButNotTheirTargets) {
    write("Movies/kept/file");
    write("Movies/folder/deep/file");
    for (const char* link : {"folder/link", "link", "slash"})
        fs::create_directory_symlink(path("Movies/kept"), path("Movies/") + link);
    fs::create_symlink(path("Movies/none"), path("Movies/dangling"));
    for (const std::string name : {"folder/deep/file", "folder", "link", "slash/", "dangling"})
        EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(rmCocoa("~/Movies/" + name)); }), "") << name;
    EXPECT_EQ(namesIn(path("Movies")), Strings{"kept"});
    EXPECT_EQ(namesIn(path("Movies/kept")), Strings{"file"});
}

TEST_F(Removal, TellsItsSteps) {
    const std::string item = write("Movies/old.jpg");
    const std::string checks = fmt::format(
        "rmCocoa             - begin - {0}\nEyetvBundle         - begin - {0}\n"
        "EyetvBundle         - end   - {0}\nfichier_dirname     - end   - {1}\n",
        item, path("Movies"));
    EXPECT_EQ(verboseErrorsOf([&] { EXPECT_TRUE(rmCocoa(item)); }),
              checks + "File current        : exists: " + item +
                  "\nrmCocoa             - pre-fin\nrmCocoa             - end - " + item + "\n");
    const std::string missing = "ERR: No such file or directory (" + item + ")\n";
    EXPECT_EQ(verboseErrorsOf([&] { EXPECT_TRUE(rmCocoa(item)); }),
              checks + "rmCocoa d           : nil\nCocoa:does not exist:-/ " + missing +
                  "Cocoa:does not exist;-) " + missing);
}

TEST_F(Removal, MovesWhatItCannotRemoveToTheTrashIfThereIsOne) {
    const std::string moved =
        "File current        :-( not deleted 1\nFile current        :-/ …to trash\n";
    write("Movies/item/locked/file");
    lock("Movies/item/locked");
    EXPECT_EQ(errorsOf([] { EXPECT_TRUE(rmCocoa("~/Movies/item")); }), moved);
    EXPECT_EQ(namesIn(path("Movies")), Strings{});
    const std::string trashed = path("data/Trash/files/item/locked");
    EXPECT_EQ(namesIn(trashed), Strings{"file"});
    fs::permissions(trashed, fs::perms::owner_all);

    fs::remove_all(path("data"));
    write("data");  // a file where the Trash's folder ought to be
    const std::string item = write("Movies/locked/file");
    lock("Movies/locked");
    EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(rmCocoa(item)); }),
              moved + "File current        :-( failure\n");
    EXPECT_EQ(namesIn(path("Movies/locked")), Strings{"file"});
    fs::permissions(path("Movies/locked"), fs::perms::owner_all);
}

TEST_F(Removal, LeavesAnUnreadableFile) {
    const std::string item = write("Movies/secret");
    fs::permissions(item, fs::perms::none);
    EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(rmCocoa(item)); }),
              "Cocoa:exists!!!     :-( " + item + "\n");
    EXPECT_EQ(namesIn(path("Movies")), Strings{"secret"});
}

}  // namespace
}  // namespace tkv::test
