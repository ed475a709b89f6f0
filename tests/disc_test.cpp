#include <algorithm>
#include <array>
#include <bit>
#include <csignal>
#include <cstdint>

#include "player.h"

// From films to a disc with the real programs, and what a player does with it.

namespace tkv::test::disc {

/// Short films of all kinds, made once. Film 1 has two chapters, the first red and the second blue.
class Films : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TempFolder>();
        const std::string mark = ";FFMETADATA1\ntitle=Chapters & more\n";
        const std::string chapter = "[CHAPTER]\nTIMEBASE=1/1\nSTART={}\nEND={}\ntitle={}\n";
        folder_->write("marks", mark + fmt::format(fmt::runtime(chapter), 0, 4, "Red") +
                                    fmt::format(fmt::runtime(chapter), 4, 8, "Blue"));
        const std::string sound = "-f lavfi -i sine=r=48000";
        make(fmt::format("-f lavfi -i color=red:s=1280x720:r=25:d=4 "
                         "-f lavfi -i color=blue:s=1280x720:r=25:d=4 {} -i marks "
                         "-filter_complex '[0][1]concat,drawbox=460:200:360:320:white:40,"
                         "scale=out_color_matrix=bt709' -colorspace bt709 -map 2:a "
                         "-map_metadata 3 -t 8",
                         sound),
             "chapters a:b 100%.mp4");
        make("-f lavfi -i testsrc2=s=360x640:r=30:d=4", "it's \"upright\" & silent |.mp4");
        make(fmt::format("-f lavfi -i testsrc=s=720x576:r=25:d=4 {0} {0} -map 0:v -map 1:a -map "
                         "2:a -flags +ilme+ildct -top 1 -aspect 4:3 -c:v mpeg2video -b:v 6M "
                         "-metadata:s:a:0 language=fra -metadata:s:a:1 language=jpn -t 4",
                         sound),
             "-fields.mkv");
        make(fmt::format(
                 "-f lavfi -i testsrc2=s=720x576:r=25:d=4 {} -t 4 -target pal-dvd -aspect 4:3",
                 sound),
             "ready.vob");
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static void make(const std::string& words, const std::string& name) {
        run(fmt::format("cd {} && ffmpeg -nostdin -v error -y {} {}", folder_->path(), words,
                        quoted("file:" + name)));
    }

    /// Runs the program in the films' folder; its output, and its status in the last line.
    /// `before`: what the shell is told first.
    static std::string makeDisc(const std::string& words, const std::string& before = "") {
        return run(fmt::format("cd {}; {}{} {}; echo status $?", folder_->path(), before,
                               quoted(discProgramPath()), words));
    }

    /// Words for the shell, so that a program of this name does something else.
    static std::string faked(const std::string& name, const std::string& script) {
        const std::string path =
            folder_->write(fmt::format("fake-{}/{}", std::hash<std::string>()(script), name),
                           "#!/bin/sh\n" + script);
        fs::permissions(path, fs::perms::owner_all);
        return fmt::format("PATH={}:$PATH ", fs::path(path).parent_path().string());
    }

    static std::string file(const std::string& name) { return folder_->file(name); }

    static std::unique_ptr<TempFolder> folder_;
};
std::unique_ptr<TempFolder> Films::folder_;

/// Highlighted and activated, one of a button's four pixel values is the overlays' orange, which is
/// 146, 193, 53 as Y, Cr and Cb.
void expectOrangeHighlights(Player& player) {
    // Its numbers stand at odd addresses, too.
    using Colors = std::array<std::array<std::uint32_t, 2>, 3>;
    const auto [highlighted, activated] =
        std::bit_cast<Colors>(player.highlights().btn_colit).front();
    for (const auto& [color, contrast] : {std::pair(highlighted, 4), {activated, 9}}) {
        EXPECT_TRUE(std::ranges::any_of(std::array{0, 1, 2, 3}, [&, color = color,
                                                                 contrast = contrast](int value) {
            const Rgba shown = player.highlightColor(color, value);
            return shown.alpha == contrast && near(shown, {146, 193, 53, contrast}, 2);
        })) << contrast;
    }
}

