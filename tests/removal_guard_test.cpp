#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <set>
#include <sstream>

#include "support.h"
#include "utils/file_operations.h"
#include "utils/guarded_removal.h"

// The removal on a whole disk of its own: the root of a child process is a scratch folder, which
// has homes, volumes and file systems where a real one has them.

namespace tkv::test::removal_guard {

/// The words of a text; an underscore stands for a blank.
Strings words(const std::string& text) {
    std::istringstream stream(text);
    Strings all(std::istream_iterator<std::string>(stream), {});
    for (std::string& word : all)
        std::ranges::replace(word, '_', ' ');
    return all;
}

const Strings kFolders = words(
    "/home/ada/Movies/menu/deep /home/ada/Movies/_b /home/ada/.cache /home/bob/Movies "
    "/srv/homes/carol/films /srv/www /Users/ada /Users/other/x /Volumes/Disk/menus "
    "/Volumes/Users/ada /mnt/usb /mnt/plain/x /media/ada/stick /media/ada/x /media/cd/x "
    "/run/media/ada/pen/x /data/disk /data/diskette/x /TKVauthoring/menus/x /TKVauthoring/disk "
    "/usr/bin /tmp/a.eyetv/deep /tmp/é /tmp/home/ada /tmp/~ /etc /proc");
const Strings kFileSystems = words("/mnt/usb /media/ada/stick /data/disk /TKVauthoring/disk");
const Strings kFiles = words(
    "/home/ada/Movies/menu.jpg /home/ada/Movies/menu/frame_1.jpg /home/ada/Movies/menu/* "
    "/home/bob/f /home/note /mnt/note /mnt/usb/film/f /data/disk/f /media/ada/stick/f "
    "/TKVauthoring/disk/f /TKVauthoring.log /srv/homes/carol/films/f /usr/bin/tool /vmlinuz "
    "/Users/f /Volumes/Disk/menus/f /Volumes/f /tmp/a*b /tmp/a.eyetv/rec.mpg /tmp/f");
/// Each link and where it leads.
const Strings kLinks = words(
    "/home/ada/Movies/root / /home/ada/Movies/up .. /home/ada/Movies/bob /home/bob "
    "/home/ada/Movies/none /none /home/ada/Movies/loop loop /home/ada/Movies/link menu "
    "/house /home /tmp/disk /data/disk /tmp/fifo_link fifo");

/// What ought never to go, whatever is asked.
const Strings kKept = words(
    "/home /home/ada /home/bob /srv /srv/homes /srv/homes/carol /Users /Users/ada /Users/other "
    "/Users/f /Volumes /Volumes/Disk /Volumes/Users /Volumes/f /mnt /mnt/usb /mnt/plain /media "
    "/media/ada /media/cd /media/ada/stick /media/ada/x /run /run/media /run/media/ada "
    "/run/media/ada/pen /data /data/disk /TKVauthoring /TKVauthoring/disk /usr /tmp /proc /vmlinuz "
    "/house /tmp/fifo /tmp/fifo_link");

void make(const std::string& root) {
    for (const std::string& folder : kFolders)
        fs::create_directories(root + folder);
    for (const std::string& file : kFiles) {
        fs::create_directories(fs::path(root + file).parent_path());
        std::ofstream(root + file) << file;
    }
    for (std::size_t i = 0; i < kLinks.size(); i += 2) {
        if (!fs::is_symlink(root + kLinks[i])) fs::create_symlink(kLinks[i + 1], root + kLinks[i]);
    }
    std::ofstream(root + "/etc/passwd") << "ada:x:0:0::/home/ada:\nbob:x:2:2::/home/bob:\n"
                                           "carol:x:3:3::/srv/homes/carol:\n";
    mkfifo((root + "/tmp/fifo").c_str(), 0600);
}

bool writeOwn(const char* file, const std::string& text) {
    std::ofstream stream(file);
    return static_cast<bool>(stream << text << std::flush);
}

/// Makes `root` the root of this process, in namespaces of its own. False where that is forbidden.
bool moveTo(const std::string& root) {
    const std::string user = std::to_string(getuid()), group = std::to_string(getgid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 || !writeOwn("/proc/self/setgroups", "deny") ||
        !writeOwn("/proc/self/uid_map", "0 " + user + " 1") ||
        !writeOwn("/proc/self/gid_map", "0 " + group + " 1") ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("/proc", (root + "/proc").c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
        return false;
    for (const std::string& place : kFileSystems) {
        if (mount("none", (root + place).c_str(), "tmpfs", 0, nullptr) != 0) return false;
    }
    return chroot(root.c_str()) == 0 && chdir("/") == 0;
}

/// All that is on the disk, links not followed.
std::set<std::string> everything() {
    std::set<std::string> paths;
    for (fs::recursive_directory_iterator entry("/"), end; entry != end; ++entry) {
        if (entry->path() == "/proc") entry.disable_recursion_pending();
        paths.insert(entry->path());
    }
    return paths;
}

/// Removes a path, makes anew what has gone and answers that. Expects that nothing has come.
std::set<std::string> goneWith(const std::string& path) {
    const std::set<std::string> before = everything();
    rmCocoa(path);
    std::set<std::string> gone = before;
    for (const std::string& left : everything())
        EXPECT_EQ(gone.erase(left), 1U) << left << " came with " << path;
    if (!gone.empty()) make("");
    return gone;
}

std::set<std::string> itemAt(const std::string& location) {
    std::set<std::string> items;
    for (const std::string& path : everything()) {
        if (path == location || path.starts_with(location + "/")) items.insert(path);
    }
    return items;
}

constexpr int kForbidden = 77;

/// Runs `action` on a disk of its own. Failures there are failures here.
void onScratchDisk(const std::function<void()>& action) {
    const TempFolder folder;
    make(folder.path());
    trashCocoa(folder.file("nothing"));  // The program's module is not on that disk.
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        if (!moveTo(folder.path())) _exit(kForbidden);
        make("");  // what is in the file systems
        setenv("HOME", "/home/ada", 1);
        dup2(open("/tmp/lines", O_CREAT | O_WRONLY, 0600), STDERR_FILENO);
        action();
        std::cout.flush();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (status == kForbidden << 8) GTEST_SKIP() << "the kernel forbids user namespaces here";
    EXPECT_EQ(status, 0) << "see above";
}

TEST(ScratchDisk, LosesNoHomeNoVolumeAndNotTheSystem) {
    onScratchDisk([] {
        EXPECT_EQ(goneWith(""), std::set<std::string>{});
        for (const std::string& path :
             words("/ // /// /. /.. /./ /../.. . .. ./ ~ ~/ ~/. ~/.. ~// ~ada ~bob ~bob/ ~carol "
                   "~carol/../carol ~/../bob ~/../../home ~/Movies/.. /home /home/ /home// //home "
                   "/./home /home/. /home/ada /home/ada/ /home/ada/. /home/ada// /home/ada/../ada "
                   "//home//ada /home/bob /home/bob/ /home/./bob /home/ada/../bob /tmp/../home/bob "
                   "/house /house/bob /house/ada /house/../home/bob ~/Movies/root/home "
                   "~/Movies/root/usr ~/Movies/root/vmlinuz ~/Movies/bob/.. ~/Movies/bob/../bob "
                   "~/Movies/loop/x ~/Movies/menu/. ~/Movies/menu/deep/.. /Users /Users/ /Us "
                   "/Users/ada /Users/other /Users//other /Users/f /tmp/../Users/other /Volumes "
                   "/Volumes/Disk /Volumes/Disk/ //Volumes/Disk /Volumes/./Disk /Volumes/f /mnt "
                   "/mnt/usb /mnt/usb/ /mnt/plain /mnt/usb/../plain /media /media/ada /media/cd "
                   "/media/ada/stick /media/ada/x /run /run/media /run/media/ada "
                   "/run/media/ada/pen /data /data/ /data/disk /data/disk/ /data/disk/.. "
                   "/data/disk/../disk /tmp/disk/../disk /srv /srv/homes /srv/homes/carol "
                   "/srv/homes/carol/../carol /TKVauthoring/disk /TKVauthoring "
                   "/TKVauthoring/../usr /TKVauthoring/.. /usr /usr/ /usr/bin/.. /vmlinuz /tmp "
                   "/proc * *x /* /*/x /Volumes/* /Volumes/Users/* /tmp/fifo /tmp/fifo_link "
                   "/tmp/f/ /tmp/none tmp usr home/bob "))
            EXPECT_EQ(goneWith(path), std::set<std::string>{}) << path;
    });
}

TEST(ScratchDisk, LosesTheItemAndNothingElse) {
    onScratchDisk([] {
        const Strings cases = words(
            "~/Movies/menu.jpg /home/ada/Movies/menu.jpg ~ada/Movies/menu /home/ada/Movies/menu "
            "~/Movies//menu/ /home/ada/Movies/menu ~/Movies/menu/* /home/ada/Movies/menu/* "
            "~/Movies/_b /home/ada/Movies/_b ~/Movies/link /home/ada/Movies/link "
            "~/Movies/link/ /home/ada/Movies/link ~/Movies/link/deep /home/ada/Movies/menu/deep "
            "~/Movies/none /home/ada/Movies/none ~/Movies/loop /home/ada/Movies/loop "
            "~/Movies/bob /home/ada/Movies/bob ~/Movies/up /home/ada/Movies/up ~/Movies/root/ "
            "/home/ada/Movies/root ~/Movies/bob/f /home/bob/f "
            "~/Movies/root/tmp/f /tmp/f /house/bob/Movies /home/bob/Movies /home/note /home/note "
            "/mnt/note /mnt/note /mnt/usb/film /mnt/usb/film /data/disk/f /data/disk/f "
            "/media/ada/stick/f /media/ada/stick/f /Volumes/Disk/menus /Volumes/Disk/menus "
            "/data/diskette /data/diskette /TKVauthoring/menus /TKVauthoring/menus "
            "/TKVauthoring.log /TKVauthoring.log /srv/www /srv/www "
            "/srv/homes/carol/films /srv/homes/carol/films /usr/bin/../bin/tool /usr/bin/tool "
            "/tmp/a*b /tmp/a*b /tmp/a.eyetv /tmp/a.eyetv /tmp/disk /tmp/disk "
            "/tmp/a.eyetv/rec.mpg /tmp/a.eyetv/rec.mpg /tmp/home /tmp/home /tmp/~ /tmp/~ "
            "tmp/é /tmp/é");
        for (std::size_t i = 0; i < cases.size(); i += 2) {
            const std::set<std::string> item = itemAt(cases[i + 1]);
            EXPECT_FALSE(item.empty()) << cases[i + 1];
            EXPECT_EQ(goneWith(cases[i]), item) << cases[i];
        }
    });
}

TEST(ScratchDisk, LosesNoHomeThroughABindMount) {
    onScratchDisk([] {
        const Strings binds = words("/srv /tmp/home / /mnt/plain/x /data/diskette/x /usr/bin");
        fs::create_directories("/data/diskette/x/eve/films");
        for (std::size_t i = 0; i < binds.size(); i += 2)
            ASSERT_EQ(mount(binds[i].c_str(), binds[i + 1].c_str(), nullptr, MS_BIND, nullptr), 0);
        for (const std::string& path :
             words("/tmp/home/homes /tmp/home/homes/carol /mnt/plain/x/srv/homes "
                   "/mnt/plain/x/srv/homes/carol /mnt/plain/x/home/bob /mnt/plain/x/home "
                   "/mnt/plain/x/usr /mnt/plain/x/vmlinuz /mnt/plain/x/Users/f "
                   "/mnt/plain/x/run/media/ada /mnt/plain/x/mnt/plain"))
            EXPECT_EQ(goneWith(path), std::set<std::string>{}) << path;
        for (const char* home : {"/data/diskette/x/eve", "/usr/bin/eve"}) {
            setenv("HOME", home, 1);
            for (const std::string& path : words("/data/diskette /mnt/plain/x/data/diskette/x "
                                                 "/mnt/plain/x/data/diskette/x/eve"))
                EXPECT_EQ(goneWith(path), std::set<std::string>{}) << path;
        }
        EXPECT_TRUE(goneWith("/tmp/home/www").contains("/srv/www"));
        EXPECT_TRUE(goneWith("/usr/bin/eve/films").contains("/data/diskette/x/eve/films"));
    });
}

struct Dice {
    // The same rounds each time. NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp)
    std::mt19937 numbers{12};
    std::size_t below(std::size_t end) { return numbers() % end; }
    const std::string& of(const Strings& words) { return words[below(words.size())]; }
};

/// Of names that are on the disk, and of what may stand between them.
std::string randomPath(Dice& dice, const Strings& paths) {
    static const Strings starts = words("/ // ~/ ~bob/ ~ ./ /tmp/ ~/Movies/ x");
    static const Strings names = words(
        "home ada bob Users Volumes mnt media * ~ menu Disk disk é \xFF _ up root bob Movies . .. "
        ".. link x TKVauthoring f");
    static const Strings ends = {"", "", "", "/", "//", "/.", "/..", "/../", "*", "\n"};
    std::string path = dice.below(3) > 0 ? dice.of(paths) : dice.of(starts);
    for (std::size_t i = dice.below(3); i > 0; --i)
        path += dice.of({"/", "/", "//", "/./", "/../"}) + dice.of(names);
    return path + dice.of(ends);
}

TEST(ScratchDisk, LosesOnlyTheItemOfAnyPath) {
    onScratchDisk([] {
        Dice dice;
        int removals = 0;
        const std::set<std::string> known = everything();
        Strings paths(known.begin(), known.end());
        for (int round = 0; round < 1000; ++round) {
            // The disk grows by files, folders, and links to anywhere.
            if (round % 10 == 0) {
                const std::string& added = paths.emplace_back(randomPath(dice, paths));
                std::error_code error;
                if (round % 3 == 0) fs::create_directories(added, error);
                if (round % 3 == 1) fs::create_symlink(randomPath(dice, paths), added, error);
                if (round % 3 == 2 && !fs::exists(added, error)) std::ofstream(added) << "x";
                continue;
            }
            const std::string path = randomPath(dice, paths);
            const std::set<std::string> gone = goneWith(path);
            if (gone.empty()) continue;
            ++removals;
            const std::string item = *gone.begin();
            for (const std::string& other : gone)
                EXPECT_TRUE(other == item || other.starts_with(item + "/")) << other;
            EXPECT_EQ(std::ranges::count(kKept, item), 0) << path;
            // The item has the path's own name, so it was no link that was followed.
            const std::string trimmed = path.substr(0, path.find_last_not_of('/') + 1);
            EXPECT_TRUE(trimmed.ends_with(fs::path(item).filename().string())) << path << item;
        }
        EXPECT_GT(removals, 30);
    });
}

}  // namespace tkv::test::removal_guard
