#include "disc/film/dvd_titles.h"
#include "disc_films.h"

// Discs that are made of other DVDs.

namespace tkv::test::disc {

/// What players are told of a disc's titles: chapters, languages, streams and colours.
std::string tablesOf(const std::string& disc) {
    return run("lsdvd -v -a -c -d -s -P " + quoted(disc));
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
    const std::string tables = tablesOf(file("first/disc")), film = readText(sets + "VTS_01_1.VOB");
    for (const char* told : {"Chapters: 02", "Language: de", "Language: it", "Subpictures: 02",
                             "Language: fr - Francais, Content: Forced"})
        EXPECT_NE(tables.find(told), std::string::npos) << told << tables;

    const auto expectSame = [&](const std::string& name, const std::string& words) {
        const std::string said = makeDisc(words + plainly + name);
        EXPECT_NE(said.find("copied as it is, subtitles: en, fr forced"), std::string::npos)
            << said;
        EXPECT_EQ(tablesOf(file(name + "/disc")), tables) << said;
        EXPECT_EQ(readText(file(name + "/disc/VIDEO_TS/VTS_01_1.VOB")), film) << name;
    };
    expectSame("second", "first/disc");
    // Without the disc's own tables, and in several files.
    fs::remove(sets + "VIDEO_TS.IFO");
    folder_.write("first/disc/VIDEO_TS/VTS_01_1.VOB", film.substr(0, film.size() / 4096 * 2048));
    folder_.write("first/disc/VIDEO_TS/VTS_01_2.VOB", film.substr(film.size() / 4096 * 2048));
    expectSame("third", "first/disc/VIDEO_TS/VTS_01_1.VOB");

    // What cannot be copied is told of; so is what the tables do not tell.
    EXPECT_NE(
        makeDisc("first/disc --ntsc --preview -o out").find("2 of its subtitles are left out"),
        std::string::npos);
    expectDisc("first/disc --subtitles none" + plainly + "fourth");
    EXPECT_NE(tablesOf(file("fourth/disc")).find("Subpictures: 00"), std::string::npos);
    std::string damaged = readText(sets + "VTS_01_0.IFO");
    std::fill(damaged.begin() + 0xC8, damaged.begin() + 0xD4, '\x7F');
    for (const char* name : {"VTS_01_0.IFO", "VTS_01_0.BUP"})
        folder_.write("first/disc/VIDEO_TS/" + std::string(name), damaged);
    EXPECT_NE(makeDisc("first/disc --preview -o out").find("copied as it is\n"), std::string::npos);
}

}  // namespace tkv::test::disc
