#include <algorithm>
#include <array>

#include "disc_films.h"

// What each option and setting changes, and what is made again after a change.

namespace tkv::test::disc {

/// Left, top, right and bottom.
using Box = std::array<int, 4>;

/// Expects two pictures to differ, and nowhere but there.
void expectChanged(const Bitmap& before, const Bitmap& after, const Box& there) {
    Box changed{999, 999, -1, -1};
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            const auto green = [&](const Bitmap& picture) { return picture.row(y)[x] >> 8 & 255U; };
            const auto [least, most] = std::minmax({green(before), green(after)});
            if (most - least < 60) continue;
            changed = {std::min(changed[0], x), std::min(changed[1], y), std::max(changed[2], x),
                       std::max(changed[3], y)};
        }
    }
    EXPECT_TRUE(changed[2] >= 0 && changed[0] >= there[0] && changed[1] >= there[1] &&
                changed[2] <= there[2] && changed[3] <= there[3])
        << testing::PrintToString(changed);
}

/// Writes a configuration that knows no font but DejaVu, whatever this machine has.
void writeFonts(const TempFolder& folder) {
    const fs::path font = run("fc-match -f %{file} 'DejaVu Sans'");
    folder.write("fonts.conf",
                 fmt::format("<fontconfig><dir>{}</dir><cachedir>{}</cachedir></fontconfig>",
                             font.parent_path().string(), folder.file("fonts")));
}

/// A film that is ready for a PAL disc and longer than its excerpt.
constexpr const char* kLong =
    "-f lavfi -i color=s=352x288:r=25:d=35 -target pal-dvd -aspect 4:3 -s 352x288";

TEST_F(Films, FollowTheOptions) {
    makeAllKinds();
    const auto draw = [&](const std::string& words) {
        expectDisc("--preview -o shown " + words);
        EXPECT_EQ(run("ls " + file("shown/work") + " | grep -E '^(film|menu|excerpt)-' || true"),
                  "");
        return menu("shown/menus/films-1.jpg");
    };
    // Where texts stand, and in which menu.
    constexpr const char* kTwo = "--background none chap*.mp4 it*.mp4";
    const Bitmap plain = draw(kTwo);
    const Bitmap chapters = menu("shown/menus/film-1-chapters-1.jpg");
    folder_.write("words.toml",
                  "background = 'none'\n[[film]]\npath = 'chapters a:b 100%.mp4'\n"
                  "chapters = ['0:00 Red', '0:02.2 Green']\n"
                  "[[film]]\npath = \"it's \\\"upright\\\" & silent |.mp4\"\ncaption = 'Other'");
    const struct {
        const char* words;
        std::optional<Box> films, chapters;
    } rows[] = {
        {"--title Other", Box{110, 25, 400, 45}, {}},
        {"--label play-all=Other", Box{400, 25, 545, 45}, {}},
        {"--label play-film=Other", {}, Box{400, 25, 545, 45}},
        {"--label menu=Other", {}, Box{245, 315, 395, 335}},
        {"words.toml", Box{110, 300, 400, 320}, Box{240, 120, 400, 140}},
    };
    for (const auto& [words, inFilms, inChapters] : rows) {
        SCOPED_TRACE(words);
        const bool isFile = std::string_view(words).ends_with(".toml");
        const Bitmap films = draw(isFile ? words : fmt::format("{} {}", kTwo, words));
        if (inFilms) expectChanged(plain, films, *inFilms);
        if (inChapters)
            expectChanged(chapters, menu("shown/menus/film-1-chapters-1.jpg"), *inChapters);
    }
    draw(fmt::format("{} --chapters none", kTwo));
    EXPECT_EQ(namesIn(file("shown/menus")), Strings{"films-1.jpg"});
    EXPECT_EQ(namesIn(file("shown")), (Strings{".tkvDvdDisc", "menus", "work"}));

    // What stands at a place: behind the thumbnails, and between those of five.
    folder_.write("green.ppm", "P3 3 1 255 0 255 0 255 0 0 0 0 255\n");  // beside other colours
    const std::string film = "chap*.mp4 ", four = "--background none " + film + film + film + film;
    const struct {
        std::string words;
        int x, y;
        Rgba color;
    } places[] = {
        {"--background none " + film, 20, 180, {0, 0, 0, 255}},
        {"--background green.ppm " + film, 20, 180, {0, 110, 0, 255}},  // dimmed for the texts
        {film, 20, 180, {118, 0, 0, 255}},
        {four, 395, 50, {253, 2, 2, 255}},
        {four + film, 395, 50, {0, 0, 0, 255}},
    };
    for (const auto& [words, x, y, color] : places)
        EXPECT_TRUE(near(pixel(draw(words), x, y), color, 30)) << words;

    // Discs without menus.
    expectDisc("--no-menu -o plain ready.vob");
    const std::string told = makeDisc("--no-menu --no-image -o plain ready.vob");
    EXPECT_NE(told.find("/dev/sr0 -dvd-video /"), std::string::npos) << told;
    EXPECT_EQ(namesIn(file("plain")),
              (Strings{".tkvDvdDisc", "cover.pdf", "disc", "jacket.jpg", "work"}));
    EXPECT_EQ(makeDisc("--quiet --clean --no-menu --volume even -o plain ready.vob"), "status 0\n");
    EXPECT_FALSE(fs::exists(file("plain/work")));
    make("long.vob", kLong);
    const std::string long105 = "--no-menu --no-image long.vob long.vob long.vob --title Long ";
    expectDisc(long105 + "--language en -o said");
    expectDisc(long105 + "--label 'minutes=2 min' -o meant");
    EXPECT_EQ(readText(file("said/jacket.jpg")), readText(file("meant/jacket.jpg")));
    const std::string loudness =
        run("ffmpeg -nostdin -nostats -i " + file("plain") + kFirstFilm +
            " -af ebur128=framelog=verbose -f null /dev/null 2>&1 | grep '  I:'");
    EXPECT_NEAR(std::stod(loudness.substr(loudness.find(':') + 1)), -23, 1);

    folder_.write("blue.toml",
                  "menu = false\n[[film]]\npath = 'chapters a:b 100%.mp4'\nexcerpt = 3\n");
    expectDisc("--no-image -o blue blue.toml");
    EXPECT_TRUE(near(pixel(menu("blue/jacket.jpg"), 20, 270), {0, 0, 152, 255}, 12));

    // As a shell lists a folder.
    folder_.write("letter.txt", "Dear friends, these are the films of our holidays.\n");
    folder_.write(".DS_Store", std::string(99, '\1'));
    const std::string listed =
        makeDisc("--preview -o listed letter.txt ready.vob green.ppm .DS_Store");
    EXPECT_NE(listed.find("Passed over, since not a film: letter.txt, green.ppm, .DS_Store\n"),
              std::string::npos)
        << listed;
    EXPECT_EQ(namesIn(file("listed/menus")), Strings{"films-1.jpg"}) << listed;

    // What is refused.
    const std::string written = makeDisc("--write words.toml ready.vob");
    EXPECT_NE(written.find("words.toml is there already. Name another"), std::string::npos);
    EXPECT_TRUE(readText(file("words.toml")).starts_with("background"));
    const std::string silent = makeDisc("--preview --music it*.mp4 -o shown ready.vob");
    EXPECT_NE(silent.find("silent |.mp4 holds no sound"), std::string::npos) << silent;
}

