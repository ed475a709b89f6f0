#include <sys/stat.h>
#include <unistd.h>

#include "support.h"
#include "system/held_item.h"
#include "utils/existence.h"
#include "utils/file_operations.h"
#include "utils/guarded_removal.h"
#include "utils/removal_guard.h"

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

TEST(RemovalVerdict, RefusesByTheText) {
    // Of "/home/é/" not the last two bytes count, but the last two characters.
    for (const auto& [verdict, paths] : std::vector<std::pair<RemovalVerdict, Strings>>{
             {refused, {"/", "/home", "/home/ada", "/home/ada/", "/home/é/", "/Users", "/Us"}},
             {refusedDirname, {"//", "/Applications", "/Users/other", "/Volumes/Data", "/*"}},
             {refusedDirname, {"/Volumes/*", "/usr/.", "/usr/bin/../../..", "x/..", "."}},
             {refusedWildcard, {"*foo", "/*/x", "/Volumes/Users/*"}},
             {allowed, {"/home/ada/Movies/old.jpg", "/Volumes/Data/x", "/tmp/a*b"}},
             {allowed, {"/TKVauthoring", "/TKVauthoring/menus", ""}}}) {
        for (const std::string& path : paths)
            EXPECT_EQ(removalVerdict(path, "/home/ada", "ada"), verdict) << path;
    }
    EXPECT_EQ(removalVerdict("/Volumes/Disk/ab/", "/Volumes/Disk/a", "ada"), refused);
}

TEST(RemovalGuard, KeepsWhatLiesWhereHomesVolumesAndTheSystemAre) {
    const GuardedPlaces places{{"/", "/Volumes", "/Users", "/private/Users"},
                               {"/home", "/var/home", "/mnt", "/media", "/media/ada"},
                               {"/srv/homes/ada", "/usr/sbin"},
                               {{"/", "/data/disk", "/TKVauthoring/disk"}}};
    using enum ItemKind;
    for (const auto& [kind, isKept, locations] : std::vector<std::tuple<ItemKind, bool, Strings>>{
             {folder, true, {"/tmp", "/home", "/home/bob", "/var/home/bob", "/var", "/mnt/disk"}},
             {folder, true, {"/media/stick", "/media/ada/stick", "/srv/homes/ada", "/srv/homes"}},
             {folder, true, {"/usr/sbin", "/data/disk", "/data", "/TKVauthoring"}},
             {folder, false, {"/home/bob/x", "/mnt/disk/x", "/media/bob/stick", "/srv/homes/bob"}},
             {folder, false, {"/srv/homes/ada/x", "/data/disk/x", "/data/diskette", "/var/x"}},
             {folder, false, {"/TKVauthoring2", "/TKVauthoring/menus"}},
             {file, true, {"/vmlinuz", "/Users/f", "/Volumes/f", "/private/Users/f"}},
             {file, false, {"/home/f", "/mnt/f", "/tmp/f", "/TKVauthoring.log"}},
             {nothing, false, {"/tmp/f", "/home/f"}},
             {other, true, {"/tmp/fifo", "/TKVauthoring/fifo"}}}) {
        for (const std::string& location : locations)
            EXPECT_EQ(isGuardedPlace(location, kind, places), isKept) << location;
    }
    GuardedPlaces unknown = places;
    unknown.mountPoints.reset();
    EXPECT_TRUE(isGuardedPlace("/tmp/x", folder, unknown));
    EXPECT_FALSE(isGuardedPlace("/tmp/x", file, unknown));
    // On this system; nothing is removed here.
    for (const char* location : {"/dev/null", "/usr", "/proc", "/root"})
        EXPECT_TRUE(isGuarded(location, "/home/ada", "ada")) << location;
}

TEST_F(Removal, LeavesRefusedPathsUntouched) {
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(rmCocoa("~")); }), "");
    EXPECT_EQ(errorsOf([] { EXPECT_TRUE(rmCocoa("")); }), "") << "nothing is nowhere";
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(rmCocoa("*")); }), "alerte de sécurité joker\n");
    const std::string item = write("Movies/sub/item");
    const std::string fifo = path("Movies/fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    fs::create_directory_symlink("/", path("Movies/root"));
    fs::create_directory_symlink(path("Movies/sub"), path("Movies/link"));
    fs::create_symlink("fifo", path("Movies/to fifo"));
    for (const std::string name : {"sub/.", "sub/deep/..", "link/.", "fifo", "to fifo", "root/usr",
                                   "root/etc/../none", "../Movies/../../tmp/.."}) {
        EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(rmCocoa("~/Movies/" + name)); }),
                  "alerte de sécurité dirname\n")
            << name;
    }
    EXPECT_TRUE(trashCocoa(path("Movies/sub/.")));
    EXPECT_TRUE(fs::exists(item)) << "nor to the Trash";
    EXPECT_TRUE(isGuarded(path("Movies/sub"), path("Movies/link"), "ada")) << "the home's link";
    EXPECT_TRUE(rmCocoa(item + "/")) << "a file is no folder";
    EXPECT_TRUE(fs::exists(item));
}

