#include <algorithm>
#include <cstring>

#include "disc_films.h"

// What people have: folders, pieces of recordings, films of which they want something else.

namespace tkv::test::disc {

class Choices : public Films {
  protected:
    // A disc of one film, of which that is said.
    std::string discOf(const std::string& film, const std::string& settings) {
        folder_.write("x.toml", fmt::format("[[film]]\npath = '{}'\n{}\n", film, settings));
        return makeDisc("--pal --no-menu --no-image -o out x.toml");
    }

    // The brightness of each picture's foot, from 16 to 235; of fields the upper ones.
    std::vector<int> greysOf(const std::string& film,
                             const std::string& filters = "crop=iw:ih/4:0:3*ih/4") {
        const std::string greys =
            raw(film, "-map 0:v -vf '" + filters +
                          ",scale=1:1:flags=area,format=yuv420p,extractplanes=y' -fps_mode "
                          "passthrough -f rawvideo");
        std::vector<int> levels;
        for (const char grey : greys)
            levels.push_back(static_cast<unsigned char>(grey));
        return levels;
    }

    // The loudest sample, and the largest step from one to the next, of each hundredth of a second.
    struct Moment {
        float peak = 0, step = 0;
    };
    std::vector<Moment> soundOf(const std::string& film) {
        const std::string bytes = raw(film, "-map 0:a:0 -ac 1 -ar 48000 -f f32le");
        std::vector<float> samples(bytes.size() / sizeof(float));
        std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
        std::vector<Moment> moments(samples.size() / 480);
        for (std::size_t i = 1; i < moments.size() * 480; ++i) {
            Moment& moment = moments[i / 480];
            moment.peak = std::max(moment.peak, std::abs(samples[i]));
            moment.step = std::max(moment.step, std::abs(samples[i] - samples[i - 1]));
        }
        return moments;
    }

    std::string probed(const std::string& film, const std::string& entries) const {
        return run("ffprobe -v error -select_streams v -of default=nw=1:nk=1 -show_entries " +
                   entries + " " + quoted(film));
    }