/// The buttons are drawn for both kinds of displays, and the arrow keys reach them all.
void expectButtons(Player& player, int count) {
    const hli_t& highlights = player.highlights();
    ASSERT_EQ(highlights.hl_gi.btn_ns, count);
    ASSERT_EQ(highlights.hl_gi.btngr_ns, 2);
    EXPECT_EQ(highlights.hl_gi.btngr1_dsp_ty, 1) << "wide displays";
    EXPECT_EQ(highlights.hl_gi.btngr2_dsp_ty, 4) << "4:3 displays, the middle of the page";
    EXPECT_NE(rectanglesOf(highlights, 0), rectanglesOf(highlights, 1));
    std::vector<int> reached{1};
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const btni_t& button = highlights.btnit[reached[i] - 1];
        for (const int next : {+button.up, +button.down, +button.left, +button.right})
            if (!std::ranges::count(reached, next)) reached.push_back(next);
    }
    EXPECT_EQ(reached.size(), count);
    expectOrangeHighlights(player);
}

/// A disc of the four films: the first has a chapter menu.
void expectDiscThatLeads(const std::string& disc, double frame) {
    Player player(disc);
    ASSERT_EQ(player.place(), "films 1");
    expectButtons(player, 5);
    for (int packs = 0; packs < 100; ++packs)
        ASSERT_EQ(player.play(), "films 1") << "its clip repeats";
    for (const int group : {0, 1}) {
        for (const int film : {2, 3, 4}) {
            ASSERT_EQ(player.press(film, group), fmt::format("film {}", film));
            ASSERT_EQ(player.leave(), "films 1");
            EXPECT_EQ(player.button(), film);
        }
        ASSERT_EQ(player.press(1, group), "chapters 1.1");
        expectButtons(player, 4);
        for (const int chapter : {2, 1}) {
            ASSERT_EQ(player.press(chapter, group), "film 1");
            EXPECT_EQ(player.chapter(), chapter);
            EXPECT_NEAR(player.seconds(), 4.0 * (chapter - 1), frame);
            ASSERT_EQ(player.leave(), "chapters 1.1");
            EXPECT_EQ(player.button(), chapter);
        }
        ASSERT_EQ(player.press(3, group), "film 1");
        EXPECT_EQ(player.chapter(), 1);
        ASSERT_EQ(player.leave(), "chapters 1.1");
        ASSERT_EQ(player.press(4, group), "films 1");
        EXPECT_EQ(player.button(), 1);

        ASSERT_EQ(player.press(5, group), "film 1") << "plays all";
        for (const int film : {2, 3, 4})
            ASSERT_EQ(player.leave(), fmt::format("film {}", film));
        ASSERT_EQ(player.leave(), "films 1");
        EXPECT_EQ(player.button(), 5);
    }
    ASSERT_EQ(player.press(5), "film 1");
    ASSERT_EQ(player.press(DVD_MENU_Root), "chapters 1.1") << "ends playing all";
    ASSERT_EQ(player.press(3), "film 1");
    ASSERT_EQ(player.leave(), "chapters 1.1");
    ASSERT_EQ(player.press(DVD_MENU_Title), "films 1");
    ASSERT_EQ(player.press(3), "film 3");
    ASSERT_EQ(player.press(DVD_MENU_Root), "films 1");
    EXPECT_EQ(player.button(), 3);
}

/// The mean colour of a film's picture on a disc, in the middle of the frame at `seconds`.
Rgba colorOnDisc(const std::string& vob, double seconds, const std::string& file) {
    run(
        fmt::format("ffmpeg -nostdin -v error -y -i {} -ss {} -frames:v 1 -vf "
                    "crop=100:320:20,scale=1:1:in_color_matrix=bt601:flags=area {}",
                    quoted(vob), seconds, quoted(file)));
    return pixel(*decodePicture(file), 0, 0);
}

