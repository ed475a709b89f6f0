#include <algorithm>
#include <cmath>
#include <iostream>

#include "composer/dvd_menu_picture.h"
#include "disc/film/dvd_ready.h"
#include "disc/film/probe.h"
#include "disc/make/film_encoding.h"
#include "disc/make/film_hardness.h"
#include "disc/make/film_loudness.h"
#include "disc/make/film_maker.h"
#include "disc/make/menu_setting.h"
#include "disc/make/page_request.h"
#include "disc/make/pulldown.h"
#include "disc/make/text_fit.h"
#include "disc/run/terminal_progress.h"
#include "support.h"
#include "system/processes.h"

// From a film's facts to a film for a disc.

namespace tkv::disc {

namespace fs = std::filesystem;
using test::pixel;
using test::Rgba;
using test::run;
using test::Strings;
using test::TempFolder;

namespace {

constexpr auto kPal = Standard::pal, kNtsc = Standard::ntsc;

VideoTrack video(FrameRate rate, Fields fields = Fields::progressive, double aspect = 16.0 / 9) {
    VideoTrack track;
    track.size = {720, 576};
    track.aspect = aspect;
    track.frameRate = rate;
    track.fields = fields;
    return track;
}

Film probed(const std::string& path) {
    ProgramStop stop;
    const Tools tools("", stop);
    const FilmSource source = sourceOf(path);
    Film film = probedFilm(source, probeAnswer(source, tools), tools);
    countFrames(film, tools);
    return film;
}

/// Makes a film with ffmpeg's own sources and reads its facts.
Film made(const TempFolder& folder, const std::string& name, const std::string& words) {
    run(fmt::format("ffmpeg -nostdin -v error {} {}", words, folder.file(name)));
    return probed(folder.file(name));
}

void runQuietly(const std::vector<std::string>& command) {
    ProgramStop stop;
    Tools("", stop).run(command, {"", command.front(), ""});
}

/// Encodes a film, and expects it to be ready for a disc and of the planned length.
Film encoded(const TempFolder& folder, const Film& film, Conversion conversion,
             EncoderRun encoder = {}) {
    encoder.videoRate = 6000;
    conversion.topVideoRate = 8000;
    const std::string output = folder.file("encoded.mpg");
    runQuietly(encodingCommand(film, conversion, encoder, output));
    if (conversion.isPulledDown) pullDown(output, ProgramStop());
    Film result = probed(output);
    EXPECT_EQ(whyNotDvdReady(result, conversion.standard), "");
    EXPECT_EQ(result.frames, conversion.frames);
    return result;
}

/// The first picture of a disc's film, as televisions decode it.
Bitmap firstPicture(const TempFolder& folder, const std::string& file) {
    const std::string picture = folder.file("first.bmp");
    run(
        fmt::format("ffmpeg -nostdin -v error -y -i {} -frames:v 1 -vf scale=in_color_matrix=bt601:"
                    "in_range=tv:flags=accurate_rnd+full_chroma_int,format=bgr24 {}",
                    file, picture));
    return decodePicture(picture).value();
}

constexpr Rgba kBlack{0, 0, 0, 255}, kRed{192, 0, 0, 255}, kGreen{0, 192, 0, 255},
    kBlue{0, 0, 192, 255};
constexpr const char* kBars =
    "-filter_complex 'color=0xC00000:s={0}:r=25[r];color=0x00C000:s={0}:r=25[g];"
    "color=0x0000C0:s={0}:r=25[b];[r][g][b]hstack=3,format=rgb24,{1},format=yuv420p' -t 0.2 -c:v "
    "libx264 "
    "-preset ultrafast -qp 4 {2}";

}  // namespace

TEST(FilmPicture, KeepsTheMotionOfEveryRate) {
    const struct {
        VideoTrack video;
        Standard standard;
        double speed;
        FieldSource fields;
        bool isNoted;
        bool isPulledDown = false;
    } cases[] = {
        {video({25, 1}), kPal, 1, FieldSource::none, false},
        {video({24, 1}), kPal, 25.0 / 24, FieldSource::none, true},
        {video({24000, 1001}), kPal, 25.025 / 24, FieldSource::none, true},
        {video({24000, 1001}), kNtsc, 1, FieldSource::none, false, true},
        {video({24, 1}), kNtsc, 1, FieldSource::none, false, true},
        {video({30, 1}), kPal, 1, FieldSource::none, true},
        {video({30, 1}), kNtsc, 1, FieldSource::none, false},
        {video({25, 1}), kNtsc, 1, FieldSource::none, true},
        {video({15, 1}), kNtsc, 1, FieldSource::none, false},
        {video({50, 1}), kPal, 1, FieldSource::pictures, false},
        {video({60, 1}), kPal, 1, FieldSource::pictures, true},
        {video({120, 1}), kNtsc, 1, FieldSource::pictures, false},
        {video({25, 1}, Fields::bottomFirst), kPal, 1, FieldSource::kept, false},
        {video({30000, 1001}, Fields::topFirst), kPal, 1, FieldSource::other, true},
    };
    for (const auto& row : cases) {
        Film film;
        film.video = row.video;
        const Conversion conversion = conversionOf(film, row.standard, false);
        SCOPED_TRACE(row.video.frameRate.perSecond());
        EXPECT_NEAR(conversion.speed, row.speed, 1e-6);
        EXPECT_EQ(conversion.fields, row.fields);
        EXPECT_EQ(conversion.isPulledDown, row.isPulledDown);
        EXPECT_EQ(!conversion.note.empty(), row.isNoted) << conversion.note;
    }
}

TEST(FilmPicture, FitsEveryShapeIntoAFrame) {
    const struct {
        double aspect;
        Standard standard;
        bool isWide;
        Placement placement;
    } cases[] = {
        {16.0 / 9, kPal, true, {0, 0, 720, 576}},
        {1.85, kPal, true, {0, 12, 720, 552}},
        {2.39, kPal, true, {0, 72, 720, 432}},
        {2.39, kNtsc, true, {0, 60, 720, 360}},
        {1.5, kNtsc, false, {0, 28, 720, 424}},
        {1.3636, kPal, false, {0, 0, 720, 576}},  // 4:3 by another count of its pixels
        {9.0 / 16, kPal, false, {208, 0, 304, 576}},
        {0.1, kPal, false, {334, 0, 52, 576}},
        {10, kNtsc, true, {0, 196, 720, 88}},
    };
    for (const auto& row : cases) {
        Film film;
        film.video = video({25, 1}, Fields::progressive, row.aspect);
        const Conversion conversion = conversionOf(film, row.standard, false);
        EXPECT_EQ(conversion.isWide, row.isWide) << row.aspect;
        const Placement placed = conversion.placement;
        EXPECT_EQ(placed, row.placement) << row.aspect << ": " << placed.x << ", " << placed.y
                                         << ", " << placed.width << " x " << placed.height;
    }
}

TEST(FilmEncoding, KeepsColors) {
    const struct {
        const char *size, *filter, *tags;
    } cases[] = {
        {"640x1080", "scale=out_color_matrix=bt709", ""},
        {"640x1080", "scale=out_color_matrix=bt601", "-colorspace smpte170m"},
        {"192x432", "scale=out_color_matrix=bt601", ""},
        {"192x432", "scale=out_color_matrix=bt709:out_range=pc",
         "-colorspace bt709 -color_range pc"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.filter);
        const TempFolder folder;
        const Film film = made(folder, "film.mkv",
                               fmt::format(fmt::runtime(kBars), row.size, row.filter, row.tags));
        const Conversion conversion = conversionOf(film, kPal, false);
        const Bitmap shown = firstPicture(folder, encoded(folder, film, conversion).source.path);
        EXPECT_TRUE(near(pixel(shown, 120, 288), kRed, 3));
        EXPECT_TRUE(near(pixel(shown, 360, 288), kGreen, 3));
        EXPECT_TRUE(near(pixel(shown, 600, 288), kBlue, 3));
        const std::string still = folder.file("still.jpg");
        runQuietly(pictureCommand(film, conversion.colors, {100}, onPage({480, 360}), still));
        EXPECT_TRUE(near(pixel(*decodePicture(still), 240, 180), kGreen, 4));
        EXPECT_TRUE(near(pixel(*decodePicture(still), 20, 180), kRed, 4)) << "without bars";
    }
}

TEST(FilmEncoding, KeepsFieldsTopFirst) {
    const TempFolder folder;
    for (const char* source :
         {"r=50:s=1280x720 -c:v mpeg4",
          "r=50:s=720x576,interlace=scan=bff -c:v mpeg4 -flags +ildct",
          "r=60000/1001:s=720x480,interlace=scan=tff -c:v mpeg4 -flags +ildct"}) {
        const Film film = made(folder, "film.mkv",
                               fmt::format("-y -f lavfi -t 0.6 -i testsrc2={} -q:v 2", source));
        const Film result = encoded(folder, film, conversionOf(film, kPal, false));
        EXPECT_EQ(result.video.fields, Fields::topFirst) << source;
        const std::string found = run("ffmpeg -nostdin -nostats -i " + result.source.path +
                                      " -vf idet -f null /dev/null 2>&1 | grep 'Multi frame'");
        EXPECT_NE(found.find("BFF:     0 Progressive:     0"), std::string::npos) << found;
    }
}

TEST(FilmEncoding, SpeedsUpAndKeepsSoundAndMarks) {
    const TempFolder folder;
    const Film film =
        made(folder, "film.mkv",
             "-f lavfi -i testsrc2=d=2:r=24:s=320x180 -itsoffset 0.3 "
             "-f lavfi -i 'sine=d=3,aformat=channel_layouts=7.1' "
             "-f lavfi -i sine=d=1.5 -map 0 -map 1 -map 2 -map 1 -c:v mpeg4 -g 99 -c:a flac "
             "-metadata:s:a:0 language=fre -metadata:s:a:1 language=eng");
    ASSERT_EQ(film.audio.size(), 3U);
    EXPECT_EQ(film.audio[0].language + film.audio[1].language + film.audio[2].language, "frenxx");
    Conversion conversion = conversionOf(film, kPal, false);
    EXPECT_EQ(conversion.soundRate, 448 + 192 + 448);
    conversion.chapters = {{0, ""}, {0.21, ""}, {0.28, ""}};
    EncoderRun encoder;
    encoder.gain = -3;
    const Film result = encoded(folder, film, conversion, encoder);
    EXPECT_EQ(result.frames, 48);
    ASSERT_GE(result.keyframes.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(result.keyframes[i] * 25, (std::array{0, 5, 7, 20}[i]), 0.01);
    ASSERT_EQ(result.audio.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(result.audio[i].channels, i == 1 ? 2 : 6);
        EXPECT_EQ(result.audio[i].bitRate, i == 1 ? 192'000 : 448'000);
        const double seconds = std::stod(
            run(fmt::format("ffprobe -v error -select_streams {} -show_entries stream=duration "
                            "-of csv=p=0 {}",
                            result.audio[i].index, result.source.path)));
        EXPECT_LE(seconds, result.seconds + 0.001);
        EXPECT_GT(seconds, result.seconds - 0.04);
    }
    const std::string silence = run("ffmpeg -nostdin -nostats -i " + result.source.path +
                                    " -map 0:a:1 -af silencedetect=d=0.2 -f null /dev/null 2>&1 "
                                    "| grep -o 'silence_start: .*'");
    EXPECT_NEAR(std::stod(silence.substr(15)), 1.5 * 24 / 25, 0.02);
    const std::string still = folder.file("still.jpg");
    runQuietly(pictureCommand(film, conversion.colors, {100}, onPage({80, 60}), still));
    EXPECT_TRUE(decodePicture(still)) << "long behind the only keyframe";
}

TEST(FilmEncoding, StandsUprightWithASilentTrack) {
    const TempFolder folder;
    made(folder, "lying.mp4", fmt::format(fmt::runtime(kBars), "192x324", "null", ""));
    // The matrix of the track's header, which telephones write: x and y change places.
    std::string bytes = test::readText(folder.file("lying.mp4"));
    const std::string upright("\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\0", 20);
    const std::string turned("\0\0\0\0\xFF\xFF\0\0\0\0\0\0\0\1\0\0\0\0\0\0", 20);
    bytes.replace(bytes.find(upright, bytes.find("tkhd")), upright.size(), turned);
    const Film film = probed(folder.write("phone.mp4", bytes));
    const Film result = encoded(folder, film, conversionOf(film, kNtsc, false));
    const Bitmap shown = firstPicture(folder, result.source.path);
    EXPECT_EQ(pixel(shown, 100, 240), kBlack);
    EXPECT_TRUE(near(pixel(shown, 360, 60), kBlue, 4));
    EXPECT_TRUE(near(pixel(shown, 360, 420), kRed, 4));
    ASSERT_EQ(result.audio.size(), 1U);
    EXPECT_EQ(result.audio[0].channels, 2);
}

/// Frames of cinema on NTSC are those that a player shows, of four pictures one twice.
TEST(FilmEncoding, CutsExcerptsOfTheRightFrames) {
    for (const char* rate : {"25", "24000/1001"}) {
        const TempFolder folder;
        const bool isPal = rate == std::string("25");
        // A picture's grey is its number, among twenty.
        const Film film =
            made(folder, "film.mkv",
                 fmt::format("-f lavfi -i 'color=black:s=64x48:d=4:r={},format=yuv420p,"
                             "geq=cb=128:lum=16+10*mod(N\\,20),scale=768:576' "
                             "-c:v ffv1",
                             rate));
        const Conversion conversion = conversionOf(film, isPal ? kPal : kNtsc, false);
        EncoderRun encoder;
        encoder.excerpts = {{{160, 120}, {{2, 2}, {8, 3}}, folder.file("a%06d.jpg")},
                            {{480, 360}, {{19, 1}}, folder.file("b%06d.jpg")}};
        const Film result = encoded(folder, film, conversion, encoder);
        runQuietly(excerptCommand(result.source.path, result, conversion, {90, 3}, {160, 120},
                                  folder.file("c%06d.jpg")));
        const auto expectFrame = [&](const std::string& name, int frame) {
            const int picture = isPal ? frame
                                      : frame / 5 * 4 + std::array{0, 1, 1, 2, 3}.at(
                                                            static_cast<std::size_t>(frame % 5));
            const int grey = static_cast<int>(std::lround(picture % 20 * 10 * 255 / 219.0));
            const Bitmap shown = decodePicture(folder.file(name)).value();
            EXPECT_TRUE(near(pixel(shown, 80, 60), {grey, grey, grey, 255}, 4)) << name << rate;
        };
        const int frames[] = {2, 3, 8, 9, 10};
        for (int i = 0; i < 5; ++i)
            expectFrame(fmt::format("a{:06}.jpg", i), frames[i]);
        expectFrame("b000000.jpg", 19);
        for (int i = 0; i < 3; ++i)
            expectFrame(fmt::format("c{:06}.jpg", i), 90 + i);
        EXPECT_FALSE(fs::exists(folder.file("a000005.jpg")));
        EXPECT_FALSE(fs::exists(folder.file("c000003.jpg")));
    }
}

/// Pictures are large and small, so that their headers lie anywhere in packets.
TEST(FilmEncoding, PullsCinemaDown) {
    const TempFolder folder;
    const Film film = made(folder, "film.mkv",
                           "-f lavfi -i \"testsrc2=s=720x480:r=24000/1001:d=2,noise=alls=9:"
                           "allf=t:enable='lt(t,1)'\" -f lavfi -i sine=d=2 -c:v mpeg4 -q:v 2 "
                           "-c:a flac");
    const Conversion conversion = conversionOf(film, kNtsc, false);
    const std::string output = folder.file("film.mpg");
    EncoderRun encoder;
    encoder.videoRate = 8000;
    runQuietly(encodingCommand(film, conversion, encoder, output));
    const auto pictures = [&] {
        return run(fmt::format(
            "ffmpeg -nostdin -v error -i {} -map 0:v -fps_mode passthrough -f md5 -", output));
    };
    const std::string before = pictures();
    const auto bytes = fs::file_size(output);
    pullDown(output, ProgramStop());
    EXPECT_EQ(pictures(), before);
    EXPECT_EQ(fs::file_size(output), bytes);
    EXPECT_EQ(whyNotDvdReady(probed(output), kNtsc), "");
    // Whoever has such a film puts it on a disc as it is.
    const std::string copy = folder.file("copy.mpg");
    const Film pulled = probed(output);
    const Conversion copied = conversionOf(pulled, kNtsc, true);
    runQuietly(remuxCommand(pulled, copied, "", copy));
    EXPECT_EQ(probed(copy).frames, copied.frames);
    EXPECT_EQ(copied.shownFrames(), conversion.shownFrames());

    const auto probe = [&](const std::string& words) {
        return run(
            fmt::format("ffprobe -v error -select_streams v -of csv=p=0 -show_entries {} {} "
                        "| sed '/^$/d;s/,$//;s,N/A,-1,g;y/,/ /'",
                        words, output));
    };
    std::string flags;
    std::vector<double> times{-2 * 1501.5};
    int fields = 0;
    for (int i = 0; i < conversion.frames; ++i) {
        const bool isFirst = i % 2 == 0;
        flags += fmt::format("0 {} {}\n", i % 4 % 3 == 0 ? 1 : 0, isFirst ? 1 : 0);
        times.push_back(fields * 1501.5);
        fields += isFirst ? 3 : 2;
    }
    EXPECT_EQ(probe("frame=interlaced_frame,top_field_first,repeat_pict"), flags);
    EXPECT_TRUE(probe("frame_side_data=timecode").ends_with("00:00:01:19\n")) << "39 pictures";
    // Each is decoded when the one before it, of those that are shown, is shown.
    std::istringstream packets(probe("packet=pts,dts"));
    std::size_t coded = 0, timed = 0;
    double start = 0;
    for (double pts = 0, dts = 0; packets >> pts >> dts; ++coded) {
        if (coded == 0) start = pts;
        if (pts < 0 || dts < 0) continue;
        ++timed;
        EXPECT_NEAR(dts - start, times.at(coded), 1) << coded;
        const auto next = std::ranges::lower_bound(times, pts - start - 1);
        EXPECT_TRUE(next != times.end() && *next <= pts - start + 1 && dts <= pts) << pts;
    }
    EXPECT_EQ(coded, times.size() - 1);
    EXPECT_GE(timed, coded / 2);
}

/// A workshop in which ffmpeg is a script that tells its passes in the file "passes".
struct WatchedWorkshop {
    const TempFolder& folder;
    ProgramStop stop;
    Workshop workshop;
    TerminalProgress quiet{TerminalProgress::Style::quiet};
    Progress progress{quiet};

    /// `script`: for the shell, before the real program.
    WatchedWorkshop(const TempFolder& place, const std::string& name, const std::string& script)
        : folder(place), workshop(place.file(name), stop) {
        static const std::string real = run("command -v ffmpeg");
        folder.write("passes", "");
        folder.write("bin/ffmpeg",
                     fmt::format("#!/bin/sh\ncd {2}; for w; do [ \"$l\" = -pass ] && printf $w "
                                 ">>passes; l=$w; done; cd - >/dev/null; {0}\nexec {1} \"$@\"\n",
                                 script, real.substr(0, real.find('\n')), folder.path()));
        fs::permissions(folder.file("bin/ffmpeg"), fs::perms::owner_all);
    }

    std::string passes() const { return test::readText(folder.file("passes")); }
};

/// One film is hard to encode, and the other leaves little room. Whatever is made of cinema is
/// pulled down in the end.
TEST(FilmMaker, KeepsToTheRateOfAFullDisc) {
    const TempFolder folder;
    const Film film = made(folder, "hard.avi",
                           "-f lavfi -i mandelbrot=s=720x480:r=24000/1001 -t 2 -c:v mjpeg -q:v 2");
    Film hours = film;
    hours.seconds = 13'500;
    Project project;
    project.standard = kNtsc;
    project.films.resize(2);
    const DiscPlan plan = planDisc(project, {film, hours});
    const DiscFilm& hard = plan.films[0];
    const auto planned = static_cast<double>(
        filmBytes(hard.conversion.seconds, hard.conversion.videoRate + kStereoRate));
    const std::string larger =
        "case \"$*\" in *\"-pass 2\"*-again*) ;; *\"-pass 2\"*) a=$*; set -- $(echo \"$a\" | "
        "sed 's/-b:v [0-9]*k/-b:v 3300k/');; esac";
    const struct {
        const char* script;
        const char* passes;
        double least, most;  // of the bytes that are planned
    } rows[] = {
        {"", "12", 0.85, 1.03},
        {"case \"$*\" in *\"-pass 2\"*) exit 9;; esac", "12", 1.1, 3},
        {larger.c_str(), "122", 0.6, 1.03},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.script);
        WatchedWorkshop watched(folder, fmt::format("work{}", &row - rows), row.script);
        const test::ScopedVariable path("PATH", folder.file("bin:") + std::getenv("PATH"));
        Workshop& workshop = watched.workshop;
        const Strings excerpts = FilmMaker(plan, workshop, watched.progress).make(hard);
        const std::string name = filmName(hard);
        const Film result = probed(workshop.path(name));
        EXPECT_EQ(result.frames, 48);
        EXPECT_NEAR(result.video.frameRate.perSecond(), 29.97, 0.001);
        ASSERT_FALSE(excerpts.empty());
        EXPECT_TRUE(workshop.has(excerpts[0]));
        EXPECT_EQ(watched.passes(), row.passes);
        const double part = static_cast<double>(fs::file_size(workshop.path(name))) / planned;
        EXPECT_GT(part, row.least);
        EXPECT_LT(part, row.most);
    }
}

TEST(FilmMaker, LooksAtFilmsOnce) {
    const TempFolder folder;
    const Film film =
        made(folder, "film.mkv",
             "-f lavfi -i testsrc2=s=720x576:r=25:d=2,noise=alls=10:allf=t -c:v mpeg4 "
             "-q:v 2 -g 25");
    Project project;
    project.films.resize(1);
    const DiscPlan plan = planDisc(project, {film});
    run(
        fmt::format("cd {}; ffmpeg -nostdin -v error -i film.mkv -c:v mpeg2video -trellis 1 -bf 2 "
                    "-g 13 -flags +cgop -sc_threshold 1000000000 -q:v 6 whole.m2v",
                    folder.path()));
    const double rate = static_cast<double>(fs::file_size(folder.file("whole.m2v"))) * 8 / 2000;
    for (const char* script : {"", "exit 9"}) {
        WatchedWorkshop watched(folder, "work", script);
        const test::ScopedVariable path("PATH", folder.file("bin:") + std::getenv("PATH"));
        const Hardness hardness = hardnessOf(plan.films[0], watched.workshop);
        EXPECT_NEAR(hardness[1], rate, rate / 5);
        EXPECT_TRUE(hardness[0] > hardness[1] * 1.5 && hardness[1] > hardness[2] * 1.5);
    }
    WatchedWorkshop broken(folder, "broken", "exit 9");
    const test::ScopedVariable path("PATH", folder.file("bin:") + std::getenv("PATH"));
    EXPECT_EQ(hardnessOf(plan.films[0], broken.workshop), Hardness{}) << "somebody else says why";
}

/// Where something begins, in seconds, in values at this rate: above half of the highest, after a
/// tenth of a second below.
std::vector<double> onsets(const std::vector<double>& values, double rate) {
    const double most = std::ranges::max(values);
    std::vector<double> times;
    double last = -1;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double time = static_cast<double>(i) / rate;
        if (values[i] < most / 2) continue;
        if (time > last + 0.1) times.push_back(time);
        last = time;
    }
    return times;
}