    const std::string film_ = file("out") + kFirstFilm;
};

// Each picture's foot is brighter than the one before, over and over; the tone climbs by 400 Hz a
// second.
const std::string kClimbing =
    "-f lavfi -i \"color=s=64x36:r=25:d=24,format=yuv420p,"
    "geq=lum='if(lt(Y,H/2),235,20+4*mod(N,50))':cb=128:cr=128,"
    "scale=320:180:flags=neighbor\" -f lavfi -i 'aevalsrc=sin(2*PI*t*(400+200*t))/4:s=48000:d=24' "
    "-c:v libx264 -crf 10 -g 250 ";

TEST_F(Choices, BeginAndEndFilms) {
    make("a.mp4", kClimbing + "-c:a aac");
    make("a.ts", kClimbing + "-c:a mp2");
    make("a.mkv", kClimbing + "-c:a ac3 -ac 2 -b:a 192k");
    for (const char* name : {"a.mp4", "a.ts", "a.mkv"}) {
        SCOPED_TRACE(name);
        fs::remove_all(file("out"));
        const std::string said = discOf(name,
                                        "start = '0:13.2'\nend = 18.2\n"
                                        "chapters = ['0:02', '0:15.7 In it', '0:20']");
        EXPECT_NE(said.find("  0:05  " + std::string(name)), std::string::npos) << said;
        const std::vector<int> greys = greysOf(film_);
        ASSERT_EQ(greys.size(), 125U) << said;
        for (const int i : {0, 1, 20, 124})
            EXPECT_NEAR(greys.at(static_cast<std::size_t>(i)), 20 + 4 * ((330 + i) % 50), 2) << i;
        EXPECT_NEAR(hertzAt(film_, 1.0), 400 + 400 * 14.3, 25);
        EXPECT_NE(run("lsdvd -c " + quoted(file("out/disc"))).find("Chapters: 02"),
                  std::string::npos);
    }
    EXPECT_NE(discOf("a.mp4", "start = '0:30'").find("x.toml:1: a.mp4: start 0:30 is behind its"),
              std::string::npos)
        << discOf("a.mp4", "start = '0:30'");
    EXPECT_NE(
        discOf("a.mp4", "crop = [160, 0, 160, 0]").find("x.toml:1: a.mp4: crop leaves nothing"),
        std::string::npos);
}

TEST_F(Choices, PickSoundTracks) {
    const auto tone = [](int hertz) {
        return fmt::format("-f lavfi -i sine={}:r=48000:d=2 ", hertz);
    };
    make("a.mkv", "-f lavfi -i testsrc2=s=320x180:r=25:d=2 " + tone(300) + tone(600) + tone(900) +
                      "-map 0 -map 1 -map 2 -map 3 -c:a ac3 -ac 2 -metadata:s:a:0 language=eng "
                      "-metadata:s:a:1 language=ger -metadata:s:a:2 language=ita");
    const auto tones = [&] {
        std::string all;
        for (const char* track : {"0", "1", "2"}) {
            run(fmt::format("ffmpeg -v error -y -i {} -map 0:a:{} {} 2>&1 || true", film_, track,
                            file("t.wav")));
            if (fs::exists(file("t.wav"))) all += fmt::format("{} ", hertzAt(file("t.wav"), 1));
            fs::remove(file("t.wav"));
        }
        return all;
    };
    EXPECT_TRUE(discOf("a.mkv", "audio = ['it', 1]").ends_with("status 0\n"));
    EXPECT_EQ(tones(), "900 300 ");
    // What is ready for a disc is copied with those that are wanted.
    expectDisc("a.mkv --pal --no-menu --no-image -o ready");
    EXPECT_NE(discOf("ready/disc", "audio = [2]").find("copied as it is"), std::string::npos);
    EXPECT_EQ(tones(), "600 ");
    EXPECT_NE(discOf("a.mkv", "audio = ['de', 'fr']")
                  .find("x.toml:1: a.mkv: it has no sound track 'fr', but 3: en, de, it."),
              std::string::npos);

    EXPECT_TRUE(discOf("a.mkv", "audio = ['en']\naudio-delay = 0.4").ends_with("status 0\n"));
    auto sound = soundOf(film_);
    EXPECT_LT(sound.at(37).peak, 0.01);
    EXPECT_GT(sound.at(43).peak, 0.05);
    EXPECT_TRUE(discOf("a.mkv", "audio = []").ends_with("status 0\n"));
    sound = soundOf(film_);
    EXPECT_LT(sound.at(100).peak, 0.001);
}

TEST_F(Choices, ShapePictures) {
    make("bars.mkv",
         "-f lavfi -i testsrc2=s=640x360:r=25:d=2 -vf pad=640:480:0:60,fade=in:0:12 -c:v libx264");
    // Moving white on black, as fields that nothing tells of.
    make("fields.mkv",
         "-f lavfi -i \"color=s=640x480:r=50:d=1,format=yuv420p,geq=lum='if(lt(mod(X-8*N\\,640)"
         "\\,64)\\,235\\,16)':cb=128:cr=128,interlace=lowpass=off,setfield=prog\" -c:v ffv1");
    struct Row {
        const char *film, *settings, *shape;
    };
    for (const auto& [film, settings, shape] :
         {Row{"bars.mkv", "", "4:3\n"}, Row{"bars.mkv", "crop = 'auto'", "16:9\n"},
          Row{"bars.mkv", "crop = [0, 60, 0, 60]", "16:9\n"},
          Row{"bars.mkv", "aspect = '16:9'", "16:9\n"}}) {
        const std::string said = discOf(film, settings);
        EXPECT_EQ(probed(film_, "stream=display_aspect_ratio"), shape) << settings << said;
        // Nothing is black at the edges of what fills the frame.
        const bool isCut = std::string(settings).starts_with("crop");
        EXPECT_EQ(near(colorAt(film_, 1.5, "crop=720:20:0:0"), {0, 0, 0, 255}, 12), !isCut)
            << settings;
    }
    // Of woven fields every other row differs from those beside it.
    const auto combs = [&] {
        const auto rows = greysOf(film_,
                                  "select=eq(n\\,10),scale=720:576,format=gray,split[a][b];[a]"
                                  "crop=iw:574:0:0[c];[b]crop=iw:574:0:1[d];[c][d]blend=all_mode="
                                  "difference");
        return rows.at(0);
    };
    EXPECT_TRUE(discOf("fields.mkv", "").ends_with("status 0\n"));
    const int woven = combs();
    EXPECT_TRUE(discOf("fields.mkv", "deinterlace = true").ends_with("status 0\n"));
    EXPECT_LT(combs(), woven - 1);
    EXPECT_EQ(probed(film_, "stream=field_order"), "progressive\n");
}

TEST_F(Choices, JoinRecordings) {
    // A camera's pieces: of the sound there are as many whole frames as fit.
    fs::create_directories(file("it's a trip/DCIM/100GOPRO"));
    run("cd " + quoted(folder_.path()) +
        R"(; ffmpeg -v error -f lavfi -i color=s=64x36:r=25:d=9,format=yuv420p,geq=lum='if(lt(Y\,H/2)\,235\,20+4*mod(N\,50))':cb=128:cr=128,scale=320:180:flags=neighbor -g 25 -sc_threshold 0 -flags +cgop -c:v libx264 -crf 10 v.mp4;
        ffmpeg -v error -f lavfi -i sine=440:r=48000:d=9 -b:a 128k -f adts a.aac;
        for s in v.mp4 a.aac; do
            ffmpeg -v error -i $s -c copy -f segment -segment_times 3,6 -reset_timestamps 1 %d$s; done
        for i in 0 1 2; do ffmpeg -v error -i ${i}v.mp4 -i ${i}a.aac -c copy "it's a trip/DCIM/100GOPRO/GX0$((i+1))0007.MP4"; done
        cp -L "it's a trip/DCIM/100GOPRO/GX010007.MP4" "it's a trip/DCIM/100GOPRO/GX010008.MP4"
        echo letter >"it's a trip/letter.txt"; echo small >"it's a trip/DCIM/100GOPRO/GL010007.LRV")");
    std::string said = makeDisc("\"it's a trip\" --preview -o out");
    for (const char* line :
         {"Passed over, since not a film: letter.txt\n",
          "GX010007.MP4 to GX030007.MP4 (3 files) look like one recording: --join",
          "4 films, 0:12"})
        EXPECT_NE(said.find(line), std::string::npos) << said;
    said = makeDisc("\"it's a trip\" --join --no-menu --no-image -o out");
    EXPECT_NE(said.find("2 films, 0:12"), std::string::npos) << said;
    const std::vector<int> greys = greysOf(film_);
    ASSERT_EQ(greys.size(), 225U);
    for (int i = 0; i < 225; ++i)
        EXPECT_NEAR(greys[static_cast<std::size_t>(i)], 20 + 4 * (i % 50), 2) << i;
    const auto sound = soundOf(film_);
    ASSERT_GT(sound.size(), 890U);
    for (std::size_t i = 6; i < 890; ++i) {
        EXPECT_NEAR(sound[i].peak, 0.125, 0.012) << i;
        EXPECT_LT(sound[i].step, 0.0085) << i;
    }
    EXPECT_NE(run("lsdvd -c " + quoted(file("out/disc"))).find("Chapters: 03"), std::string::npos);

    make("other.mp4", "-f lavfi -i testsrc2=s=640x360:r=25:d=1");
    folder_.write("x.toml", "[[film]]\nparts = ['v.mp4', 'other.mp4']");
    EXPECT_NE(makeDisc("x.toml -o out")
                  .find("v.mp4 cannot go on with other.mp4: it is 640 x 360, "
                        "not 320 x 180. Give it as a film of its own."),
              std::string::npos);
    // A stream that was cut anywhere is one again.
    run(
        fmt::format("cd {}; ffmpeg -v error -i v.mp4 -i a.aac -c copy all.ts; n=$(($(stat -c %s "
                    "all.ts) / 376 * 188)); head -c $n all.ts >1.ts; tail -c +$((n + 1)) all.ts "
                    ">2.ts",
                    folder_.path()));
    EXPECT_TRUE(makeDisc("1.ts 2.ts --join --no-menu --no-image -o out").ends_with("status 0\n"));
    EXPECT_EQ(greysOf(film_), greys);
}

TEST_F(Choices, MakeFilmsOfPictures) {
    fs::create_directories(file("photos/2"));
    for (const char* name : {"photos/b.jpg", "photos/2/a.png", "photos/song.wav"})
        make(name, std::string(name).ends_with("wav") ? "-f lavfi -i sine=d=1"
                                                      : "-f lavfi -i testsrc2 -frames:v 1");
    folder_.write("photos/letter.txt", "no picture");
    const std::string said = makeDisc("photos --preview -o out");
    for (const char* line : {"Passed over, since not a film: letter.txt\n",
                             "photos, 2 pictures, 6 s each, music: song.wav: 16:9"})
        EXPECT_NE(said.find(line), std::string::npos) << said;
    EXPECT_NE(
        makeDisc("photos/b.jpg photos/2/a.png --preview -o out").find("2 pictures, 6 s each:"),
        std::string::npos);
}

}  // namespace tkv::test::disc
