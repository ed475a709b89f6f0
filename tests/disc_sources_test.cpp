#include <algorithm>

#include "disc/author/authoring.h"
#include "disc/make/film_damage.h"
#include "disc_films.h"

// What becomes of films of all kinds on a disc.

namespace tkv::test::disc {

TEST_F(Films, KeepTheirColorsShapesAndMotion) {
    const auto color = [](const char* name, const std::string& shape) {
        return fmt::format("-f lavfi -i color={}:r=25:d=0.4:s={}", name, shape);
    };
    // Of ten bits, in wide colours: ffmpeg 5 tells those of the options, newer ones the pictures'.
    const auto deep = [](const char* tint, const char* range, const char* transfer) {
        return fmt::format(
            "-f lavfi -i 'color={0}:s=320x180:r=25:d=0.4,format=gbrp,scale="
            "out_color_matrix=bt2020:out_range={1},format=yuv420p10le,setparams=range={1}:"
            "color_primaries=bt2020:color_trc={2}:colorspace=bt2020nc' -c:v ffv1 "
            "-colorspace bt2020nc -color_primaries bt2020 -color_range {1} -color_trc {2}",
            tint, range, transfer);
    };
    const std::string surround = " -f lavfi -i anullsrc=cl=5.1:d=0.4 -map 0 -map 1 -map 1";
    constexpr Rgba kRed{253, 2, 2, 255}, kBlue{2, 2, 253, 255};
    // 203 and 22.5 cd/m2, of which a television with a gamma of 2.4 makes 255 and 102.
    constexpr Rgba kReferenceWhite{227, 227, 227, 255}, kGrey{102, 102, 102, 255};
    struct Source {
        std::string words, shape;  // and the most that its picture may take, in bits a second
        Rgba color;                // of its middle
        bool hasBars = false;
    };
    const std::string wide = "16:9\n9608000\n", narrow = "4:3\n9608000\n";
    const std::vector<Source> pal{
        {deep("0xB06060", "tv", "smpte2084"), wide, {251, 0, 46, 255}},
        {deep("0x949494", "pc", "smpte2084"), wide, kReferenceWhite},
        {deep("0xD02020", "pc", "bt2020-10"), wide, {0xD0, 0x20, 0x20, 255}},
        {color("red", "640x480") + " -aspect 16:9", wide, kRed},
        {color("red", "664x400"), wide, kRed, true},
        {color("red", "320x180") + surround, "16:9\n8904000\n", kRed},
        {color("red", "320x180") + " " + color("blue", "320x180") +
             " -map 0 -map 1 -disposition:0 0 -disposition:1 default",
         wide, kBlue},
    };
    const std::vector<Source> ntsc{
        {deep("0x5B5B5B", "tv", "arib-std-b67"), wide, kGrey},
        {deep("0xBFBFBF", "pc", "arib-std-b67"), wide, kReferenceWhite},
        {color("red", "640x360") + " -aspect 4:3", narrow, kRed},
        {color("red", "664x400"), wide, kRed, true},
    };
    for (const bool isPal : {true, false}) {
        const std::vector<Source>& sources = isPal ? pal : ntsc;
        std::string words = isPal ? "--pal" : "--ntsc";
        for (std::size_t i = 0; i < sources.size(); ++i) {
            const std::string name = fmt::format("{}{}.mkv", i + 1, isPal);
            make(name, sources[i].words);
            words += " " + name;
        }
        expectDisc("--quiet --no-menu --no-image -o out " + words);
        for (std::size_t i = 0; i < sources.size(); ++i) {
            SCOPED_TRACE(sources[i].words);
            const std::string vob = file(fmt::format("out/disc/VIDEO_TS/VTS_{:02}_1.VOB", i + 1));
            EXPECT_TRUE(near(colorAt(vob, 0.2, "crop=200:200"), sources[i].color, 6));
            EXPECT_EQ(near(colorAt(vob, 0.2, "crop=16:200:0"), {0, 0, 0, 255}, 12),
                      sources[i].hasBars);
            EXPECT_EQ(run("ffprobe -v error -select_streams v -of default=nw=1:nk=1 -show_entries "
                          "stream=display_aspect_ratio:stream_side_data=max_bitrate " +
                          vob),
                      sources[i].shape);
        }
    }
}

TEST_F(Films, TellWhatCannotBeDecoded) {
    make("good.mkv", "-f lavfi -i testsrc2=s=320x180:r=25:d=6 -c:v libx264 -g 25 -b:v 2M");
    run(
        fmt::format("cd {} && cp -L good.mkv bad.mkv && head -c 40000 /dev/zero | tr '\\0' x | "
                    "dd of=bad.mkv bs=1000 seek=$(($(stat -c %s bad.mkv) / 2000)) conv=notrunc "
                    "status=none",
                    folder_.path()));
    for (const char* time : {"first", "second"}) {
        const std::string said = makeDisc("--no-menu --no-image -o out bad.mkv good.mkv");
        EXPECT_NE(said.find("bad.mkv could not be decoded, at about 0:0"), std::string::npos)
            << time << said;
        EXPECT_EQ(said.find("good.mkv could"), std::string::npos) << said;
        const std::string log = readText(file("out/work/programs.log"));
        const bool isFirst = time == std::string_view("first");
        EXPECT_EQ(log.find("bad.mkv") != std::string::npos, isFirst) << log;
        EXPECT_NE(log.find("dvdauthor -x "), std::string::npos) << log;
    }
    tkv::disc::FilmDamage damage(false);
    damage.take("[dvd @ 0x55db306cefc0] buffer underflow st=1 bufi=385 size=418");
    damage.take("    Last message repeated 30 times");
    damage.take("[mpeg2video @ 0x562bca63fec0] rc buffer underflow");
    EXPECT_EQ(damage.sentence("film"), "") << "it is decoded";
    EXPECT_EQ(tkv::disc::warningIn("INFO: a\nWARN:  Odd\nSTAT: b\n"),
              "dvdauthor warns: Odd. See work/programs.log.");
    EXPECT_EQ(tkv::disc::warningIn("WARN: Odd\nWARN: b\nWARN: c"),
              "dvdauthor warns: Odd (and 2 more). See work/programs.log.");
    EXPECT_EQ(tkv::disc::warningIn("INFO: WARN:"), "");
}

TEST_F(Films, AreLeftOutWhereTheyAreFaulty) {
    makeReady("ready.vob");
    const std::string stripes = "-f lavfi -i testsrc2=s=320x180:r=25:d=1 ";
    make("film.mp4", stripes);
    make("hopeless.mkv", stripes);
    // Its only keyframe is the first.
    make("clear.ts", "-f lavfi -i testsrc2=s=320x180:r=25:d=6 -g 999 -mpegts_m2ts_mode 1");
    // Its packets have no place for such a mark.
    make("mpeg1.mpg", stripes + "-b:v 2M");
    // As encrypted: each packet says so.
    const auto mark = [&](const char* from, const char* to, std::size_t bytes, std::size_t place,
                          int bits) {
        std::string text = readText(file(from));
        for (std::size_t at = place; at < text.size(); at += bytes)
            text[at] = static_cast<char>(text[at] | bits);
        folder_.write(to, text);
    };
    mark("ready.vob", "bought.vob", 2048, 20, 0x10);
    mark("clear.ts", "paid.ts", 192, 7, 0x80);
    run(
        fmt::format("cd {}; sed s/avc1/encv/ film.mp4 >rented.mp4; sed s/avc1/zzz1/ film.mp4 "
                    ">tomorrow.mp4",
                    folder_.path()));
    const std::string words =
        "--no-image --chapters every=3s -o out hopeless.mkv bought.vob mpeg1.mpg paid.ts "
        "rented.mp4 tomorrow.mp4 clear.ts clear.ts";
    const std::string lines = fmt::format(
        "tkvDvdDisc: {0}/bought.vob is encrypted. Leave it out, or decrypt it first.\n"
        "tkvDvdDisc: {0}/paid.ts is encrypted. Leave it out, or decrypt it first.\n"
        "tkvDvdDisc: {0}/rented.mp4 is encrypted. Leave it out, or decrypt it first.\n"
        "tkvDvdDisc: {0}/tomorrow.mp4 is in a codec (zzz1) that nothing here knows. Leave it out, "
        "or convert it first.\n",
        folder_.path());
    EXPECT_EQ(makeDisc(words), lines + "status 1\n");

    const std::string said = makeDisc(
        "--keep-going " + words,
        faked("ffmpeg", "case \"$*\" in *hopeless*film-*) exit 1;; esac; exec $real \"$@\""));
    EXPECT_TRUE(said.ends_with(fmt::format(
        "tkvDvdDisc: 5 films are left out:\n{}tkvDvdDisc: {}/hopeless.mkv could not be encoded: "
        "ffmpeg ended with status 1.\nstatus 3\n",
        lines, folder_.path())))
        << said;
    // The others are not made twice.
    EXPECT_EQ(said.find("Encoding mpeg1.mpg"), said.rfind("Encoding mpeg1.mpg")) << said;
    Player player(file("out/disc"));
    EXPECT_EQ(player.press(2), "film-2-page-1");
    EXPECT_EQ(player.press(DVD_MENU_Title), "films-1");
    EXPECT_EQ(player.press(3), "film-3-page-1") << "made of the same file";
    EXPECT_FALSE(fs::exists(file("out/disc/VIDEO_TS/VTS_04_1.VOB")));
}

TEST_F(Films, KeepTheirTime) {
    // The picture begins a second after the sound, whose tone climbs by 400 Hz a second.
    make("late.mkv",
         "-f lavfi -i 'aevalsrc=sin(2*PI*t*(400+200*t))/4:s=48000:d=3' -itsoffset 1 "
         "-f lavfi -i color=s=320x180:r=25:d=2 -c:a flac");
    // Each field is brighter than the one before, bottom first.
    make("fields.mkv",
         "-f lavfi -i "
         "'color=s=64x48:r=60000/1001:d=1,format=yuv420p,geq=cb=128:lum=40+150*T,scale=720:480,"
         "interlace=scan=bff:lowpass=off' -c:v mpeg2video -q:v 2 -flags +ilme+ildct");
    // A clock of 90,000 that is taken for a rate.
    const std::string said = makeDisc(
        "--pal --no-menu --no-image -o out late.mkv fields.mkv",
        faked("ffprobe", "$real \"$@\" | sed '/avg_frame_rate/s/\"25.1\"/\"90000\\/1\"/'"));
    EXPECT_NE(said.find("late.mkv, 320 x 180, 25 frames a second"), std::string::npos) << said;
    EXPECT_NEAR(hertzAt(file("out") + kFirstFilm, 0.5), 400 + 400 * 1.6, 20);
    const std::string greys =
        raw(file("out/disc/VIDEO_TS/VTS_02_1.VOB"),
            "-vf separatefields,scale=1:1:flags=area,format=yuv420p,extractplanes=y "
            "-fps_mode passthrough -f rawvideo");
    EXPECT_EQ(greys.size(), 50U);
    EXPECT_TRUE(std::ranges::is_sorted(greys, {},
                                       [](char grey) { return static_cast<unsigned char>(grey); }));
}

}  // namespace tkv::test::disc