TEST_F(Films, BecomeADiscThatLeads) {
    for (const std::string standard : {"pal", "ntsc"}) {
        SCOPED_TRACE(standard);
        const std::string out = file("it's a disc, 100 % \"A&B\" " + standard);
        const std::string said = makeDisc(
            fmt::format("--{} --language fr --title 'Un été' -o {} -- chap*.mp4 it*.mp4 -f*.mkv "
                        "ready.vob",
                        standard, quoted(out)));
        ASSERT_TRUE(said.ends_with("status 0\n")) << said;
        EXPECT_EQ(namesIn(out),
                  (Strings{".tkvDvdDisc", "disc", "disc.iso", "jacket.jpg", "menus", "work"}));
        EXPECT_EQ(namesIn(out + "/menus"), (Strings{"film-1-chapters-1.jpg", "films-1.jpg"}));
        EXPECT_EQ(said.find("copied as it is") != std::string::npos, standard == "pal") << said;
        for (const char* disc : {"/disc", "/disc.iso"})
            expectDiscThatLeads(out + disc, standard == "pal" ? 0.041 : 0.034);
        const std::string vob = out + "/disc/VIDEO_TS/VTS_01_1.VOB";
        EXPECT_TRUE(near(colorOnDisc(vob, 1, file("color.png")), {253, 2, 2, 255}, 12));
        EXPECT_TRUE(near(colorOnDisc(vob, 5, file("color.png")), {2, 2, 253, 255}, 12));
        const std::string listing = run("lsdvd -a " + quoted(out + "/disc"));
        EXPECT_NE(listing.find("Language: fr"), std::string::npos) << listing;
        EXPECT_NE(listing.find("Language: ja"), std::string::npos) << listing;
    }
}

TEST_F(Films, AreNotMadeTwice) {
    const auto disc = [&](const std::string& words, const std::string& before = "") {
        return makeDisc("--no-image -o again ready.vob chap*.mp4 " + words, before);
    };
    ASSERT_TRUE(disc("").ends_with("status 0\n"));
    const std::string film = run("cd " + folder_->path() + "; ls --full-time again/work/film-*");
    const std::string said = disc("--title Other", faked("ffprobe", "exit 1"));
    EXPECT_EQ(run("cd " + folder_->path() + "; ls --full-time again/work/film-*"), film);
    EXPECT_NE(said.find("Making the menu films-1"), std::string::npos) << said;
    EXPECT_EQ(said.find("Making the menu film-2"), std::string::npos) << said;
    // Where other fonts are installed an encoder is asked for the menus, and for nothing else.
    const std::string fonts = folder_->write(
        "fonts.conf", "<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir></fontconfig>");
    const std::string anew = disc(
        "--title Other", fmt::format("FONTCONFIG_FILE={} {}", fonts, faked("ffmpeg", "exit 1")));
    EXPECT_NE(anew.find("The menu films-1 could not be encoded"), std::string::npos) << anew;
    // What was kept and is damaged is made anew.
    run("cd " + folder_->path() + "; for kept in again/work/*.json; do echo '{' >$kept; done");
    EXPECT_TRUE(disc("--clean --title Other").ends_with("status 0\n"));
    EXPECT_EQ(namesIn(file("again")), (Strings{".tkvDvdDisc", "disc", "jacket.jpg", "menus"}));
}

TEST_F(Films, JustPlayWithoutAMenu) {
    ASSERT_TRUE(
        makeDisc("--no-menu -o plays ready.vob chap*.mp4 chap*.mp4").ends_with("status 0\n"))
        << "one of them twice";
    Player player(file("plays/disc"));
    EXPECT_EQ(player.place(), "film 1");
    EXPECT_EQ(player.leave(), "film 2");
    EXPECT_EQ(player.press(DVD_MENU_Title), "film 1");
    EXPECT_EQ(player.leave(), "film 2");
    EXPECT_EQ(player.leave(), "film 3");
    EXPECT_EQ(player.leave(), "") << "the disc's end";
}

TEST_F(Films, KeepTheirChaptersWhereTheSoundEndsEarly) {
    make("-f lavfi -i testsrc2=s=320x180:r=25:d=40 -f lavfi -i sine=r=48000:d=2", "short.mkv");
    ASSERT_TRUE(makeDisc("--no-menu --no-image --chapters every=5s -o short short.mkv")
                    .ends_with("status 0\n"));
    const std::string listing = run("lsdvd -c " + file("short/disc"));
    EXPECT_NE(listing.find("Chapters: 08,"), std::string::npos) << listing;
}

