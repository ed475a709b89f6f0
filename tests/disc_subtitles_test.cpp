#include <algorithm>
#include <iterator>
#include <sstream>

#include "disc_films.h"
#include "player.h"

// Discs with subtitles.

namespace tkv::test::disc {

/// The numbers that ffprobe tells of a film's frames in some columns, by frames.
std::vector<std::vector<double>> timesIn(const std::string& film, const std::string& words,
                                         const char* columns) {
    std::vector<std::vector<double>> times;
    std::istringstream lines(
        run(fmt::format("ffprobe -v error -show_frames -show_entries frame=pts_time -of csv=p=0 "
                        "-select_streams {} {} | cut -d , -f {} | grep -E '^[0-9]' | tr , ' '",
                        words, quoted(film), columns)));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream numbers(line);
        times.emplace_back(std::istream_iterator<double>(numbers), std::istream_iterator<double>());
    }
    return times;
}

/// The numbers of the frames with which a disc's subtitles appear and go, a line for each track.
std::string changesOf(const std::string& disc, int tracks) {
    const std::string film = disc + "/VIDEO_TS/VTS_01_1.VOB";
    const auto frames = timesIn(film, "v", "1");
    const auto frameAt = [&](double seconds) {
        return std::ranges::count_if(frames, [&](const auto& frame) { return frame[0] < seconds; });
    };
    std::string changes;
    for (int track = 0; track < tracks; ++track) {
        // When it begins, and how many milliseconds it lasts.
        for (const auto& shown : timesIn(film, fmt::format("s:{}", track), "3,6"))
            changes += fmt::format("{}-{} ", frameAt(shown.at(0)),
                                   frameAt(shown.at(0) + shown.at(1) / 1000));
        changes += '\n';
    }
    return changes;
}

