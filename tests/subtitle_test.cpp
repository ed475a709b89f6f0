#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

#include "disc/film/subtitle_words.h"
#include "disc/plan/subtitles.h"
#include "disc/subtitle/bitmap_picture.h"
#include "disc/subtitle/choice.h"
#include "disc/subtitle/drawing.h"
#include "disc/subtitle/dvb_canvas.h"
#include "disc/subtitle/dvd_units.h"
#include "disc/subtitle/encoding.h"
#include "disc/subtitle/pgs.h"
#include "disc/subtitle/vobsub.h"
#include "disc/subtitle/vobsub_index.h"
#include "support.h"

// Subtitles on their way from a text to what a player draws.

namespace tkv::disc {

using test::quoted;
using test::run;
using test::TempFolder;

namespace {

std::string wordsOf(const FilmSubtitle& subtitle) {
    constexpr std::array<const char*, 4> kKinds{"", " hearing", " commentary", " forced"};
    return subtitle.language + kKinds.at(static_cast<std::size_t>(subtitle.kind)) +
           (subtitle.isDefault ? " default" : "");
}

TEST(Subtitles, AreKnownByTheirNames) {
    const struct {
        const char* name;
        const char* words;
    } rows[] = {
        {"Film 2.srt", "xx"},
        {"Film 2.fr.SRT", "fr"},
        {"Film 2.ger.forced.ass", "de forced"},
        {"Film 2.Forced.English.vtt", "en forced"},
        {"Film 2.français.default.ssa", "fr default"},
        {"Film 2.pt-BR.srt", "pt"},
        {"Film 2.en.hi.srt", "en hearing"},
        {"Film 2.hi.srt", "hi"},
        {"Film 2.eng.sdh.forced.srt", "en forced"},
        {"Film 2.web.nl.cc.srt", "nl hearing"},
        {"Film 2 (Spanish).srt", "es"},
        {"Film 2_fr.srt", "fr"},
        {"Film 2 back.srt", "none"},
        {"Film 22.srt", "none"},
        {"Film 2.fr.txt", "none"},
        {"Film.fr.srt", "none"},
    };
    for (const auto& [name, words] : rows) {
        const auto found = subtitleNamed(name, "Film 2");
        EXPECT_EQ(found ? wordsOf(*found) : "none", words) << name;
    }
    const TempFolder folder;
    for (const char* name : {"a.mkv", "a.2.mkv", "a.srt", "a.2.fr.srt", "a.fr.nfo", "a.fr.srt"})
        folder.write(name, "");
    EXPECT_EQ(subtitlesBeside(folder.file("a.mkv")).size(), 2U) << "one is another film's";
}

TEST(Subtitles, AreReadInAnyEncoding) {
    const std::string french =
        "Où étais-tu, là-bas, cet été ? Ça m’a manqué, dit-elle : « Noël ! »";
    const std::string polish = "Zażółć gęślą jaźń, powiedział. Świat się kończy, mój drogi.";
    const std::string russian = "Где ты был? Я ждал тебя весь день, а ты не пришёл домой.";
    const std::string japanese = "どこへ行っていたの。ずっと待っていたのに。";
    const struct {
        std::string text;
        const char* encoding;
        const char* language;
        const char* guessed;
    } rows[] = {
        {french, "UTF-8", "fr", ""},
        {french, "UTF-16", "xx", ""},
        {french, "UTF-16LE", "xx", "UTF-16LE"},
        {french, "UTF-16BE", "xx", "UTF-16BE"},
        {french, "CP1252", "fr", "windows-1252"},
        {polish, "CP1250", "pl", "windows-1250"},
        {"Na, Čenda, š.", "CP1250", "cs", "windows-1250"},
        {russian, "CP1251", "xx", "windows-1251"},
        {russian, "KOI8-R", "ru", "KOI8-R"},
        {"שלום לכולם, מה שלומכם היום? הכל בסדר.", "CP1255", "xx", "windows-1255"},
        {"Καλημέρα σας, πού ήσασταν όλη την ημέρα;", "CP1253", "el", "ISO-8859-7"},
        {"Şu ağacın altında bekliyordum, değil mi?", "CP1254", "tr", "windows-1254"},
        {japanese, "SHIFT_JIS", "xx", "Shift_JIS"},
        {japanese, "EUC-JP", "ja", "EUC-JP"},
        {"你去哪儿了？我等了你一整天。", "GBK", "zh", "GB18030"},
        {"你去哪裡了？我等了你一整天。", "BIG5", "zh", "Big5"},
    };
    for (const auto& [text, encoding, language, guessed] : rows) {
        const std::string lines = fmt::format("1\n00:00:01,000 --> 00:00:02,000\n{}\n", text);
        const std::string bytes =
            run(fmt::format("printf %s {} | iconv -f UTF-8 -t {}", quoted(lines), encoding));
        const auto decoded = decodedText(
            {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, language);
        ASSERT_TRUE(decoded) << encoding;
        EXPECT_EQ(decoded->text, lines) << encoding;
        EXPECT_EQ(decoded->guessed, guessed) << encoding;
    }
}

TEST(Subtitles, AreOrderedAndShown) {
    Film film;
    film.audio.resize(1);
    film.audio[0].language = "en";
    const auto add = [&](const char* language, SubtitleKind kind, bool isDefault = false) {
        FilmSubtitle subtitle;
        subtitle.codec = "subrip";
        subtitle.language = language;
        subtitle.kind = kind;
        subtitle.isDefault = isDefault;
        film.subtitles.push_back(subtitle);
    };
    add("fr", SubtitleKind::forced);
    add("en", SubtitleKind::forced);
    add("fr", SubtitleKind::hearing);
    add("fr", SubtitleKind::normal);
    add("en", SubtitleKind::normal, true);
    for (const auto& [shown, place] :
         {std::pair("auto", 4), std::pair("fr", 2), std::pair("de", 4), std::pair("none", -1)}) {
        std::string words;
        int found = -1;
        for (const DiscSubtitle& each : discSubtitles(film, false, shown)) {
            if (each.isShown) found = static_cast<int>(std::ranges::count(words, ','));
            words += wordsOf(each.source) + ",";
        }
        EXPECT_EQ(words, "en default,fr hearing,fr,fr forced,en forced,");
        EXPECT_EQ(found, place) << shown;
    }
}

TEST(Subtitles, AreNotStretched) {
    for (const int height : {576, 480}) {
        for (const double aspect : {4.0 / 3, 16.0 / 9}) {
            SubtitleDrawing drawing({{720, height}, aspect, 0, 0, {640, 360}}, {});
            ASSERT_TRUE(drawing.load(
                "[Script Info]\nScriptType: v4.00+\nPlayResX: 384\nPlayResY: 288\n[V4+ Styles]\n"
                "Format: Name, Fontname, Fontsize, PrimaryColour, Alignment\n"
                "Style: Default,DejaVu Sans,200,&H0000FFFF,5\n[Events]\n"
                "Format: Start, End, Style, Text\n"
                "Dialogue: 0:00:00.00,0:00:01.00,Default,■\n",
                true));
            const SubtitlePicture square = drawing.at(0.5);
            const double shape = aspect * height / 720 * square.width / std::max(square.height, 1);
            EXPECT_NEAR(shape, 1, 0.02) << height << " rows, " << aspect;
            EXPECT_EQ(square.colors[3], 0xFFFF00U);
        }
    }
}

/// A picture with runs of every length, one of them to the end of a row.
SubtitlePicture manyRuns() {
    constexpr std::size_t kRow = 640;
    SubtitlePicture picture{8, 100, 640, 60, {}, {0, 0x102030, 0x808080, 0xF0F0F0}};
    std::size_t length = 1;
    while (picture.pixels.size() < kRow * 59) {
        const auto value = static_cast<std::uint8_t>(1 + length % 3);
        picture.pixels.insert(picture.pixels.end(), ++length % 300, value);
    }
    picture.pixels.resize(kRow * 60);
    return picture;
}

TEST(Subtitles, AreDecodedAsTheyWereCoded) {
    const TempFolder folder;
    const SubtitlePicture picture = manyRuns();
    auto unit = unitOf(picture, 0, 1, false);
    ASSERT_TRUE(unit);
    const VobSub made = vobSubOf({{"en", {*unit}}});
    folder.write("a.sub", {made.packs.begin(), made.packs.end()});
    const std::string decoded = run(
        fmt::format("ffmpeg -v error -f vobsub -i {} -f lavfi -i color=red:s=720x576 "
                    "-filter_complex '[1]format=rgb24[c];[c][0:s]overlay=format=rgb,"
                    "crop=640:60:8:100,trim=start=0.4' -frames:v 1 -f rawvideo -pix_fmt rgb24 -",
                    quoted(folder.write("a.idx", made.index))));
    ASSERT_EQ(decoded.size(), picture.pixels.size() * 3);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const std::uint32_t color =
            picture.pixels[i] == 0 ? 0xFE0000 : picture.colors[picture.pixels[i]];
        const auto blue = static_cast<std::uint8_t>(decoded[3 * i + 2]);
        ASSERT_NEAR(blue, static_cast<int>(color & 0xFFU), 1) << i;
    }

    SubtitlePicture dense{0, 0, 720, 576, {}, {}};
    for (std::size_t i = 0; i < std::size_t{720} * 576; ++i)
        dense.pixels.push_back(static_cast<std::uint8_t>(i % 2));
    EXPECT_FALSE(unitOf(dense, 0, 1, false)) << "more bytes than players hold";
}

/// What is told of a track of DVD's units that ffmpeg has put into a file of the format Matroska.
std::string cuesInUnits(const std::string& file) {
    std::ifstream input(file, std::ios::binary);
    std::string cues;
    readDvdUnits(input, {}, 9, [&](const BitmapCue& cue) {
        cues += fmt::format("{:.2f}{} {}x{}", cue.begin, cue.isForced ? " forced" : "",
                            cue.canvas.width, cue.canvas.height);
        for (const SubtitleBitmap& bitmap : cue.bitmaps)
            cues += fmt::format(" {},{} {:x} {:x}", bitmap.x, bitmap.y, bitmap.pixels.at(10),
                                bitmap.pixels.at(11));
        cues += "; ";
    });
    return cues;
}

TEST(Subtitles, AreReadFromUnits) {
    const TempFolder folder;
    const std::vector<std::uint8_t> row{0, 0, 3, 1, 1, 3, 0, 0};
    SubtitlePicture picture{8, 100, 8, 2, row, {0, 0x102030, 0x808080, 0xF0F0F0}};
    picture.pixels.insert(picture.pixels.end(), row.begin(), row.end());
    std::vector<SubpictureUnit> units;
    // The second goes on until the third is shown.
    for (const auto& [begin, end] : {std::pair(0.5, 1.0), std::pair(2.0, 9.0), std::pair(3.0, 4.0)})
        units.push_back(*unitOf(picture, begin, end, begin == 2));
    const VobSub made = vobSubOf({{"en", units}});
    folder.write("a.sub", {made.packs.begin(), made.packs.end()});
    folder.write("a.idx", "size: 720x480\n" + made.index);
    folder.write("b.idx", made.index.substr(0, made.index.find("palette")) +
                              made.index.substr(made.index.find("\nid:")));
    folder.write("b.sub", {made.packs.begin(), made.packs.end()});
    std::string files;
    for (const char* name : {"a", "b"}) {
        files = folder.file(name);
        run(fmt::format(
            "ffmpeg -v error -copyts -f vobsub -i {0}.idx -map 0 -c copy -f matroska {0}.mks",
            test::quoted(files)));
        const bool hasHeader = *name == 'a';
        const std::string canvas = hasHeader ? "720x480" : "0x0";
        const std::string pixel =
            hasHeader ? "8,100 fff0f0f0 ff102030; " : "8,100 ff000000 ffffffff; ";
        EXPECT_EQ(cuesInUnits(files + ".mks"),
                  fmt::format("0.50 {0} {1}0.99 {0}; 2.00 forced {0} {1}3.00 {0} {1}3.99 {0}; ",
                              canvas, pixel));
    }
    // Damaged ones are read as far as they go.
    const std::string whole = test::readText(files + ".mks");
    for (std::size_t place = 0; place < whole.size(); place += 7) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x5B);
        std::istringstream input(damaged);
        readDvdUnits(input, {}, 9, [](const BitmapCue&) {});
    }
}

