#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "disc/author/layer_break.h"
#include "disc_films.h"

// From films to a disc with the real programs, and what a player does with it.

namespace tkv::test::disc {

/// What a player shows of a button along a line of `length` pixels from (x, y): the light of a
/// frame as 'l', its dark as 'd', nothing as '.', and all else as '?'.
struct ShownButton {
    const Player& player;
    const Subpicture& picture;
    std::uint32_t colors;  ///< as a highlight has them
    Rgba light;            ///< Y, Cr, Cb and contrast

    std::string along(int x, int y, int stepX, int stepY, int length) const {
        std::string line;
        for (; length > 0; --length, x += stepX, y += stepY)
            line +=
                at(picture.rows.at(static_cast<std::size_t>(y)).at(static_cast<std::size_t>(x)));
        return line;
    }

    char at(char value) const {
        if (value == ' ') return '.';
        const Rgba shown = player.highlightColor(colors, value - '0');
        if (shown.alpha == 0) return '.';
        if ((picture.contrasts >> (4 * (value - '0')) & 15U) > 0) return '?';  // Without a button.
        if (near(shown, light, 2)) return 'l';
        return near(shown, {16, 128, 128, 12}, 2) ? 'd' : '?';
    }
};

/// Every button has a frame within its edges on both kinds of displays, and nothing in it: light
/// between dark for the `thumbnails`, a thinner one for labels, light alone above the text.
/// Selected, the light is the labels' orange.
void expectFrames(Player& player, int thumbnails) {
    // Its numbers stand at odd addresses, too.
    using Colors = std::array<std::array<std::uint32_t, 2>, 3>;
    for (const int group : {0, 1}) {
        const Subpicture picture = player.subpicture(group);
        const hli_t& highlights = player.highlights();
        const auto colors = std::bit_cast<Colors>(highlights.btn_colit);
        for (int i = 0; i < highlights.hl_gi.btn_ns; ++i) {
            const btni_t& button = highlights.btnit[18 * group + i];
            const auto left = static_cast<int>(button.x_start);
            const auto top = static_cast<int>(button.y_start);
            const int width = static_cast<int>(button.x_end) - left;
            const int height = static_cast<int>(button.y_end) - top;
            const std::string edge = i < thumbnails ? "ddlllldd" : "ddll";
            const std::string upper = i < thumbnails ? edge : "ll";
            const auto framed = [&](const std::string& before, int length) {
                const auto inside = static_cast<std::size_t>(length) - before.size() - edge.size();
                return "." + before + std::string(inside, '.') +
                       std::string(edge.rbegin(), edge.rend()) + ".";
            };
            const auto& [highlighted, selected] = colors.at(button.btn_coln - 1U);
            for (const auto& [color, light] : {std::pair(highlighted, Rgba{234, 128, 128, 15}),
                                               {selected, {146, 193, 53, 15}}}) {
                const ShownButton shown{player, picture, color, light};
                EXPECT_EQ(shown.along(left - 1, top + height / 2, 1, 0, width + 2),
                          framed(edge, width))
                    << group << i;
                EXPECT_EQ(shown.along(left + width / 2, top - 1, 0, 1, height + 2),
                          framed(upper, height))
                    << group << i;
            }
        }
    }
}

/// The buttons are drawn for both kinds of displays. `arrows`: the buttons to which up, down, left
/// and right lead from each.
void expectButtons(Player& player, int thumbnails, const Strings& arrows) {
    const hli_t& highlights = player.highlights();
    ASSERT_EQ(highlights.hl_gi.btn_ns, arrows.size());
    ASSERT_EQ(highlights.hl_gi.btngr_ns, 2);
    EXPECT_EQ(highlights.hl_gi.btngr1_dsp_ty, 1) << "wide displays";
    EXPECT_EQ(highlights.hl_gi.btngr2_dsp_ty, 4) << "4:3 displays, the middle of the page";
    EXPECT_NE(rectanglesOf(highlights, 0), rectanglesOf(highlights, 1));
    for (std::size_t i = 0; i < arrows.size(); ++i) {
        EXPECT_EQ(player.arrowsFrom(static_cast<int>(i) + 1), arrows[i]) << i + 1;
        const btni_t& other = highlights.btnit[18 + i];
        EXPECT_EQ(fmt::format("{} {} {} {}", +other.up, +other.down, +other.left, +other.right),
                  arrows[i])
            << i + 1 << " on 4:3 displays";
    }
    expectFrames(player, thumbnails);
}

/// A disc of the four films: the first has a chapter menu.
void expectDiscThatLeads(const std::string& disc) {
    Player player(disc);
    ASSERT_EQ(player.place(), "films-1");
    expectButtons(player, 4, {"5 3 1 2", "5 4 1 2", "1 3 3 4", "2 4 3 4", "5 2 5 5"});
    for (int packs = 0; packs < 100; ++packs)
        ASSERT_EQ(player.play(), "films-1") << "its clip repeats";
    for (const int group : {0, 1}) {
        for (const int film : {2, 4}) {
            ASSERT_EQ(player.press(film, group), fmt::format("film {}", film));
            ASSERT_EQ(player.leave(), "films-1");
            EXPECT_EQ(player.button(), film);
        }
        ASSERT_EQ(player.press(1, group), "film-1-page-1");
        expectButtons(player, 2, {"3 4 1 2", "3 4 1 2", "3 2 3 3", "2 4 4 4"});
        for (const int chapter : {2, 1}) {
            ASSERT_EQ(player.press(chapter, group), "film 1");
            EXPECT_EQ(player.chapter(), chapter);
            EXPECT_NEAR(player.seconds(), 2.2 * (chapter - 1), 0.041);
            ASSERT_EQ(player.leave(), "film-1-page-1");
            EXPECT_EQ(player.button(), chapter);
        }
        ASSERT_EQ(player.press(3, group), "film 1");
        EXPECT_EQ(player.chapter(), 1);
        ASSERT_EQ(player.leave(), "film-1-page-1");
        ASSERT_EQ(player.press(4, group), "films-1");
        EXPECT_EQ(player.button(), 1);

        ASSERT_EQ(player.press(5, group), "film 1") << "plays all";
        for (const int film : {2, 3, 4})
            ASSERT_EQ(player.leave(), fmt::format("film {}", film));
        ASSERT_EQ(player.leave(), "films-1");
        EXPECT_EQ(player.button(), 5);
    }
    ASSERT_EQ(player.press(5), "film 1");
    ASSERT_EQ(player.press(DVD_MENU_Root), "film-1-page-1") << "ends playing all";
    ASSERT_EQ(player.press(3), "film 1");
    ASSERT_EQ(player.leave(), "film-1-page-1");
    ASSERT_EQ(player.press(DVD_MENU_Title), "films-1");
    ASSERT_EQ(player.press(4), "film 4");
    ASSERT_EQ(player.press(DVD_MENU_Root), "films-1");
    EXPECT_EQ(player.button(), 4);
}

/// A disc of one film, which its thumbnail plays.
void expectDiscOfOneFilm(const std::string& disc) {
    Player player(disc);
    expectButtons(player, 1, {"1 1 1 1"});
    // On wide displays, too, it is as high as the thumbnail.
    EXPECT_EQ(rectanglesOf(player.highlights(), 0),
              Strings{R"(x0="130" y0="92" x1="590" y1="392")"});
    ASSERT_EQ(player.press(1), "film 1");
    ASSERT_EQ(player.leave(), "films-1");
}

/// A disc of the four films is made once more, and comes out wrong.
void Films::expectFaultsTold(const std::string& out) const {
    const std::string before = run("ls -liR --time-style=+ " + quoted(out) + "/disc*");
    const std::string wrong = faked("dvdauthor",
                                    "sed -i 's/4096; jump title 4/4096; jump title 2/' $2\n"
                                    "$real \"$@\"\ncd unfinished/disc/VIDEO_TS\n"
                                    "truncate -s -4096 VTS_01_1.VOB\n"
                                    "printf x | dd of=VTS_02_0.BUP bs=1 seek=99 conv=notrunc");
    const std::string words = " --language fr --title 'Un été' --pal -o " + quoted(out) +
                              " -- chap*.mp4 it*.mp4 -f*.mkv ready.vob";
    const std::string said = makeDisc(words, wrong);
    for (const char* part :
         {"Film 1, chapters a:b 100%.mp4: VTS_01_1.VOB has ", "VTS_02_0.BUP does not equal VTS_02",
          "Button 4 of films-1 (Ready) leads to film 2, chapter 1 instead of film 4",
          "Button 4 of films-1 (Ready) on 4:3 displays leads to film 2", "\nstatus 1\n"})
        EXPECT_NE(said.find(part), std::string::npos) << part << said;
    const std::string faulty = "rm -r " + quoted(out + "/disc-faulty");
    EXPECT_EQ(run(faulty + "; ls -liR --time-style=+ " + quoted(out) + "/disc*"), before);
}

TEST_F(Films, BecomeADiscThatLeads) {
    makeAllKinds();
    for (const bool isPal : {true, false}) {
        SCOPED_TRACE(isPal);
        const std::string out = file(fmt::format("it's a disc, 100 % \"A&B\" {}", isPal));
        const std::string said =
            makeDisc(fmt::format("--language fr --title 'Un été' -o {} {}", quoted(out),
                                 isPal ? "--pal -- chap*.mp4 it*.mp4 -f*.mkv ready.vob"
                                       : "--ntsc --chapters none --music none chap*.mp4"));
        ASSERT_TRUE(said.ends_with("status 0\n")) << said;
        EXPECT_EQ(said.find("warns"), std::string::npos) << said;
        EXPECT_EQ(namesIn(out), (Strings{".tkvDvdDisc", "cover.pdf", "disc", "disc.iso",
                                         "jacket.jpg", "menus", "work"}));
        EXPECT_EQ(said.find("copied as it is") != std::string::npos, isPal) << said;
        for (const char* disc : {"/disc", "/disc.iso"})
            isPal ? expectDiscThatLeads(out + disc) : expectDiscOfOneFilm(out + disc);
        EXPECT_TRUE(near(colorAt(out + kFirstFilm, 1, "crop=100:320:20"), {253, 2, 2, 255}, 12));
        EXPECT_TRUE(near(colorAt(out + kFirstFilm, 3, "crop=100:320:20"), {2, 2, 253, 255}, 12));
        EXPECT_EQ(readText(out + "/disc.iso").substr(32'808, 7), "UN_ETE ");
        EXPECT_NE(said.find("/dev/sr0=" + quoted(out + "/disc.iso")), std::string::npos) << said;
        const std::string tables = readText(out + "/disc/VIDEO_TS/VIDEO_TS.IFO");
        // In the sector that it names, the language of the menus.
        EXPECT_EQ(tables.substr(2048UL * static_cast<unsigned char>(tables[0xCB]) + 8, 2), "fr");
        EXPECT_EQ(hertzAt(out + "/disc/VIDEO_TS/VIDEO_TS.VOB", 1) > 0, isPal);
        EXPECT_NE(said.find(isPal ? "Checked: 13 buttons on 3 pages lead where they should.\n"
                                  : "Checked: 1 button on 1 page leads where it should.\n"),
                  std::string::npos)
            << said;
        if (!isPal) continue;
        EXPECT_EQ(namesIn(out + "/menus"),
                  (Strings{"film-1-chapters-1.jpg", "film-3-languages-1.jpg", "films-1.jpg"}));
        const Bitmap chapters = *decodePicture(out + "/menus/film-1-chapters-1.jpg");
        EXPECT_TRUE(near(pixel(chapters, 105, 80), {253, 2, 2, 255}, 12));
        EXPECT_TRUE(near(pixel(chapters, 256, 80), {2, 2, 253, 255}, 12));
        const std::string listing = run("lsdvd -a " + quoted(out + "/disc"));
        EXPECT_NE(listing.find("Language: fr"), std::string::npos) << listing;
        EXPECT_NE(listing.find("Language: ja"), std::string::npos) << listing;
        expectFaultsTold(out);
    }
}

TEST_F(Films, JustPlayWithoutAMenu) {
    makeAllKinds();
    make("turns.mkv", "-f lavfi -i color=red:s=64x36:d=4,fade=out:50:1:color=blue -c:v ffv1 -g 1");
    folder_.write("blue.toml", "film = [{path = 'turns.mkv', excerpt = 3}]");
    expectDisc("--no-menu -o plays blue.toml chap*.mp4 chap*.mp4");  // One of them twice.
    EXPECT_TRUE(near(pixel(menu("plays/jacket.jpg"), 20, 20), {1, 1, 153, 255}, 12));
    run(
        fmt::format("cd {}/plays; pdftoppm -r 72 -png -singlefile cover.pdf cover; "
                    "pdftotext cover.pdf",
                    folder_.path()));
    EXPECT_TRUE(near(pixel(menu("plays/cover.png"), 600, 60), {0, 0, 254, 255}, 12));
    EXPECT_NE(readText(file("plays/cover.txt")).find("Chapters & more"), std::string::npos);
    Player player(file("plays/disc"));
    EXPECT_EQ(player.place(), "film 1");
    EXPECT_EQ(player.leave(), "film 2");
    for (const auto key : {DVD_MENU_Title, DVD_MENU_Root}) {
        EXPECT_EQ(player.press(key), "film 1");
        EXPECT_EQ(player.leave(), "film 2");
    }
    EXPECT_EQ(player.leave(), "film 3");
    EXPECT_EQ(player.leave(), "") << "the disc's end";
}

TEST_F(Films, KeepTheirChaptersWhereTheSoundEndsEarly) {
    make("short.mkv", "-f lavfi -i color=s=160x90:r=25:d=20 -f lavfi -i sine=r=48000:d=1");
    makeReady();
    expectDisc("--no-menu --no-image --chapters every=2.5s -o short short.mkv ready.vob");
    const std::string listing = run("lsdvd -c " + file("short/disc"));
    EXPECT_NE(listing.find("Chapters: 08,"), std::string::npos) << listing;

    // Burned onto two layers, the second would begin with one.
    tkv::ProgramStop stop;
    const tkv::disc::Workshop workshop(file("layers"), stop);
    fs::copy(file("short/disc"), workshop.path("disc"), fs::copy_options::recursive);
    EXPECT_FALSE(tkv::disc::setLayerBreak("disc", workshop));
    EXPECT_FALSE(tkv::disc::setLayerBreak("disc", workshop, {1, 500})) << "before the middle";
    const auto sectors = tkv::disc::setLayerBreak("disc", workshop, {1, 1 << 20});
    const std::string image = workshop.path("disc.iso");
    run(fmt::format("genisoimage -quiet -dvd-video -udf -o {} {}", image, workshop.path("disc")));
    ASSERT_TRUE(sectors && *sectors % 16 == 0 &&
                static_cast<std::size_t>(*sectors) * 4096 > fs::file_size(image));
    const std::string pack = readText(image).substr(static_cast<std::size_t>(*sectors) * 2048, 18);
    EXPECT_TRUE(pack.starts_with(std::string("\0\0\1\xBA", 4)) && pack.ends_with("\1\xBB"))
        << "for navigation";
    Player player(image);
    EXPECT_EQ(player.place(), "film 1");
    EXPECT_EQ(player.leave(), "film 2");
    EXPECT_EQ(player.leave(), "") << "the disc's end";
}

/// Whatever is asked for, nothing goes that the program has not made.
TEST_F(Films, TakeNothingOfOthersAway) {
    makeReady();
    const std::string own = "mkdir -p out elsewhere; touch out/.tkvDvdDisc elsewhere/letter; ";
    const struct {
        std::string before, words, kept, reason;
    } cases[] = {
        {own + "mkdir -p elsewhere/unfinished; ln -s ../elsewhere out/work; ", "ready.vob",
         "elsewhere/letter elsewhere/unfinished", "out/work is no folder of its own"},
        {own + "mkdir out/work; cp ready.vob out/work/a.vob; ", "out/work/a.vob", "out/work/a.vob",
         "out/work/a.vob lies where a run puts its results"},
        {own + "mkdir -p out/disc/VIDEO_TS; cp ready.vob out/disc/VIDEO_TS/VTS_01_1.VOB; ",
         "out/disc", "out/disc/VIDEO_TS/VTS_01_1.VOB", "VTS_01_1.VOB lies where"},
        {own + "mkdir out/menus; touch out/menus/a.wav; ln -s out/menus/a.wav; ",
         "--music a.wav ready.vob", "out/menus/a.wav", "a.wav lies where"},
        {own + faked("dvdauthor",
                     "$real \"$@\"; cd ../..; mv out moved; cp -a moved out; mkdir out/disc; "
                     "touch out/disc/letter"),
         "ready.vob", "out/disc/letter", "out has been moved or removed meanwhile"},
        {own + "export FFREPORT=file=$PWD/elsewhere/report VIDEO_FORMAT=NTSC; ",
         "--clean ready.vob", "out/disc elsewhere/letter", ""},
        {own + "mkdir out/work; touch out/work/.tkvDvdDisc out/work/letter "
               "out/work/film-letter.mpg; ",
         "--clean ready.vob", "out/work/letter out/work/film-letter.mpg", ""},
    };
    for (const auto& [before, words, kept, reason] : cases) {
        const std::string said = makeDisc("--no-menu --no-image -o out " + words,
                                          "rm -rf out elsewhere moved; " + before);
        EXPECT_TRUE(said.ends_with(reason.empty() ? "status 0\n" : "status 1\n")) << said;
        EXPECT_NE(said.find(reason), std::string::npos) << said;
        run(fmt::format("cd {}; ls -d {} && [ ! -e elsewhere/report ]", folder_.path(), kept));
    }
}

/// What can go wrong while a disc is made. Nothing of a disc is left where one is not whole.
TEST_F(Films, EndWithAReason) {
    makeAllKinds();
    folder_.write("others/letter.txt", "dear");
    folder_.write("text.mp4", "no film");
    run(fmt::format("cd {}; head -c 20000 chap*.mp4 >cut.mp4; cp ready.vob goes.vob",
                    folder_.path()));
    // A menu's film that needs no encoder, for what comes after it.
    const std::string quick = faked("ffmpeg",
                                    "case \"$*\" in *pipe:0*) for file; do :; done; echo frame=749;"
                                    " echo >\"$file\"; exit;; esac\nexec $real \"$@\"");
    const struct {
        std::string before, words, reason;
    } cases[] = {
        {"", "-o others ready.vob", "holds files of others"},
        {"", "-o faults missing.mp4", "there is no such film"},
        {"", "-o ready.vob chap*.mp4", "ready.vob is a file. Name a folder with -o."},
        {"", "-o faults others", "others is a folder in which there is no film"},
        {"", "-o faults --background no.jpg cut.mp4", "no.jpg cannot stand behind the menus"},
        {"", "-o faults --music no.mp3 cut.mp4", "no.mp3 cannot be heard in the menus"},
        {"", "-o faults text.mp4", "cannot be read as a film: it is a text. Leave it out."},
        {"", "-o faults cut.mp4", "cut.mp4"},
        {"printf '#EXTM3U\\n#EXT-X-TARGETDURATION:9\\n#EXTINF:9,\\nready.vob\\n#EXT-X-ENDLIST\\n' "
         ">list.mp4; ",
         "-o faults ready.vob list.mp4", "list.mp4 cannot be read as a film: it is a playlist"},
        {"printf \"[[film]]\\npath='others/letter.txt'\" >text.toml; ",
         "-o faults text.toml ready.vob", "letter.txt cannot be read as a film: it is a text"},
        {"mkfifo pipe.mp4; ", "-o faults pipe.mp4", "pipe.mp4 is no file"},
        {"head -c 17M /dev/zero >big.toml; ", "-o faults big.toml", "is too large for a project"},
        {"", "--preview -o full ready.vob >/dev/full", "standard output cannot be written to"},
        {"ulimit -c 0; ulimit -f 0; ", "--write faults/x.toml ready.vob", "File too large"},
        {"[ ! -e faults/x.toml ] && ulimit -f 0; ", "--write faults/x.toml ready.vob", "File too"},
        {"ulimit -c 0; ulimit -f 100; ", "-o faults chap*.mp4", "File too large"},
        {faked("ffmpeg", "rm -f " + file("goes.vob") + "; exec $real \"$@\""),
         "--volume even -o faults goes.vob", "No such file or directory"},
        {faked("ffmpeg", "exec $real -t 2 \"$@\""), "--no-menu -o faults chap*.mp4",
         "Only 0:02.08 of the 0:04.4 of"},
        {faked("ffmpeg", "exit 0"), "-o faults ready.vob", "ready.vob could be taken at"},
        {faked("ffmpeg",
               "case \"$*\" in *pipe:0*) head -c 9000000 | wc -c >&2; exit 1;; esac\n"
               "exec $real \"$@\""),
         "-o faults ready.vob", "The menu films-1 could not be encoded: 9000000"},
        {quick + faked("spumux", "echo 'ERR:  Bad things: no room.' >&2; cat"),
         "-o faults ready.vob", "could not be given buttons: no room"},
        {quick + faked("spumux", "cat"), "-o faults ready.vob", "buttons: spumux adds none"},
        {faked("dvdauthor", "exit 3"), "--no-menu -o faults ready.vob",
         "could not be written: dvdauthor ended with status 3"},
        {faked("dvdauthor", "exit 0"), "--no-menu -o faults ready.vob",
         "dvdauthor has left out some of its files"},
        {faked("dvdauthor", "$real \"$@\"; echo 'ERR:  no more' >&2"),
         "--no-menu -o faults ready.vob", "could not be written: no more"},
        {faked("genisoimage", "true"), "--no-menu -o faults ready.vob", "shorter than the disc"},
        {faked("genisoimage", "kill -9 $$"), "--no-menu -o faults ready.vob",
         "genisoimage was ended by signal 9"},
    };
    for (const auto& [before, words, reason] : cases) {
        const std::string said = makeDisc(words, before);
        EXPECT_TRUE(said.ends_with("status 1\n")) << words << said;
        const std::size_t last = said.rfind("tkvDvdDisc: ");
        ASSERT_NE(last, std::string::npos) << said;
        EXPECT_NE(said.substr(last).find(reason), std::string::npos) << said;
        EXPECT_FALSE(fs::exists(file("faults/disc"))) << words;
        EXPECT_FALSE(fs::exists(file("faults/work/unfinished"))) << words;
    }
    EXPECT_EQ(namesIn(file("others")), Strings{"letter.txt"});
}

TEST_F(Films, CanBeInterrupted) {
    makeAllKinds();
    const std::string slow = faked("ffmpeg", "exec $real -re \"$@\"");  // As slow as it plays.
    for (const auto& [signal, status] : {std::pair("TERM", 143), {"INT", 130}, {"HUP", 129}}) {
        const std::string said = run(fmt::format(
            "cd {0}; {1}env --default-signal {2} --no-menu -o stops ready.vob chap*.mp4 2>said & "
            "program=$!; "
            "until ls stops/work/unfinished/*.mpg; do sleep 0.1; done; "
            "{2} -o stops ready.vob; kill -{3} $program; wait $program; echo status $?; cat said; "
            "pgrep -P $program; rm -r stops/work/film-*.vob",
            folder_.path(), slow, quoted(discProgramPath()), signal));
        EXPECT_NE(said.find("Another run is making a disc in"), std::string::npos) << said;
        EXPECT_NE(said.find(fmt::format("status {}\n", status)), std::string::npos) << said;
        EXPECT_NE(said.find("Interrupted. 1 of 2 films is ready"), std::string::npos) << said;
        EXPECT_EQ(namesIn(file("stops")), (Strings{".tkvDvdDisc", "work"}));
        EXPECT_FALSE(fs::exists(file("stops/work/unfinished")));
    }
}

}  // namespace tkv::test::disc
