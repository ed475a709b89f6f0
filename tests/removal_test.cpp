#include <unistd.h>

#include "support.h"
#include "utils/existence.h"
#include "utils/file_operations.h"
#include "utils/guarded_removal.h"

namespace tkv::test::removal {

using enum RemovalVerdict;

constexpr uid_t kNobody = 65534;

// GLib looks for the home and the Trash once a process, so that one scratch home serves all tests:
// nothing here may reach the Trash of the user who runs them.
struct ScratchHome : testing::Environment {
    ScratchHome() {
        setenv("HOME", folder.path().c_str(), 1);
        setenv("XDG_DATA_HOME", folder.file("data").c_str(), 1);
    }
    const TempFolder folder;
};

const TempFolder& scratch =
    static_cast<ScratchHome*>(testing::AddGlobalTestEnvironment(new ScratchHome))->folder;

// Only a user without privileges meets what cannot be removed.
struct Removal : testing::Test {
    void SetUp() override {
        trashCocoa(path("nothing"));  // The user below may not even read the program's module.
        if (geteuid() == 0) {
            ASSERT_EQ(chown(scratch.path().c_str(), kNobody, kNobody), 0);
            ASSERT_EQ(seteuid(kNobody), 0);
        }
        fs::create_directory(path("Movies"));
    }
    void TearDown() override {
        ASSERT_EQ(seteuid(getuid()), 0);
        fs::remove_all(path("Movies"));
        fs::remove_all(path("data"));
    }

    static std::string path(const std::string& name) { return scratch.file(name); }
    static std::string write(const std::string& name) { return scratch.write(name, "x"); }
    static void lock(const std::string& name) {
        fs::permissions(path(name), fs::perms::owner_read | fs::perms::owner_exec);
    }
};

TEST(RemovalVerdict, GuardsHomesVolumesAndTheSystem) {
    // Of "/home/é/" not the last two bytes count, but the last two characters.
    for (const auto& [verdict, paths] : std::vector<std::pair<RemovalVerdict, Strings>>{
             {refused, {"/", "/home", "/home/ada", "/home/ada/", "/home/é/", "/Users", "/Us"}},
             {refusedDirname, {"//", "/Applications", "/Users/other", "/Volumes/Data", "/*"}},
             {refusedDirname, {"/Volumes/*", "/usr/.", "/usr/bin/../../usr"}},
             {refusedWildcard, {"*foo", "/*/x", "/Volumes/Users/*"}},
             {allowed, {"/home/ada/Movies/old.jpg", "/Volumes/Data/x", "/tmp/a*b"}},
             {allowed, {"/TKVauthoring", "/TKVauthoring/menus", ""}}}) {
        for (const std::string& path : paths)
            EXPECT_EQ(removalVerdict(path, "/home/ada", "ada"), verdict) << path;
    }
    EXPECT_EQ(removalVerdict("/Volumes/Disk/ab/", "/Volumes/Disk/a", "ada"), refused);
}

TEST(RemovalVerdict, GuardsFoldersByTheirLocation) {
    for (const auto& [isGuarded, locations] : std::vector<std::pair<bool, Strings>>{
             {true, {"/", "/srv", "/home", "/home/bob", "/mnt/disk", "/media", "/media/stick"}},
             {true, {"/media/ada/stick", "/run/media/ada", "/run/media/ada/stick", "/run"}},
             {true, {"/data/homes", "/data/homes/ada", "/Volumes/Disk", "/Users/bob"}},
             {false, {"/home/bob/x", "/mnt/disk/x", "/media/bob/stick", "/run/media/bob/stick"}},
             {false, {"/data/homes/adam", "/data/homes/ada/x", "/srv/x", "/TKVauthoring"}}}) {
        for (const std::string& location : locations)
            EXPECT_EQ(isGuardedLocation(location, {"/data/homes/ada"}, "ada"), isGuarded)
                << location;
    }
}

TEST_F(Removal, LeavesRefusedPathsUntouched) {
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(rmCocoa("~")); }), "");
    EXPECT_EQ(errorsOf([] { EXPECT_TRUE(rmCocoa("")); }), "") << "nothing is nowhere";
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
    fs::create_symlink("Movies/secret", path("link"));
    EXPECT_FALSE(fileExists(item));
    EXPECT_TRUE(fileExists("~/link")) << "it leads to something";
    EXPECT_TRUE(fileExists("~/Movies"));
    EXPECT_FALSE(folderExists("~/Movies")) << "the tilde means no home folder here";
    fs::remove(path("link"));
    EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(rmCocoa(item)); }),
              "Cocoa:exists!!!     :-( " + item + "\n");
    EXPECT_EQ(namesIn(path("Movies")), Strings{"secret"});
}

}  // namespace tkv::test::removal