/// What can go wrong while a disc is made. Nothing of a disc is left where one is not whole.
TEST_F(Films, EndWithAReason) {
    folder_->write("others/letter.txt", "dear");
    folder_->write("text.mp4", "no film");
    run(fmt::format("cd {}; head -c 60000 chap*.mp4 >cut.mp4; cp ready.vob goes.vob",
                    folder_->path()));
    const struct {
        std::string before, words, reason;
    } cases[] = {
        {"", "-o others ready.vob", "holds files of others"},
        {"", "-o faults missing.mp4", "there is no such film"},
        {"", "-o faults text.mp4", "cannot be read as a film: Invalid data"},
        {"", "-o faults cut.mp4", "cut.mp4"},
        {"ulimit -c 0; ulimit -f 100; ", "-o faults chap*.mp4", "File too large"},
        {faked("ffmpeg", "rm -f " + file("goes.vob") + "; exec /usr/bin/ffmpeg \"$@\""),
         "--volume even -o faults goes.vob", "No such file or directory"},
        {faked("ffmpeg", "exit 0"), "-o faults ready.vob", "ready.vob could be taken at"},
        {faked("ffmpeg",
               "case \"$*\" in *pipe:0*) head -c 9000000 | wc -c >&2; exit 1;; esac\n"
               "exec /usr/bin/ffmpeg \"$@\""),
         "-o faults ready.vob", "The menu films-1 could not be encoded: 9000000"},
        {faked("spumux", "echo 'ERR:  Bad things: no room.' >&2; cat"), "-o faults ready.vob",
         "could not be given buttons: no room"},
        {faked("spumux", "cat"), "-o faults ready.vob", "buttons: spumux adds none"},
        {faked("dvdauthor", "exit 3"), "--no-menu -o faults ready.vob",
         "could not be written: dvdauthor ended with status 3"},
        {faked("dvdauthor", "exit 0"), "--no-menu -o faults ready.vob",
         "dvdauthor has left out some of its files"},
        {faked("genisoimage", "true"), "--no-menu -o faults ready.vob", "shorter than the disc"},
        {faked("genisoimage", "kill -9 $$"), "--no-menu -o faults ready.vob",
         "genisoimage was ended by signal 9"},
    };
    for (const auto& [before, words, reason] : cases) {
        const std::string said = makeDisc(words, before);
        EXPECT_TRUE(said.ends_with("status 1\n")) << words;
        const std::size_t last = said.rfind("tkvDvdDisc: ");
        ASSERT_NE(last, std::string::npos) << said;
        EXPECT_NE(said.substr(last).find(reason), std::string::npos) << said;
        EXPECT_FALSE(fs::exists(file("faults/disc"))) << words;
        EXPECT_FALSE(fs::exists(file("faults/work/unfinished"))) << words;
    }
    EXPECT_EQ(namesIn(file("others")), Strings{"letter.txt"});
}

TEST_F(Films, CanBeInterrupted) {
    make("-f lavfi -i testsrc2=s=1280x720:r=25:d=60 -preset ultrafast", "long.mp4");
    const std::string said =
        run(fmt::format(
                "cd {}; {} --no-menu -o stops ready.vob long.mp4 2>said & program=$!; "
                "until ls stops/work/unfinished/*.mpg; do sleep 0.1; done; "
                "kill -TERM $program; wait $program; echo status $?; cat said; pgrep -P $program",
                folder_->path(), quoted(discProgramPath())) +
            "; true");
    EXPECT_NE(said.find("status 143\n"), std::string::npos) << said;
    EXPECT_NE(said.find("Interrupted. 1 of 2 films is ready"), std::string::npos) << said;
    EXPECT_EQ(namesIn(file("stops")), (Strings{".tkvDvdDisc", "work"}));
    EXPECT_FALSE(fs::exists(file("stops/work/unfinished")));
}

}  // namespace tkv::test::disc