TEST_F(Films, TellWhichLettersNoFontHas) {
    make("film.mp4", "-f lavfi -i testsrc2=s=160x90:r=5:d=60");
    writeFonts(folder_);
    const std::string core = ": install fonts-noto-core", cjk = ": install fonts-noto-cjk";
    const std::string none = ", and no package is known that has them";
    // Of the texts that need no line, some are letters of DejaVu's, some show nothing.
    const struct {
        const char* chapter;
        std::string line;
    } rows[] = {
        {"Été, Đặng, e\u0301\u0323, Ђ, Ω, שלום, مرحبا, ქართული", ""},
        {"花火", "Japanese letters of \"花火\" and 2 other texts" + cjk},
        {"花火の夜", ""},
        {"ｱｲｳ、！", ""},
        {"a\u200Db\u200C\u00AD\uFE0F\u2060\U000E0067\u3000c\td\uFFFD", ""},
        {"서울의 봄", "Korean letters of \"서울의 봄\"" + cjk},
        {"Film： Teil 2", "East Asian signs of \"Film： Teil 2\"" + cjk},
        {"Ende 🎉 ☀️",
         "emoji of \"Ende 🎉 ☀️\" and 1 other text: install fonts-noto-color-emoji"},
        {"🇩🇪 👨\u200D👩\u200D👧 1️⃣", ""},
        {"สวัสดี", "Thai letters of \"สวัสดี\"" + core},
        {"नमस्ते", "Devanagari letters of \"नमस्ते\"" + core},
        {"ꕙ ᐃᓄᒃ", "Vai letters of \"ꕙ ᐃᓄᒃ\"" + core},
        {"𝄞", "symbols of \"𝄞\"" + core},
        {"\uF8FF Musik",
         "private or unknown characters of \"\uF8FF Musik\" and 1 other text" + none},
        {"\u0378", ""},
        {"𐕰", "Vithkuqi letters of \"𐕰\"" + none},
    };
    std::string project = "[[film]]\npath = 'film.mp4'\ncaption = 'One'\nchapters = [", lines;
    int seconds = 0;
    for (const auto& [chapter, line] : rows) {
        project += fmt::format("\"0:{:02} {}\", ", seconds, chapter);
        seconds += 3;
        if (!line.empty()) lines += "No installed font has the " + line + "\n";
    }
    folder_.write("texts.toml", project + "]\n");
    const struct {
        const char* words;
        std::string lines;
    } runs[] = {
        {"--no-menu texts.toml", lines},
        {"--language ja film.mp4 film.mp4",
         "No installed font has the Japanese letters of \"すべて再生\" and 1 other text" + cjk +
             "\n"},
        {"--title 花火 --language de film.mp4",
         "No installed font has the Chinese characters of \"花火\"" + cjk + "\n"},
    };
    for (const auto& [words, said] : runs) {
        EXPECT_EQ(makeDisc(fmt::format("--preview -o out {} 2>&1 | grep '^No '", words),
                           "export FONTCONFIG_FILE=$PWD/fonts.conf; "),
                  said + "status 0\n");
    }
}