/// How much later than each flash of a film its beep begins, in seconds.
std::vector<double> lateness(const std::string& film) {
    // Fine enough for pictures that are not evenly spaced.
    constexpr int kLevels = 3000;
    const auto startOf = [&](const char* stream) {
        return std::stod(
            run(fmt::format("ffprobe -v error -select_streams {}:0 -show_entries "
                            "packet=pts_time -of csv=p=0 {} | grep '^[0-9]' | sort -n | head -1",
                            stream, film)));
    };
    std::vector<double> levels, samples;
    for (const char byte :
         run(fmt::format("ffmpeg -nostdin -v error -i {} -map 0:v -vf scale=1:1:flags=area,"
                         "format=yuv420p,extractplanes=y,fps={} -f rawvideo -",
                         film, kLevels)))
        levels.push_back(static_cast<unsigned char>(byte));
    for (const char byte :
         run(fmt::format("ffmpeg -nostdin -v error -i {} -map 0:a:0 -ac 1 -f s8 -", film)))
        samples.push_back(std::abs(static_cast<signed char>(byte)));
    const std::vector<double> flashes = onsets(levels, kLevels), beeps = onsets(samples, 48000);
    std::vector<double> late;
    for (std::size_t i = 0; i < std::min(flashes.size(), beeps.size()); ++i)
        late.push_back(beeps[i] + startOf("a") - flashes[i] - startOf("v"));
    return late;
}