TEST_F(Removal, NeedsNoCurrentFolder) {
    const fs::path before = fs::current_path();
    for (const char* name : {"gone", "folder"})
        fs::create_directory(path("Movies/") + name);
    fs::current_path(path("Movies/gone"));
    fs::remove(path("Movies/gone"));
    EXPECT_TRUE(rmCocoa("~/Movies/folder"));
    EXPECT_TRUE(rmCocoa("relative"));
    EXPECT_EQ(namesIn(path("Movies")), Strings{});
    ASSERT_EQ(seteuid(getuid()), 0);  // Others may not go back there.
    fs::current_path(before);
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

TEST_F(Removal, OfOneFileLeavesFolders) {
    using enum Removable;
    const std::string item = write("Movies/folder/file");
    const std::string lines = errorsOf([] { EXPECT_FALSE(rmCocoa("~/Movies/folder", oneFile)); });
    EXPECT_NE(lines.find("not deleted 1"), std::string::npos) << lines;
    EXPECT_NE(lines.find("failure"), std::string::npos) << "nor is it in the Trash: " << lines;
    fs::create_directory_symlink(path("Movies/folder"), path("Movies/link"));
    EXPECT_TRUE(rmCocoa("~/Movies/link", oneFile));
    EXPECT_EQ(namesIn(path("Movies")), Strings{"folder"});
    EXPECT_TRUE(rmCocoa(item, oneFile));
    EXPECT_EQ(namesIn(path("Movies/folder")), Strings{});
}

TEST_F(Removal, IsDoneInTheFolderThatWasFound) {
    write("Movies/mine/file");
    write("Movies/mine/folder/file");
    write("Movies/theirs/file");
    write("Movies/theirs/folder/file");
    const auto file = HeldItem::at(path("Movies/mine/file"));
    const auto folder = HeldItem::at(path("Movies/mine/folder"));
    ASSERT_TRUE(file && folder && folder->isInPlace());
    fs::rename(path("Movies/mine"), path("Movies/moved"));
    fs::create_directory_symlink("theirs", path("Movies/mine"));
    EXPECT_FALSE(folder->isInPlace());
    EXPECT_TRUE(folder->removeFile()) << "is an error";
    EXPECT_FALSE(folder->removeAll());
    EXPECT_FALSE(file->removeFile());
    EXPECT_TRUE(file->removeAll()) << "it has gone";
    EXPECT_EQ(namesIn(path("Movies/moved")), Strings{});
    EXPECT_EQ(namesIn(path("Movies/theirs")), (Strings{"file", "folder"}));
    EXPECT_EQ(namesIn(path("Movies/theirs/folder")), Strings{"file"});
}

TEST_F(Removal, MovesWhatItCannotRemoveToTheTrashIfThereIsOne) {
    const std::string moved =
        "File current        :-( not deleted 1\nFile current        :-/ …to trash\n";
    write("Movies/item/locked/file");
    lock("Movies/item/locked");
    EXPECT_EQ(errorsOf([] { EXPECT_TRUE(rmCocoa("~/Movies/item")); }), moved);
    // Behind a link ".." leads elsewhere than the text of the path says.
    write("Movies/far/menus/locked/file");
    lock("Movies/far/menus/locked");
    fs::create_directory(path("Movies/far/deep"));
    write("Movies/near/menus/kept");
    fs::create_directory_symlink("../far/deep", path("Movies/near/link"));
    EXPECT_EQ(errorsOf([] { EXPECT_TRUE(rmCocoa("~/Movies/near/link/../menus")); }), moved);
    EXPECT_EQ(namesIn(path("Movies/near/menus")), Strings{"kept"});
    fs::remove_all(path("Movies/near"));
    fs::remove_all(path("Movies/far/deep"));
    EXPECT_EQ(namesIn(path("Movies/far")), Strings{});
    for (const char* name : {"item", "menus"}) {
        const std::string trashed = path("data/Trash/files/") + name + "/locked";
        EXPECT_EQ(namesIn(trashed), Strings{"file"});
        fs::permissions(trashed, fs::perms::owner_all);
    }

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
    EXPECT_TRUE(rmCocoa(item + "/"));
    EXPECT_EQ(errorsOf([&] { EXPECT_TRUE(rmCocoa(item)); }),
              "Cocoa:exists!!!     :-( " + item + "\n");
    EXPECT_EQ(namesIn(path("Movies")), Strings{"secret"});
}

}  // namespace tkv::test::removal