TEST(Subtitles, OfAnIndexAreTracks) {
    EXPECT_EQ(tracksInIndex("palette: 0\nid: en, index: 0\ntimestamp: 1\ntimestamp: 2\n"
                            "id: de, index: 1\nid: --, index: 2\r\ntimestamp: 3\n"),
              (std::vector<std::string>{"en", "xx"}));
    EXPECT_EQ(
        dvbCanvas(std::string("\x0F\x10\0\1\0\2\xFF\x14\xFF\x0F\x14\0\1\0\5\0\7\x7F\4\x37", 20)),
        (PixelSize{1920, 1080}));
    EXPECT_EQ(dvbCanvas("damaged"), (PixelSize{720, 576}));
}

std::string numbers(std::initializer_list<std::pair<int, int>> values) {
    std::string bytes;
    for (const auto& [value, count] : values) {
        for (int left = count; left-- > 0;)
            bytes += static_cast<char>(value >> 8 * left);
    }
    return bytes;
}

std::string segment(int ticks, int kind, const std::string& bytes) {
    return "PG" + numbers({{ticks, 4}, {0, 4}, {kind, 1}, {static_cast<int>(bytes.size()), 2}}) +
           bytes;
}

/// A file of PGS: from the first second to the third a box of 600 x 108 at 660, 800 of 1920 x 1080,
/// the outer third of which on each side is black.
std::string boxInPgs() {
    std::string object = numbers({{1, 2}, {0, 1}, {0xC0, 1}, {0, 3}, {600, 2}, {108, 2}});
    for (int row = 0; row < 108; ++row)
        object += numbers({{0xC0C8, 3}, {1, 1}, {0xC0C8, 3}, {2, 1}, {0xC0C8, 3}, {1, 1}, {0, 2}});
    const auto composition = [](int objects) {
        return numbers({{1920, 2}, {1080, 2}, {0x10, 1}, {0, 2}, {0x80, 1}, {0, 2}, {objects, 1}});
    };
    return segment(90'000, 0x16,
                   composition(1) + numbers({{1, 2}, {0, 1}, {0, 1}, {660, 2}, {800, 2}})) +
           segment(90'000, 0x14,
                   numbers({{0, 2}, {0x011080, 3}, {0x80FF, 2}, {0x02EB80, 3}, {0x80FF, 2}})) +
           segment(90'000, 0x15, object) + segment(90'000, 0x80, "") +
           segment(270'000, 0x16, composition(0)) + segment(270'000, 0x80, "");
}