/// Lines that are shown for some pictures of a film of 23.976 a second, as SubRip has them.
std::string linesFor(const std::vector<std::pair<int, int>>& pictures) {
    const auto time = [](int picture) {
        return fmt::format("00:00:{:06.3f}", picture * 1001 / 24'000.0);
    };
    std::string lines;
    for (const auto& [first, end] : pictures)
        lines += fmt::format("1\n{} --> {}\nA line\n\n", time(first), time(end));
    return lines;
}

TEST_F(Films, ShowSubtitlesToTheFrame) {
    make("film.mkv",
         "-f lavfi -i testsrc2=s=320x240:r=24000/1001:d=3 -f lavfi -i sine=r=48000:d=3 -f srt -i "
         "pipe:0 -map 0 -map 1 -map 2 -c:v mpeg4 -c:s srt -metadata:s:s:0 language=ger",
         linesFor({{10, 20}, {30, 48}}));
    folder_.write("film.fr.forced.srt", linesFor({{15, 40}, {60, 2000}, {2000, 2010}}));
    folder_.write("film.en.ass", "Nothing");
    const std::string words = "film.mkv --no-menu --no-image --subtitles de ";
    for (const char* format : {"pal", "ntsc"}) {
        const std::string said = makeDisc(fmt::format("{0} --{1} -o {1}", words, format));
        EXPECT_NE(said.find("subtitles: de (shown), fr forced\n"), std::string::npos) << said;
        EXPECT_NE(said.find("film.en.ass holds no subtitles"), std::string::npos) << said;
        const std::string disc = file(format) + "/disc";
        EXPECT_EQ(changesOf(disc, 2), "10-20 30-48 \n15-40 60-72 \n") << format;
        const std::string listing = run("lsdvd -s " + quoted(disc));
        EXPECT_NE(listing.find("Language: de - Deutsch, Content: Normal"), std::string::npos);
        EXPECT_NE(listing.find("Language: fr - Francais, Content: Forced"), std::string::npos);
    }
    // What has changed is made anew.
    folder_.write("film.fr.forced.srt", linesFor({{50, 70}}));
    expectDisc(words + "--pal -o pal");
    EXPECT_EQ(changesOf(file("pal/disc"), 2), "10-20 30-48 \n50-70 \n");
    EXPECT_EQ(makeDisc("film.mkv --preview -o pal --subtitles none").find("subtitles:"),
              std::string::npos);
    folder_.write("film.toml", "[[film]]\npath = 'film.mkv'\nshow = 'it'\n");
    EXPECT_NE(makeDisc("film.toml --preview -o pal").find("none of its subtitles are in the"),
              std::string::npos);
}

TEST_F(Films, AreSeenInTheLanguagesThatAreChosen) {
    const std::string lines = linesFor({{10, 20}});
    for (const char* name : {"a.de.srt", "a.fr.srt", "a.fr.forced.srt", "b.fr.srt"})
        folder_.write(name, lines);
    const std::string picture = "-f lavfi -i testsrc2=s=160x120:r=25:d=2 ";
    make("a.mkv", picture +
                      "-f lavfi -i sine=r=48000:d=2 -map 0 -map 1 -map 1 -c:v mpeg4 "
                      "-metadata:s:a:0 language=fra -metadata:s:a:1 language=deu");
    make("b.mkv", picture + "-f lavfi -i sine=r=48000:d=2 -c:v mpeg4 -metadata:s:a:0 language=fra");
    expectDisc("a.mkv b.mkv --no-image -o out --language en --title Two");
    Player player(file("out/disc"));
    ASSERT_EQ(player.place(), "films-1");
    ASSERT_EQ(player.press(1), "film-1-page-1");
    const auto choose = [&](int page, int button) {
        if (page == 2) player.press(5);  // from the two tracks of sound
        ASSERT_EQ(player.press(button), "film-1-page-1");
        EXPECT_EQ(player.button(), 3) << "plays the film";
        ASSERT_EQ(player.press(3), "film 1");
        player.play();
    };
    const auto back = [&] { ASSERT_EQ(player.press(DVD_MENU_Root), "film-1-page-1"); };
    using Tracks = std::pair<int, int>;
    choose(1, 2);
    EXPECT_EQ(player.tracks(), Tracks(1, 2)) << "forced ones";
    back();
    choose(2, 3);
    EXPECT_EQ(player.tracks(), Tracks(1, 1));
    back();
    choose(2, 1);
    EXPECT_EQ(player.tracks(), Tracks(1, 2)) << "none but forced ones";
    back();
    choose(1, 1);
    EXPECT_EQ(player.tracks(), Tracks(0, 2));
}

TEST_F(Films, AreCopiedWithSubtitles) {
    makeReady("ready.mpg");
    folder_.write("ready.de.srt", "1\n00:00:00,400 --> 00:00:01,200\nA line\n");
    folder_.write("ready.fr.srt", "1\n00:00:00,800 --> 00:00:01,600\nUne ligne\n");
    expectDisc("ready.mpg --no-menu --no-image -o out");
    EXPECT_EQ(changesOf(file("out/disc"), 2), "10-30 \n20-40 \n");

    // The same as pictures: beside a film, and in films of several kinds.
    const std::string in = "cd " + quoted(folder_.path()) + " && ";
    run(in +
        "cp out/work/subtitles-*/film.sub . && sed '/^palette/i size: 720x576' "
        "out/work/subtitles-*/film.idx >film.idx");
    const struct {
        const char* name;
        const char* words;
        int tracks;
    } rows[] = {{"film.mkv", "-map 0:v -map 0:a", 2},
                {"a.vob", "-map 0:v -map 0:a -map 1:0 -c:s copy", 1},
                {"b.ts", "-map 0:v -map 0:a -map 1:0 -c:s dvbsub", 1}};
    for (const auto& [name, words, tracks] : rows) {
        run(in + fmt::format(
                     "ffmpeg -v error -i ready.mpg -f vobsub -i film.idx {} -c:v copy -c:a copy {}",
                     words, name));
        const std::string said = makeDisc(fmt::format("{0} --no-menu --no-image -o {0}.d", name));
        EXPECT_EQ(changesOf(file(name) + ".d/disc", tracks),
                  tracks == 2 ? "10-30 \n20-40 \n" : "10-30 \n")
            << said;
        EXPECT_TRUE(tracks == 1 || said.find("subtitles: de, fr") != std::string::npos) << said;
    }
}

TEST_F(Films, ShowTheirCaptions) {
    // "Hello" from the tenth picture to the twentieth: two bytes stand in each.
    run("cd " + quoted(folder_.path()) +
        R"( && ffmpeg -v error -f lavfi -i testsrc2=s=320x240:d=1 -bf 0 -f mpeg2video a.m2v &&
        perl -0777 -pe '@b = split / /, "9420 9420 94ae 94ae 9470 9470 c8e5 ecec ef80 8080 942f" .
            " 8080" x 9 . " 942c"; s/(\0\0\x01\xb5[\x80-\x8f].*?)(?=\0\0\x01)/
            $1 . "\0\0\1\xb2GA94\3\x41\xff\xfc" . pack("H4", shift @b || 8080) . "\xff"/gsex' a.m2v >b.m2v &&
        ffmpeg -v error -i b.m2v -c:v libx264 "it's [b], c;\d.mkv")");
    const std::string said = makeDisc(R"("it's [b], c;\d.mkv" --no-menu --no-image --pal -o out)");
    EXPECT_NE(said.find("subtitles: unknown with sounds"), std::string::npos) << said;
    EXPECT_EQ(changesOf(file("out/disc"), 1), "10-20 \n");
}

}  // namespace tkv::test::disc