TEST(FilmEncoding, KeepsSoundInStep) {
    const struct {
        const char *rate, *ending, *codec;
        Standard standard;
        int cutAt;  ///< 188 bytes
    } rows[] = {{"24", "mkv", "flac", kPal, 0}, {"25", "mkv", "flac", kNtsc, 0},
                {"24", "mkv", "ac3", kNtsc, 0}, {"50", "mkv", "ac3", kPal, 0},
                {"30", "mkv", "flac", kPal, 0}, {"25", "ts", "mp2", kPal, 60},
                {"25", "ts", "ac3", kPal, 60}};
    for (const auto& row : rows) {
        const TempFolder folder;
        SCOPED_TRACE(fmt::format("{} {} {}", row.rate, row.ending, row.codec));
        const std::string name = fmt::format("film.{}", row.ending);
        made(folder, name,
             fmt::format(
                 "-f lavfi -i "
                 "'color=s=64x36:r={0}:d=3.2,format=yuv420p,geq=cb=128:lum=if(gt(T\\,0.5)*lt("
                 "mod(T\\,1)\\,2.5/{0})\\,235\\,16)' "
                 "-f lavfi -i 'aevalsrc=if(gt(t\\,0.5)*lt(mod(t\\,1)\\,0.1)\\,sin(6283*t)\\,0)"
                 ":s=48000:d=3.2' -c:v libx264 -g 25 -c:a {1}",
                 row.rate, row.codec));
        if (row.cutAt > 0)
            run(fmt::format("cd {0} && tail -c +{2} {1} >cut && mv cut {1}", folder.path(), name,
                            188 * row.cutAt + 1));
        const Film film = probed(folder.file(name));
        const Conversion conversion = conversionOf(film, row.standard, false);
        const Film result = encoded(folder, film, conversion);
        std::vector<double> late = lateness(result.source.path);
        EXPECT_EQ(late.size(), 3U);
        EXPECT_EQ(film.lost > 0.1, row.cutAt > 0) << film.lost;
        // A copied track begins with its first whole frame.
        if (conversion.tracks.at(0).isCopied) late.erase(late.begin());
        for (const double seconds : late)
            EXPECT_NEAR(seconds, 0, row.standard == kPal ? 0.005 : 0.034) << "up to a frame";
    }
}