TEST(Subtitles, AreScaledFromPictures) {
    const std::string file = boxInPgs();
    const auto cuesIn = [](const std::string& bytes, const SubtitleFrame& frame) {
        std::string cues;
        std::istringstream input(bytes);
        readPgs(input, 9, [&](const BitmapCue& cue) {
            const SubtitlePicture picture = pictureOf(cue, frame);
            cues += fmt::format("{}: {} {} {} {}; ", cue.begin, picture.x, picture.y, picture.width,
                                picture.height);
            if (picture.isEmpty()) return;
            const auto width = static_cast<std::size_t>(picture.width);
            const std::size_t row = width * (static_cast<std::size_t>(picture.height) / 2);
            EXPECT_EQ(picture.colors[picture.pixels[row + width / 6]], 0U);
            EXPECT_EQ(picture.colors[picture.pixels[row + width / 2]], 0xFFFFFFU);
        });
        return cues;
    };
    const SubtitleFrame wide{{720, 576}, 16.0 / 9, 0, 0, {1920, 1080}};
    // A film of 2.39:1 was cropped out of its frame, and is 16:9 with bars; one of 4:3 fills its
    // own.
    SubtitleFrame cropped = wide, narrow{{720, 480}, 4.0 / 3, 0, 0, {1440, 1080}};
    cropped.barY = 72;
    EXPECT_EQ(cuesIn(file, wide), "1: 246 426 228 58; 3: 0 0 0 0; ");
    EXPECT_EQ(cuesIn(file, cropped), cuesIn(file, wide));
    EXPECT_EQ(cuesIn(file, narrow), "1: 210 356 300 48; 3: 0 0 0 0; ");
    // What follows too fast is told, and not decoded.
    std::string fast;
    for (int i = 0; i < 200; ++i)
        fast += file;
    std::istringstream input(fast);
    int shown = 0, leftOut = 0;
    readPgs(input, 2, [&](const BitmapCue& cue) {
        shown += static_cast<int>(cue.bitmaps.size());
        leftOut += cue.isTooMuch ? 1 : 0;
    });
    EXPECT_EQ(shown, 154) << "ten million pixels in pictures of 64,800";
    EXPECT_EQ(shown + leftOut, 200);
    // Damaged ones are read as far as they go.
    const auto ignore = [](const BitmapCue& cue) { pictureOf(cue, {{720, 576}, 1.5, 0, 0, {}}); };
    for (std::size_t place = 0; place < file.size(); place += 31) {
        std::string damaged = file;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x5B);
        std::istringstream all(damaged), part(file.substr(0, place));
        readPgs(all, 9, ignore);
        readPgs(part, 9, ignore);
    }
}

}  // namespace

}  // namespace tkv::disc
