#include "disc/film/probe.h"

#include "disc/film/dvd_ready.h"
#include "disc/film/film_answer.h"
#include "disc/film/frame_counter.h"
#include "disc/film/kept_film.h"
#include "disc/run/fault.h"
#include "support.h"

// What is known of a film before anything is made of it.

namespace tkv::disc {

namespace fs = std::filesystem;
using test::run;
using test::Strings;
using test::TempFolder;

namespace {

VideoTrack palVideo(Fields fields) {
    VideoTrack track;
    track.size = {720, 576};
    track.aspect = 16.0 / 9;
    track.frameRate = {25, 1};
    track.fields = fields;
    return track;
}

TEST(Probe, ReadsOddAnswers) {
    const Film film = filmFromAnswer(FilmSource(), R"({"streams": [
        {"index": 0, "codec_type": "video", "codec_name": "png", "width": 600, "height": 600,
         "disposition": {"attached_pic": 1}},
        {"index": 1, "codec_type": "audio", "codec_name": "aac", "channels": 6,
         "sample_rate": "44100", "tags": {"LANGUAGE": "ger"}},
        {"index": 2, "codec_type": "audio", "channels": 0},
        {"index": 4, "codec_type": "video", "codec_name": "mjpeg", "width": 80, "height": 80},
        {"index": 3, "codec_type": "video", "codec_name": "h264", "width": 1440, "height": 1080,
         "sample_aspect_ratio": "0:1", "avg_frame_rate": "0/0", "r_frame_rate": "50/1",
         "field_order": "tb", "start_time": "1.5", "side_data_list": [{"rotation": -90}],
         "disposition": {"default": 1}}],
        "chapters": [{"start_time": "61.5", "tags": {"title": "Two"}}, {}],
        "format": {"format_name": "matroska,webm", "start_time": "1", "duration": "N/A"}})");
    EXPECT_EQ(film.video.index, 3);
    EXPECT_EQ(film.video.shown, (PixelSize{1080, 1440}));
    EXPECT_DOUBLE_EQ(film.video.aspect, 0.75);
    EXPECT_EQ(film.video.frameRate.perSecond(), 25) << "two fields in each";
    EXPECT_EQ(film.video.fields, Fields::topFirst);
    EXPECT_EQ(film.video.start, 0.5);
    ASSERT_EQ(film.audio.size(), 1U);
    EXPECT_EQ(film.audio[0].language, "de");
    EXPECT_EQ(film.notes, (Strings{"track 2 (sound) is left out: nothing here can read it",
                                   "1 more moving picture in it is left out"}));
    EXPECT_EQ(film.marks, (std::vector<Chapter>{{60, "Two"}, {0, ""}}));
    EXPECT_EQ(film.seconds, 0);
    for (const char* colors :
         {R"("color_space": "ictcp")", R"("side_data_list": [{"dv_profile": 5}])"}) {
        const std::string answer = fmt::format(R"({{"streams": [{{"codec_type": "video",
            "codec_name": "hevc", "width": 9, "height": 9, {}}}]}})",
                                               colors);
        EXPECT_THROW(filmFromAnswer(FilmSource(), answer), DiscError) << answer;
    }
    for (const char* answer : {"", "{", "[]", R"({"streams": 3})", R"({"streams": [7, null]})",
                               R"({"streams": [{"codec_type": "video", "codec_name": "png",
                                   "width": 9, "height": 9}], "format": {"format_name": "png_pipe"}})"})
        EXPECT_THROW(filmFromAnswer(FilmSource(), answer), DiscError) << answer;
}