TEST(FilmEncoding, EvensLoudness) {
    const char* const summary =
        "    I:         {} LUFS\n    Threshold: -31.1 LUFS\n  Loudness range:\n    LRA: 1.0 LU\n"
        "  True peak:\n    Peak:      {} dBFS\n";
    const auto gain = [&](const char* loudness, const char* peak) {
        return gainFromAnswer("t: 1 M: -9 I: -9.0 LUFS\n Summary:\n" +
                              fmt::format(fmt::runtime(summary), loudness, peak));
    };
    EXPECT_DOUBLE_EQ(gain("-20.5", "-3.0"), -2.5);
    EXPECT_DOUBLE_EQ(gain("-33.0", "-5.0"), 4) << "peaks stay below full scale";
    EXPECT_DOUBLE_EQ(gain("-70.0", "-inf"), 0) << "silence";
    EXPECT_DOUBLE_EQ(gainFromAnswer("nothing"), 0);
}

/// The relative luminance of a colour as WCAG 2 defines it, of levels in 0..1.
double luminance(double red, double green, double blue) {
    const auto linear = [](double level) {
        return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}

/// The least contrast of a text on a page, but for a twentieth of what is behind it.
double contrastOn(const Bitmap& page, const TextLayer& text) {
    const PlacedBitmap letters = lettersOf(text).value();
    std::vector<double> behind;
    for (int y = letters.top; y < letters.top + letters.pixels.height(); ++y) {
        for (int x = letters.left; x < letters.left + letters.pixels.width(); ++x) {
            const Rgba color = pixel(page, x, y);
            behind.push_back(luminance(color.red / 255.0, color.green / 255.0, color.blue / 255.0));
        }
    }
    std::ranges::sort(behind);
    const Color& color = text.attributes.color;
    const double brightest = behind[behind.size() * 19 / 20 - 1];
    return (luminance(color.red, color.green, color.blue) + 0.05) / (brightest + 0.05);
}

/// The least contrast on a page as it is drawn without its texts.
double leastContrast(const MenuPage& page, const std::string& background) {
    const Strings thumbnails(page.thumbnails.size(), "none.jpg");
    const MenuRequest request =
        pageRequest(page, kPal, background, thumbnails, MenuMode::definitive, "");
    MenuPage bare = page;
    bare.title.clear();
    for (Button& button : bare.buttons)
        button.text.clear();
    double least = 21;
    drawMenuFrames(pageRequest(bare, kPal, background, {}, MenuMode::definitive, ""),
                   [&](const Bitmap& frame) {
                       for (const TextLayer& text : textsOf(request))
                           least = std::min(least, contrastOn(frame, text));
                       return false;
                   });
    return least;
}

/// Photographs by others, as backgrounds and as scenes of films.
TEST(Readability, IsEnoughOnPhotographs) {
    const char* const folderOfAll = "/usr/share/backgrounds";
    if (!fs::exists(folderOfAll)) GTEST_SKIP() << "no wallpapers on this system";
    Strings photographs;
    for (const auto& entry : fs::directory_iterator(folderOfAll)) {
        if (entry.path().extension() == ".jpg") photographs.push_back(entry.path());
    }
    std::ranges::sort(photographs);
    EXPECT_GE(photographs.size(), 15U) << "install lomiri-wallpapers-16.04";
    const TempFolder folder;
    ProgramStop stop;
    Workshop workshop(folder.file("work"), stop);
    for (const std::string& photograph : photographs) {
        const Film film =
            made(folder, "film.mkv",
                 fmt::format("-y -i {} -vf scale=960:540 -c:v mjpeg -q:v 3", photograph));
        Project project;
        project.films.resize(28, {"/films/a wide caption.mp4", {}, {}, {}});
        project.title = "Readability";
        project.labels = labelsOf("en");
        std::string report = fs::path(photograph).stem().string();
        for (const bool isGiven : {true, false}) {
            if (isGiven)
                project.background = photograph;
            else
                project.background.reset();
            const DiscPlan plan = planDisc(project, std::vector<Film>(28, film));
            const std::string background =
                makeBackground(menuSettingOf(project, plan), plan, workshop);
            // The third page has all labels.
            const double least = leastContrast(plan.pages.at(2), workshop.path(background));
            EXPECT_GE(least, 4.5) << photograph;
            report += fmt::format(" {:.2f}", least);
        }
        std::cout << report << "\n";
    }
}

}  // namespace tkv::disc
