#include "disc_films.h"

// Discs that are made of other DVDs.

namespace tkv::test::disc {

/// What players are told of a disc's titles: chapters, languages, streams and colours.
std::string tablesOf(const std::string& disc) {
    return run("lsdvd -v -a -c -d -s -P " + quoted(disc));
}

/// A film as it stands on a disc, but for the ways from its navigation packs to the next subtitles:
/// dvdauthor reads behind the end of its list of them.
std::string filmOn(const std::string& disc) {
    constexpr std::size_t kSector = 2048, kPacket = 1024, kWays = 0x407 + 0x1A2, kTracks = 32;
    std::string film = readText(disc + "/VIDEO_TS/VTS_01_1.VOB");
    for (std::size_t at = 0; at + kSector <= film.size(); at += kSector) {
        if (film.compare(at + kPacket, 4, "\0\0\1\xBF", 4) == 0)
            film.replace(at + kWays, 4 * kTracks, 4 * kTracks, '\0');
    }
    return film;
}

TEST_F(Films, StayWholeWhenADvdIsCopied) {
    make("film.mkv",
         "-f lavfi -i testsrc2=s=352x288:r=25:d=9 -f lavfi -i sine=r=48000:d=9 "
         "-f lavfi -i sine=880:r=48000:d=9 -f ffmetadata -i pipe:0 -map 0 -map 1 -map 2 "
         "-map_metadata 3 -g 25 -metadata:s:a:0 language=de -metadata:s:a:1 language=it",
         ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1\nSTART=0\nEND=4\n"
         "[CHAPTER]\nTIMEBASE=1/1\nSTART=4\nEND=9\n");
    // One is blue, and begins behind where ffprobe looks by itself.
    folder_.write("film.en.srt", "1\n00:00:00,400 --> 00:00:01,200\nA line\n");
    folder_.write("film.fr.forced.srt",
                  "1\n00:00:07,400 --> 00:00:08,200\n<font color=#2020ff>A line</font>\n");
    const std::string plainly = " --no-menu --no-image -o ";
    expectDisc("film.mkv" + plainly + "first");
    const std::string sets = file("first/disc/VIDEO_TS/");
    const std::string tables = tablesOf(file("first/disc")), film = filmOn(file("first/disc"));
    for (const char* told : {"Chapters: 02", "Language: de", "Language: it", "Subpictures: 02",
                             "Language: fr - Francais, Content: Forced"})
        EXPECT_NE(tables.find(told), std::string::npos) << told << tables;

    const auto expectSame = [&](const std::string& name, const std::string& words) {
        const std::string said = makeDisc(words + plainly + name);
        EXPECT_NE(said.find("copied as it is, subtitles: en, fr forced"), std::string::npos)
            << said;
        EXPECT_EQ(tablesOf(file(name + "/disc")), tables) << said;
        EXPECT_TRUE(filmOn(file(name + "/disc")) == film) << name;
    };
    expectSame("second", "first/disc");
    // Without the disc's own tables, and in several files.
    fs::remove(sets + "VIDEO_TS.IFO");
    folder_.write("first/disc/VIDEO_TS/VTS_01_1.VOB", film.substr(0, film.size() / 4096 * 2048));
    folder_.write("first/disc/VIDEO_TS/VTS_01_2.VOB", film.substr(film.size() / 4096 * 2048));
    expectSame("third", "first/disc/VIDEO_TS/VTS_01_1.VOB");

    // What is encoded has subtitles drawn; so far behind nothing finds any, which is told.
    EXPECT_NE(makeDisc("first/disc --ntsc" + plainly + "ntsc").find("1 of its subtitles are left"),
              std::string::npos);
    EXPECT_NE(tablesOf(file("ntsc/disc")).find("Language: en - English, Content: Normal"),
              std::string::npos);
    // What the tables do not tell is left out.
    expectDisc("first/disc --subtitles none" + plainly + "fourth");
    EXPECT_NE(tablesOf(file("fourth/disc")).find("Subpictures: 00"), std::string::npos);
    std::string damaged = readText(sets + "VTS_01_0.IFO");
    std::fill(damaged.begin() + 0xC8, damaged.begin() + 0xD4, '\x7F');
    for (const char* name : {"VTS_01_0.IFO", "VTS_01_0.BUP"})
        folder_.write("first/disc/VIDEO_TS/" + std::string(name), damaged);
    EXPECT_NE(makeDisc("first/disc --preview -o out").find("copied as it is, subtitles: unknown\n"),
              std::string::npos);
}

TEST_F(Films, AreAllTitlesOfADvd) {
    std::string titles;
    for (const auto& [color, seconds] : {std::pair("red", 11), std::pair("blue", 12),
                                         std::pair("lime", 2), std::pair("lime", 3)}) {
        const std::string name = fmt::format("{}{}.vob", color, seconds);
        make(name,
             fmt::format(
                 "-f lavfi -i color={0}:s=352x288:r=25:d={1},drawbox=96:96:160:96:c=white:t=8 "
                 "-f lavfi -i sine=r=48000:d={1} -t {1} -target pal-dvd -s 352x288 -aspect 4:3",
                 color, seconds));
        titles += fmt::format("<pgc><vob file='{}'/></pgc>", file(name));
    }
    folder_.write("dvd.xml", fmt::format("<dvdauthor><vmgm/><titleset><titles><audio lang='nl'/>{}"
                                         "</titles></titleset></dvdauthor>",
                                         titles));
    run(fmt::format("cd {}; VIDEO_FORMAT=PAL dvdauthor -o dvd -x dvd.xml 2>&1", folder_.path()));
    // The last title becomes another name of the first.
    std::string tables = readText(file("dvd/VIDEO_TS/VIDEO_TS.IFO"));
    const auto sector = static_cast<unsigned char>(tables.at(0xC7));
    constexpr std::size_t kFourth = 8 + 3 * 12 + 7;
    const std::size_t number = sector * 2048UL + kFourth;
    ASSERT_EQ(tables.at(number), 4);
    tables[number] = 1;
    folder_.write("dvd/VIDEO_TS/VIDEO_TS.IFO", tables);

    const std::string said = makeDisc("dvd --no-menu --no-image -o out");
    for (const char* line :
         {"PAL, 2 films, 0:23,", "dvd, title 1, 352 x 288", "dvd, title 2, 352 x 288",
          "left out: 1 shorter title of dvd (0:02)\n",
          "left out: 1 title of dvd, which others contain (0:11)\n", "status 0\n"})
        EXPECT_NE(said.find(line), std::string::npos) << line << said;
    const std::string sets = file("out/disc/VIDEO_TS/");
    EXPECT_TRUE(near(colorAt(sets + "VTS_01_1.VOB", 10.5, "crop=90:90:0:0"), {253, 2, 2, 255}, 6));
    EXPECT_TRUE(near(colorAt(sets + "VTS_02_1.VOB", 0.2, "crop=90:90:0:0"), {2, 2, 253, 255}, 6));
    const std::string told = tablesOf(file("out/disc"));
    EXPECT_NE(told.find("Length: 00:00:12.000"), std::string::npos) << told;
    EXPECT_NE(told.find("Language: nl"), std::string::npos) << told;

    // In one title, each with times of its own, they have pictures in the menus.
    folder_.write("two.xml", fmt::format("<dvdauthor><vmgm/><titleset><titles><pgc><vob file='{}' "
                                         "chapters='0,9'/><vob file='{}' chapters='0,9'/></pgc>"
                                         "</titles></titleset></dvdauthor>",
                                         file("red11.vob"), file("blue12.vob")));
    run(fmt::format("cd {}; VIDEO_FORMAT=PAL dvdauthor -o two -x two.xml 2>&1", folder_.path()));
    EXPECT_NE(makeDisc("two --no-image -o menus").find("status 0"), std::string::npos);
    EXPECT_NE(run("lsdvd " + quoted(file("menus/disc"))).find("Chapters: 04"), std::string::npos);

    // A project file names them one by one.
    expectDisc("dvd --write all.toml");
    const std::string project = readText(file("all.toml"));
    EXPECT_NE(project.find("path = \"dvd\"\ntitle = 2\ncaption = \"Title 2\"\n"), std::string::npos)
        << project;
    folder_.write("one.toml", "[[film]]\npath = 'dvd'\ntitle = 2\n");
    folder_.write("none.toml", "[[film]]\npath = 'dvd'\ntitle = 5\n");
    for (const auto& [words, line] :
         {std::pair("all.toml", "PAL, 2 films, 0:23,"),
          std::pair("one.toml", "0:12  dvd, title 2,"),
          std::pair("dvd --titles longest", "left out: 3 shorter titles of dvd (0:11, 0:02, 0:11)"),
          std::pair("none.toml", "has no title 5 that could be read")})
        EXPECT_NE(makeDisc(std::string(words) + " --preview -o out").find(line), std::string::npos)
            << line;
}

}  // namespace tkv::test::disc