TEST(Probe, CountsFramesOverJoinsAndLostTimes) {
    Film film;
    film.container = "mpeg";
    film.video = palVideo(Fields::progressive);
    film.audio.resize(2);
    film.audio[0].index = 1;
    film.audio[1].index = 2;  // of which nothing comes
    FrameCounter counter(film);
    for (const char* line :
         {"audio,1,0.5,0.032,K_", "audio,1,0.533,0.032,K_", "audio,1,0.597,0.032,K_",
          "video,0,9.50,0.04,KD", "video,0,10.00,0.04,K_", "video,0,10.12,0.04,__",
          "video,0,10.04,0.04,__", "video,0,N/A,0.04,__", "video,0,10.16,0.04,K_",
          "video,0,0.50,0.04,K_", "video,0,0.54,0.04,__", "", "data"})
        counter.take(line);
    counter.finish(film);
    EXPECT_EQ(film.frames, 7);
    EXPECT_NEAR(film.seconds, 0.28, 1e-9);
    ASSERT_EQ(film.keyframes.size(), 3U);
    EXPECT_NEAR(film.keyframes[1], 0.16, 1e-9);
    EXPECT_NEAR(film.keyframes[2], 0.20, 1e-9);
    EXPECT_EQ(film.keyframeInterval, 4);
    EXPECT_EQ(film.audio.size(), 1U);
    EXPECT_FALSE(film.audio[0].isUnbroken) << "a packet is missing";
}

TEST(Probe, CountsFromTheFirstFrameThatCanBeDecoded) {
    Film film;
    film.container = "mpegts";
    film.start = 9;
    film.video = palVideo(Fields::progressive);
    film.video.start = 1;
    film.marks = {{0, ""}, {1, ""}};
    FrameCounter counter(film);
    for (const char* line :
         {"video,0,10.00,0.04,__", "video,0,10.04,0.04,__", "video,0,10.16,0.04,K_",
          "video,0,10.08,0.04,__", "video,0,10.12,0.04,__", "video,0,10.20,0.04,__"})
        counter.take(line);
    EXPECT_GE(counter.packetsToFirstFrame(), 6);
    EXPECT_EQ(counter.firstKeyframe(), 10.16);
    counter.finish(film, 10.16);
    EXPECT_EQ(film.frames, 2);
    EXPECT_NEAR(film.seconds, 0.08, 1e-9);
    EXPECT_NEAR(film.lost, 0.16, 1e-9);
    EXPECT_NEAR(film.video.start, 1.16, 1e-9);
    EXPECT_NEAR(film.marks.at(1).seconds, 0.84, 1e-9);
    EXPECT_NEAR(film.keyframes.at(0), 0, 1e-9);
}

TEST(Probe, BelievesNoTimeBeyondAHundredHours) {
    const Film told = filmFromAnswer(FilmSource(), R"({"streams": [{"codec_type": "video",
        "codec_name": "h264", "width": 9, "height": 9}], "format": {"duration": "1e300"},
        "chapters": [{"start_time": "1e18"}, {"start_time": "5"}]})");
    EXPECT_EQ(told.seconds, kLongestFilm);
    EXPECT_EQ(told.marks, (std::vector<Chapter>{{5, ""}}));
    Film film = told;
    FrameCounter counter(film);
    for (const char* line : {"video,0,0,0.04,K_", "video,0,9e18,0.04,K_"})
        counter.take(line);
    counter.finish(film);
    EXPECT_EQ(film.seconds, kLongestFilm);
}