/// What a person changes between two runs, or a disk, and what is made again: the kinds of results
/// in work/, and the menu, for which an encoder is asked in vain. Damage is told of.
TEST_F(Films, AreMadeAgainWhereTheyChanged) {
    make("long.vob", kLong);
    make("tone.wav", "-f lavfi -i sine=3000:r=48000:d=40");
    make("other.wav", "-f lavfi -i sine=2000:r=48000:d=40");
    make("film.mp4", "-f lavfi -i testsrc2=s=160x90:r=25:d=2 -f lavfi -i sine -t 2");
    make("other.mp4", "-f lavfi -i testsrc=s=160x90:r=25:d=2 -f lavfi -i sine -t 2");
    folder_.write("picture.ppm", "P3 1 1 255 0 255 0\n");
    folder_.write("other.ppm", "P3 1 1 255 0 0 255\n");
    const std::string project =
        "background = 'picture.ppm'\nmusic = 'tone.wav'\nlanguage = 'en'\nvolume = 'keep'\n"
        "[[film]]\npath = 'long.vob'\ncaption = 'One'\nexcerpt = '0:01'\n"
        "[[film]]\npath = 'film.mp4'\n";
    folder_.write("disc.toml", project);
    expectDisc("--first-film --no-image -o first disc.toml");
    EXPECT_NEAR(hertzAt(file("first/disc/VIDEO_TS/VIDEO_TS.VOB"), 5), 3000, 20);
    Player player(file("first/disc"));
    EXPECT_EQ(player.place(), "film 1");
    EXPECT_EQ(player.leave(), "films-1");

    writeFonts(folder_);
    const std::string noEncoder =
        faked("ffmpeg", "case \"$*\" in *pipe:0*) exit 1;; esac; exec $real \"$@\"");
    const struct {
        const char* change;
        std::string made;
    } rows[] = {
        {":", ""},
        {"sed -i s/One/Two/ disc.toml", "menu"},
        {"sed -i s/en/fr/ disc.toml", "menu"},
        {"sed -i \"1i title = 'Other'\" disc.toml", "menu"},
        {"mv picture.ppm kept; cp other.ppm picture.ppm", "background menu"},
        {"mv tone.wav kept; cp -L other.wav tone.wav", "menu"},
        {"sed -i s/0:01/0:00.5/ disc.toml", "excerpt picture menu"},
        {"sed -i s/keep/even/ disc.toml", "excerpt excerpt film film menu"},
        {"mv film.mp4 kept; cp -L other.mp4 film.mp4", "answer counts excerpt film picture menu"},
        {"export FONTCONFIG_FILE=$PWD/fonts.conf", "menu"},
        {"for name in out/work/*.json; do rm $name; echo '{' >$name; done",
         "answer answer counts counts damaged damaged damaged damaged"},
        // The files are those of "first", too.
        {"for name in out/work/film-*; do cp $name t; truncate -s -2048 t; mv t $name; done; "
         "rm out/work/excerpt-*/*5.jpg",
         "excerpt excerpt film film damaged damaged damaged damaged"},
        {"for name in out/work/film-*; do cp $name t; printf x | dd of=t conv=notrunc seek=9 "
         "status=none; mv t $name; done; options=--verify",
         "film film damaged damaged"},
        {"cat other.ppm >picture.ppm", "background menu"},
    };
    for (const auto& [change, made] : rows) {
        SCOPED_TRACE(change);
        // Renamed and put back, nothing changes but what is to.
        const std::string said = run(fmt::format(
            "cd {}; mkdir kept; cp disc.toml kept; cp -al first out; {}; "
            "list() {{ find out/work -mindepth 1 -maxdepth 1 -printf '%f %i %T@\\n' | sort; }}; "
            "list >before; {}{} $options --no-image -o out disc.toml >said 2>&1; list >after; "
            "{{ comm -13 before after | grep -v -e composer -e programs -e results | sed "
            "'s/-.*//'; sed -n "
            "'s/^tkvDvdDisc: "
            "The menu films-1 could.*/menu/p; s/^tkvDvdDisc: .*/failed/p; "
            "s/.* is damaged, and is made again.*/damaged/p' said; }} | xargs; "
            "mv kept/* .; rm -r kept out",
            folder_.path(), change, noEncoder, quoted(discProgramPath())));
        EXPECT_EQ(said, made + "\n");
    }
}

}  // namespace tkv::test::disc
