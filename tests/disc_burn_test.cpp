#include <algorithm>
#include <cstdint>

#include "disc/burn/burner.h"
#include "disc/burn/burning.h"
#include "disc/run/fault.h"
#include "disc/run/terminal_progress.h"
#include "disc_films.h"

// Discs that are burnt, in drives that are files. What no file can show (an optical drive, a medium
// that is full or spoilt) is told by scripts, in the words of the real programs.

namespace tkv::test::burning {

using namespace tkv::disc;

TEST(Drives, AreFoundInTheKernelsList) {
    const std::string head = "CD-ROM information, Id: cdrom.c 3.20 2003/12/17\n\n";
    for (const auto& [info, writers] :
         {std::pair{head + "drive name:\t\tsr10\tsr1\tsr0\nCan write CD-R:\t\t1\t1\t1\n"
                           "Can write DVD-R:\t1\t1\t0\nCan write DVD-RAM:\t0\t0\t1\n",
                    Strings{"sr10", "sr1"}},
          {head + "drive name:\nCan write DVD-R:\n", {}},
          {head + "drive name:\tsr0\n", {}},
          {"", {}}})
        EXPECT_EQ(writersIn(info), writers);
}

TEST(Drives, AreNothingElse) {
    for (const auto& [facts, reason] :
         {std::pair{DeviceFacts{}, "There is no drive /dev/x."},
          {{true, false, false, true, "root"}, "/dev/x is no optical drive"},
          {{true, false, true, true, "cdrom"}, "/dev/x is no optical drive"},
          {{true, true, false, true, "disk"}, "/dev/x is no optical drive"},
          {{true, true, true, false, "cdrom"}, "lets you: usermod -aG cdrom $USER"},
          {{true, true, true, false, "root"}, "You may not write to /dev/x. Run this as"},
          {{true, true, true, true, "cdrom"}, ""}}) {
        const std::string why = whyNoDrive("/dev/x", facts);
        EXPECT_NE(why.find(reason), std::string::npos) << why;
        EXPECT_EQ(why.empty(), std::string_view(reason).empty()) << why;
    }
}

/// By what xorriso's tables of contents tell of it.
TEST(Media, AreBlankOrErased) {
    const std::string single = "2295104", two = "4173824";
    const auto table = [](const std::string& kind, const std::string& status,
                          const std::string& sectors) {
        return Strings{
            "Drive current: -outdev '/dev/sr0'",
            "Drive type   : vendor 'TSSTcorp' product 'CDDVDW SH-S203B' revision 'SB00'",
            "Media current: " + kind,
            "Media status : " + status,
            "Media blocks : 0 readable , " + sectors + " writable , " + sectors + " overall",
            "Media summary: 0 sessions, 0 data blocks, 0 data"};
    };
    const std::string written = "is written , is closed";
    const struct {
        Strings lines;
        bool erases;
        std::int64_t bytes;
        std::string reason;
    } rows[] = {
        {table("DVD-R sequential recording", "is blank", single), false, 4'700'000'000, ""},
        {table("DVD+R", "is blank", single), false, 4'800'000'000,
         "The DVD+R in /dev/sr0 takes 4.70 GB, and the disc needs 4.80 GB. Put in a larger one, or "
         "make a smaller disc: --size dvd5."},
        {table("DVD+R/DL", "is blank", two), false, 8'500'000'000, ""},
        {table("DVD-R/DL sequential recording", "is blank , but will need -close \"on\"", two),
         false, 8'600'000'000,
         "The DVD-R DL in /dev/sr0 takes 8.55 GB, and the disc needs 8.60 GB. Put in a larger "
         "one."},
        {table("DVD+R", written, single), true, 1,
         "The DVD+R in /dev/sr0 is written already, and cannot be erased. Put in a blank one."},
        {table("DVD-R sequential recording", "is written , is appendable", single), true, 1,
         "cannot be erased"},
        {table("DVD-ROM", written, "0"), true, 1, "The DVD-ROM in /dev/sr0 is written already"},
        {table("DVD+RW", written, "100"), false, 1,
         "The DVD+RW in /dev/sr0 is not blank. Put in another one, or have it erased: --erase."},
        {table("DVD-RW sequential recording", written, single), true, 4'700'000'000, ""},
        {table("DVD-RW restricted overwrite", "is written , is appendable", single), true, 1, ""},
        {table("DVD-RAM", "is blank", single), true, 1, ""},
        {table("CD-RW", "is blank", "359847"), true, 1,
         "The CD-RW in /dev/sr0 is no DVD. Put in a blank DVD."},
        {table("BD-RE", "is blank", "11826176"), true, 1, "The BD-RE in /dev/sr0 is no DVD"},
        {table("is not recognizable", "is not present", "0"), false, 1,
         "There is no disc in /dev/sr0. Put in a blank DVD."},
        {table("DVD-RW sequential recording", "is not recognizable", "0"), false, 1,
         "What is in /dev/sr0 is not recognised."},
        {{}, false, 1, "What is in /dev/sr0 is not recognised."},
    };
    const Drive drive{"/dev/sr0"};
    for (const auto& [lines, erases, bytes, reason] : rows) {
        const std::string why = whyNotBurnable(drive, mediumIn(drive, lines), bytes, erases);
        EXPECT_EQ(why.empty(), reason.empty()) << why;
        EXPECT_NE(why.find(reason), std::string::npos) << why;
    }
    // What it takes when it is erased is told behind what it is.
    Strings lines = table("DVD+RW", written, "100");
    std::ranges::copy(table("DVD+RW", "is blank", single), std::back_inserter(lines));
    EXPECT_EQ(whyNotBurnable(drive, mediumIn(drive, lines), 4'700'000'000, true), "");
    EXPECT_NE(whyNotBurnable(drive, mediumIn(drive, lines), 1, false), "");
}

TEST(Burner, TellsHowFarItIsAndWhyItFails) {
    for (const auto& [line, part] :
         {std::pair{"xorriso : UPDATE :   70 of  280 MB written (fifo 99%) [buf  50%]   8.0xD",
                    std::optional(0.25)},
          {" 1643773952/6575095808 (25.0%) @4.1x, remaining 12:40 RBU 100.0% UBU 90.3%", 0.25},
          {"xorriso : UPDATE :  300 of  280 MB written", 1},
          {"xorriso : UPDATE :    0 of    0 MB written", std::nullopt},
          {"xorriso : UPDATE :   70 MB written", std::nullopt},
          {"xorriso : UPDATE : Closing track/session. Working since 5 seconds", std::nullopt},
          {"/dev/sr0: splitting layers at 1605248 blocks", std::nullopt}})
        EXPECT_EQ(writtenPart(line), part) << line;
    for (const auto& [line, reads, cause] :
         {std::tuple{"libburn : FATAL : SCSI error on write(10): [3 0C 00] Medium error.", false,
                     "SCSI error on write(10): [3 0C 00] Medium error"},
          {"xorriso : FAILURE : Cannot acquire drive '/dev/sr0'", false,
           "Cannot acquire drive '/dev/sr0'"},
          {":-( /dev/sr0: media is not formatted or unsupported.", false,
           "/dev/sr0: media is not formatted or unsupported"},
          {"libburn : SORRY : Cannot read desired amount of data", true,
           "Cannot read desired amount of data"},
          {"libburn : SORRY : Cannot read desired amount of data", false, ""},
          {"xorriso : NOTE : Disc status unsuitable for writing", true, ""}})
        EXPECT_EQ(causeIn(line, reads), cause) << line;
}

/// An image beside a workshop, and a drive that is a file.
class Burning : public testing::Test {
  protected:
    Burning() : workshop_(folder_.file("work"), stop_) {
        std::uint32_t number = 1;
        std::string bytes(std::size_t{5000} * 2048, '\0');
        std::ranges::generate(bytes, [&] {
            number = number * 1103515245U + 12345U;
            return static_cast<char>(number >> 24U);
        });
        folder_.write("disc.iso", bytes);
        folder_.write("blank.img", "");
    }

    /// What burning ends with; `script`: what the program does instead.
    std::string burnt(const std::string& program, const std::string& script,
                      std::optional<std::int64_t> firstLayer = {}) {
        const std::string real = run("command -v " + program + " || true");
        folder_.write("bin/" + program,
                      fmt::format("#!/bin/sh\ncd {}\nreal={}\n{}\ncd work\nexec $real \"$@\"\n",
                                  folder_.path(), real.substr(0, real.find('\n')), script));
        fs::permissions(folder_.file("bin/" + program), fs::perms::owner_all);
        const ScopedVariable path("PATH", folder_.file("bin:") + std::getenv("PATH"));
        TerminalProgress quiet(TerminalProgress::Style::quiet);
        Progress progress(quiet);
        try {
            burn(
                {findDrive("stdio:" + folder_.file("blank.img")), false, "../disc.iso", firstLayer},
                workshop_, progress);
        } catch (const DiscError& error) {
            return error.what();
        }
        return "";
    }

    TempFolder folder_;
    tkv::ProgramStop stop_;
    Workshop workshop_;
};

TEST_F(Burning, IsCompared) {
    const std::string spoilt = "Now stdio:" + folder_.file("blank.img") +
                               " may be spoilt: have it written anew with --erase.";
    const std::string change = "printf x | dd conv=notrunc bs=1 of=blank.img 2>/dev/null seek=";
    const struct {
        std::string script, reason;
    } rows[] = {
        {"", ""},
        // Behind the image there may be anything.
        {"case \"$*\" in *check_media*) " + change + "$((5000 * 2048));; esac", ""},
        {"case \"$*\" in *check_media*) " + change + "$((4711 * 2048 + 5));; esac",
         "differs from it at sector 4711. " + spoilt},
        {"case \"$*\" in *check_media*) " + change + "$((5000 * 2048 - 1));; esac",
         "differs from it at sector 4999. " + spoilt},
        {"case \"$*\" in *check_media*) truncate -s 3000K blank.img;; esac",
         "cannot be read at sector"},
        {"case \"$*\" in *check_media*) exit 3;; esac", "cannot be read at sector 0"},
        // The first time only, as where a signal cuts what is written to a pipe short.
        {"case \"$*\" in *min_lba=0*) cd work; $real \"$@\" | head -c 6000000; exit;; esac", ""},
        {"case \"$*\" in *cdrecord*) echo 'libburn : FATAL : SCSI error on write(20480,16): "
         "[3 0C 00] Medium error. Write error.' >&2; echo 'xorriso : FAILURE : libburn "
         "indicates failure with writing.' >&2; exit 5;; esac",
         "disc.iso is whole, but could not be burnt: SCSI error on write(20480,16): [3 0C 00] "
         "Medium error. Write error. " +
             spoilt},
        {"case \"$*\" in *-toc*) echo 'Media current: stdio file, overwriteable'; echo 'Media "
         "status : is blank'; echo 'Media blocks : 0 readable , 4999 writable , 4999 overall'; "
         "exit;; esac",
         "disc.iso is whole, but is not burnt. stdio:"},
        {"case \"$*\" in *-toc*) echo \"libburn : FATAL : Cannot open busy device '/dev/sr0'\" "
         ">&2; exit 5;; esac",
         "cannot be used: Cannot open busy device '/dev/sr0'. Close what else uses it"},
    };
    for (const auto& [script, reason] : rows) {
        folder_.write("blank.img", "");
        const std::string why = burnt("xorriso", script);
        EXPECT_EQ(why.empty(), reason.empty()) << script << why;
        EXPECT_NE(why.find(reason), std::string::npos) << why;
    }
    folder_.write("blank.img", "not any more");
    EXPECT_NE(burnt("xorriso", "").find("disc.iso is whole, but is not burnt"), std::string::npos);
}

/// By the only program that has the second layer begin where it is told to.
TEST_F(Burning, TellsWhereTheSecondLayerBegins) {
    folder_.write("growisofs", "");
    const std::string dual =
        "case \"$*\" in *-toc*) echo 'Media current: DVD+R/DL'; echo 'Media status : is blank'; "
        "exit;; *cdrecord*) exit 9;; esac";
    burnt("growisofs",
          "echo \"$@\" >said; for last; do :; done; cp disc.iso \"${last%%=*}\"; exit");
    EXPECT_EQ(burnt("xorriso", dual, 2512), "");
    EXPECT_EQ(test::readText(folder_.file("said")),
              fmt::format("-dvd-compat -use-the-force-luke=tty,notray,break:2512 -Z "
                          "{}=../disc.iso\n",
                          folder_.file("blank.img")));
    EXPECT_NE(burnt("xorriso", dual), "") << "there is one layer";
}

}  // namespace tkv::test::burning

namespace tkv::test::disc {

TEST_F(Films, AreBurnt) {
    makeReady();
    const std::string words = "--no-menu -o out ready.vob --burn";
    folder_.write("blank.img", "");
    // It takes no film for the drive.
    const struct {
        std::string words, reason;
    } faults[] = {
        {"--no-menu -o out --burn=/dev/null ready.vob", "/dev/null is no optical drive"},
        {words + "=ready.vob", "ready.vob is no optical drive, and nothing is written to it"},
        {words + "=stdio:/dev/null --erase", "/dev/null is no file"},
        {words + "=stdio:missing.img", "missing.img is no file"},
        {words + "=stdio:ready.vob --erase",
         "holds something else than a disc, and stays as it is"},
    };
    for (const auto& [line, reason] : faults) {
        const std::string said = makeDisc(line);
        EXPECT_NE(said.find(reason), std::string::npos) << said;
        EXPECT_TRUE(said.ends_with("status 1\n")) << said;
    }
    EXPECT_EQ(namesIn(file("out")), (Strings{".tkvDvdDisc", "work"})) << "before all else";

    const std::string drive = "=stdio:blank.img";
    EXPECT_NE(makeDisc(words + drive).find("disc.iso is written to stdio:"), std::string::npos);
    const std::string image = readText(file("out/disc.iso"));
    EXPECT_TRUE(!image.empty() && readText(file("blank.img")).starts_with(image));
    EXPECT_NE(makeDisc(words + drive).find("blank.img is not blank."), std::string::npos);

    // The drive is slow to stop.
    const std::string slow = faked("xorriso",
                                   "case \"$*\" in *-as*-v*) trap 'sleep 3; echo rests >&2; "
                                   "exec 2>&-; touch rests; exit 1' TERM; "
                                   "echo writing >writing; while :; do sleep 0.1; done;; esac; "
                                   "exec $real \"$@\"");
    const std::string said = run(fmt::format(
        "cd {}; {}env --default-signal {} {} --erase 2>said & program=$!; "
        "until [ -e out/work/writing ]; do sleep 0.1; done; kill -INT $program; wait $program; "
        "echo status $?; cat said",
        folder_.path(), slow, quoted(discProgramPath()), words + drive));
    EXPECT_NE(said.find("status 130"), std::string::npos) << said;
    EXPECT_NE(said.find("the drive is brought to rest"), std::string::npos) << said;
    EXPECT_NE(said.find("may be spoilt: have it written anew with --erase"), std::string::npos);
    EXPECT_TRUE(fs::exists(file("out/work/rests")));
    EXPECT_EQ(readText(file("out/disc.iso")).size(), image.size()) << "is whole";
    expectDisc("--quiet " + words + drive + " --erase");
}

}  // namespace tkv::test::disc