TEST(Probe, TellsWhyAFilmIsNotReadyForADisc) {
    Film ready;
    ready.video = palVideo(Fields::topFirst);
    ready.video.codec = "mpeg2video";
    ready.video.profile = "Main";
    ready.video.level = 8;
    ready.video.pixelFormat = "yuv420p";
    ready.video.maxBitRate = 8'500'000;
    ready.keyframeInterval = 15;
    ready.audio = {{"ac3", 6, 48000, 448'000, "en"}, {"pcm_dvd", 2, 48000, 1'000'000, "xx"}};
    EXPECT_EQ(whyNotDvdReady(ready, Standard::pal), "");
    EXPECT_EQ(whyNotDvdReady(ready, Standard::ntsc), "its picture is 720 x 576");
    const struct {
        void (*change)(Film&);
        const char* why;
    } cases[] = {
        {[](Film& f) { f.video.codec = "h264"; }, "its video is H.264"},
        {[](Film& f) { f.video.level = 4; }, "profile"},
        {[](Film& f) { f.video.pixelFormat = "yuv422p"; }, "yuv422p"},
        {[](Film& f) { f.video.frameRate.numerator = 24; }, "24 frames a second"},
        {[](Film& f) { f.video.aspect = 1.5; }, "neither 4:3 nor 16:9"},
        {[](Film& f) { f.video.maxBitRate = 9'900'000; }, "9.9 Mb/s"},
        {[](Film& f) { f.video.maxBitRate = 9'000'000; }, "it takes up to 10.4 Mb/s"},
        {[](Film& f) { f.keyframeInterval = 250; }, "250 frames apart"},
        {[](Film& f) { f.audio[1].codec = "aac"; }, "AAC"},
        {[](Film& f) { f.audio[1].isWhole = false; }, "not there all the time"},
        {[](Film& f) { f.audio[1].sampleRate = 44100; }, "44100"},
        {[](Film& f) { f.audio[0].bitRate = 640'000; }, "640 kb/s"},
        {[](Film& f) { f.audio.resize(9, f.audio[0]); }, "9 sound tracks"},
    };
    for (const auto& row : cases) {
        Film film = ready;
        row.change(film);
        EXPECT_NE(whyNotDvdReady(film, Standard::pal).find(row.why), std::string::npos)
            << whyNotDvdReady(film, Standard::pal) << " beside " << row.why;
    }
}

TEST(Probe, NoticesAFilmThatWasCutShort) {
    const TempFolder folder;
    const std::string name = "it's \"50 %\" a:b |.mkv";
    run("cd " + folder.path() +
        "; ffmpeg -v error -f lavfi -i testsrc2=d=10:r=5:s=320x240 -f lavfi -i sine=d=10 -g 5 "
        "-c:v mpeg4 -af 'aselect=lt(t\\,1)+gt(t\\,9)' -c:a flac whole.mkv");
    const std::string bytes = test::readText(folder.file("whole.mkv"));
    folder.write(name, bytes.substr(0, bytes.size() / 2));
    ProgramStop stop;
    const Tools tools("", stop);
    const auto probed = [&](const std::string& path) {
        const FilmSource source = sourceOf(path);
        return probedFilm(source, probeAnswer(source, tools), tools);
    };
    Film film = probed(folder.file(name));
    std::string why;
    try {
        countFrames(film, tools);
    } catch (const DiscError& error) {
        why = error.what();
    }
    EXPECT_NE(why.find(name + " says it lasts 10 s, but ends after"), std::string::npos) << why;
    folder.write("no film", "words");
    EXPECT_THROW(probed(folder.file("no film")), DiscError);
    Workshop workshop(folder.file("work"), stop);
    for (int i = 0; i < 2; ++i) {  // It is counted, and then known.
        countFramesOnce(film = probed(folder.file("whole.mkv")), workshop);
        EXPECT_TRUE(film.keyframes.size() == 10 && !film.audio.at(0).isWhole) << i;
    }
}

TEST(Probe, TakesTheLargestTitleOfADvd) {
    const TempFolder folder;
    const std::string sets = folder.file("VIDEO_TS/");
    for (const char* name : {"VTS_01_1.VOB", "VTS_02_1.VOB", "VTS_02_2.VOB", "VTS_01_0.VOB"})
        folder.write("VIDEO_TS/" + std::string(name),
                     std::string(name[7] == '0' ? 9000 : 900, ' '));
    const Strings second = {sets + "VTS_02_1.VOB", sets + "VTS_02_2.VOB"};
    EXPECT_EQ(sourceOf(folder.path()).files, second);
    EXPECT_EQ(sourceOf(folder.file("VIDEO_TS")).files, second);
    EXPECT_EQ(sourceOf(second[0]).files, second);
    EXPECT_EQ(sourceOf(second[1]).files, Strings{second[1]});
    EXPECT_EQ(inputName(sourceOf(folder.path())), "concat:" + second[0] + "|" + second[1]);
    fs::remove_all(sets);
    EXPECT_THROW(sourceOf(folder.path()), DiscError);
}

}  // namespace

}  // namespace tkv::disc
