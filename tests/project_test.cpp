#include <fmt/ranges.h>

#include <filesystem>

#include "disc/film/suggestion.h"
#include "disc/project/command_line.h"
#include "disc/project/names.h"
#include "disc/project/project_file.h"
#include "disc/project/project_text.h"
#include "disc/run/environment.h"
#include "disc/run/fault.h"
#include "support.h"

namespace tkv::test::project {

using namespace tkv::disc;

// The error that an action throws; empty without one.
std::string discErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const DiscError& error) {
        return error.what();
    }
    return {};
}

// The error of a project file that holds `text`, behind the file's name.
std::string fileError(const std::string& text) {
    const TempFolder folder;
    const std::string file = folder.write("a.toml", text);
    Project project;
    return discErrorOf([&] { readProjectFile(file, "/", project); }).substr(file.size());
}

// Where something stands in a file is no part of what it says.
Project placeless(Project project) {
    for (FilmRequest& film : project.films)
        film.choices.place.clear();
    return project;
}

Options optionsOf(const Strings& words) {
    int status = 0;
    const auto options = readCommandLine(words, {fs::current_path(), userLanguage()}, status);
    EXPECT_TRUE(options) << fmt::format("{}", fmt::join(words, " "));
    return options.value_or(Options{});
}

Strings pathsOf(const Strings& words) {
    Strings paths;
    for (const FilmRequest& film : optionsOf(words).project.films)
        paths.push_back(film.path);
    return paths;
}

TEST(Names, AreReadable) {
    for (const auto& [path, name] : {std::pair{"/a/beach_2019-07-01.mp4", "Beach 2019-07-01"},
                                     {"Le.petit.village.mkv", "Le petit village"},
                                     {"Dr. Who 1.5", "Dr. Who 1.5"},
                                     {"Dr. Who 1.5.m2ts", "Dr. Who 1.5"},
                                     {"Le.petit village_2.mkv", "Le petit village 2"},
                                     {"v1.5.cut.webm", "V1.5 cut"},
                                     {"/films/My_Disc/VIDEO_TS/", "My Disc"},
                                     {"/films/v2.mp4/video_ts/vts_01_1.vob", "V2 mp4"},
                                     {"/films/Trip/VTS_01_1.VOB", "Trip"},
                                     {"/VIDEO_TS", "VIDEO TS"},
                                     {"élan\n \xFF.avi", "Élan \uFFFD"},
                                     {"/a/___.mp4", "___"},
                                     {"x|", "X|"}})
        EXPECT_EQ(readableName(path), name) << path;
}

TEST(Names, BecomeVolumeLabels) {
    for (const auto& [text, label] :
         {std::pair{"Un été à l'île: Œuvre", "UN_ETE_A_L_ILE_OEUVRE"},
          {"Straße nach Αθήνα", "STRASSE_NACH_ATHENA"},
          {"Отпуск 2019!", "OTPUSK_2019"},
          {"…", "DVD"},
          {"1234567890123456789012345678901 x", "1234567890123456789012345678901"}})
        EXPECT_EQ(volumeLabel(text), label);
}

TEST(Times, AreReadAndWritten) {
    for (const auto& [text, seconds, written] : {std::tuple{"1:02:03.5", 3723.5, "1:02:03.5"},
                                                 {"62:03", 3723.0, "1:02:03"},
                                                 {"90", 90.0, "1:30"},
                                                 {"5m", 300.0, "5:00"},
                                                 {"1h30m", 5400.0, "1:30:00"},
                                                 {"90s", 90.0, "1:30"},
                                                 {"0:05.05", 5.05, "0:05.05"},
                                                 {"59.999", 59.999, "1:00"}}) {
        EXPECT_EQ(secondsOf(text), seconds) << text;
        EXPECT_EQ(timeText(seconds), written);
    }
    for (const char* text : {"", "1:75", "1:60:00", "-5", "1e3", "nan", "5m3", "m", ":5", "5 m",
                             "999999", "100:00:00"})
        EXPECT_EQ(secondsOf(text), std::nullopt) << text;
}

TEST(Paper, FollowsTheUser) {
    const struct {
        const char *size, *all, *paper, *lang;
        bool isLetter;
    } rows[] = {
        {"", "", "", "", false},
        {"", "", "", "xx_US.UTF-8", true},
        {"", "", "xx_DE", "xx_US", false},
        {"", "xx_CA", "xx_DE", "", true},
        {"", "C.UTF-8", "", "xx_US", false},
        {"a4", "", "", "xx_US", false},
        {"Letter", "", "", "xx_DE", true},
    };
    for (const auto& [size, all, paper, lang, isLetter] : rows) {
        const ScopedVariable variables[] = {
            {"PAPERSIZE", size}, {"LC_ALL", all}, {"LC_PAPER", paper}, {"LANG", lang}};
        if (fs::exists("/etc/papersize") && *size == '\0') continue;  // It counts more.
        EXPECT_EQ(userPaper() == Paper::letter, isLetter) << size << all << paper << lang;
    }
}

TEST(Labels, FollowTheUser) {
    const ScopedVariable all("LC_ALL", ""), messages("LC_MESSAGES", "fr_CA.UTF-8@x"),
        lang("LANG", "de_DE");
    EXPECT_EQ(labelsOf(userLanguage()).next, "Suivant");
    const ScopedVariable counts("LC_ALL", "es_ES");
    EXPECT_EQ(userLanguage(), "es_ES");
    for (const char* language : {"C.UTF-8", "POSIX", "", "sv_SE", "french"})
        EXPECT_EQ(labelsOf(language), labelsOf("en")) << language;
    EXPECT_EQ(labelsOf("PT.UTF-8").next, "Seguinte");
    Labels labels = labelsOf("fr");
    labels.menu = "Accueil";
    labels = inLanguage(labels, "de");
    EXPECT_EQ(labels.language + labels.menu + labels.next, "deAccueilWeiter");
    EXPECT_EQ(withNumber("{x} {} {}", 7), "{x} 7 {}");
}

TEST(CommandLine, SetsEverything) {
    const ScopedVariable language("LC_ALL", "C");
    const Options options = optionsOf({"[a,b]",
                                       "-o",
                                       "out//",
                                       "--title=",
                                       "--background",
                                       "../b.jpg",
                                       "--music=/m/./n.wav",
                                       "--ntsc",
                                       "--size",
                                       "dvd5",
                                       "--size",
                                       "dvd9",
                                       "--chapters=every=1:30",
                                       "--volume",
                                       "even",
                                       "--language",
                                       "nl",
                                       "--label",
                                       "menu=a=b",
                                       "--label=next={}",
                                       "--first-film",
                                       "--no-menu",
                                       "--no-image",
                                       "--preview",
                                       "--write",
                                       "x.toml",
                                       "--clean",
                                       "--verify",
                                       "--quiet",
                                       "c: d&%'\".mp4",
                                       "a\xFF|",
                                       "--",
                                       "-o.mp4",
                                       "--",
                                       "--pal"});
    const fs::path here = fs::current_path();
    const Project& project = options.project;
    EXPECT_EQ(options.output, here / "out");
    EXPECT_EQ(options.projectFile, here / "x.toml");
    EXPECT_TRUE(options.isPreview && !options.makesImage && options.cleans && options.verifies &&
                options.isQuiet);
    EXPECT_EQ(project.title, "");
    EXPECT_EQ(project.background, here.parent_path() / "b.jpg");
    EXPECT_EQ(project.music, "/m/n.wav");
    EXPECT_TRUE(project.standard == Standard::ntsc && project.size == DiscSize::dvd9);
    EXPECT_EQ(project.chapters, (ChapterRule{ChapterRule::Source::every, 90}));
    EXPECT_TRUE(project.evenVolume && project.playsFirstFilm && !project.hasMenu);
    Labels labels = labelsOf("nl");
    labels.menu = "a=b";
    labels.next = "{}";
    EXPECT_EQ(project.labels, labels);
    Strings names;
    for (const FilmRequest& film : project.films)
        names.push_back(fs::path(film.path).lexically_relative(here));
    EXPECT_EQ(names, (Strings{"[a,b]", "c: d&%'\".mp4", "a\xFF|", "-o.mp4", "--", "--pal"}));
}

TEST(CommandLine, TakesNoFilmForADrive) {
    const std::string here = fs::current_path();
    for (const auto& [word, drive] : {std::pair{"--burn", std::string()},
                                      {"--burn=/dev/sr1", "/dev/sr1"},
                                      {"--burn=sr1", here + "/sr1"},
                                      {"--burn=stdio:x.img", "stdio:" + here + "/x.img"}}) {
        const Options options = optionsOf({word, "a.mp4", "-o", "out"});
        EXPECT_TRUE(options.burns && options.project.films.size() == 1) << word;
        EXPECT_EQ(options.drive, drive);
    }
}

TEST(CommandLine, TakesTheVobsOfATitleForOneFilm) {
    EXPECT_EQ(pathsOf({"-o", "x", "/d/VIDEO_TS.IFO", "/d/VIDEO_TS.VOB", "/d/VTS_01_0.BUP",
                       "/d/VTS_01_0.VOB", "/d/vts_01_1.vob", "/d/VTS_01_2.VOB", "/d/VTS_01_3.VOB",
                       "/e/VTS_01_4.VOB", "/d/VTS_02_1.VOB", "/a.mp4", "/d/VTS_02_2.VOB",
                       "/d/VTS_02_3.VOB"}),
              (Strings{"/d/vts_01_1.vob", "/e/VTS_01_4.VOB", "/d/VTS_02_1.VOB", "/a.mp4",
                       "/d/VTS_02_2.VOB", "/d/VTS_02_3.VOB"}));
}

TEST(CommandLine, TellsWhatIsWrong) {
    for (const auto& [words, part] :
         {std::pair{Strings{}, "no film"},
          {{"-o", "out"}, "no film"},
          {{"a.mp4"}, "-o FOLDER"},
          {{"a.mp4", "-o"}, "'-o' wants a value"},
          {{"a.mp4", "-o", ""}, "--output wants a path"},
          {{"", "-o", "out"}, "name is empty"},
          {{"a.mp4", "-o", "out", "-y.mp4"}, "no option '-y.mp4'"},
          {{"a.mp4", "-o", "out", "--pall"}, "no option '--pall': did you mean --pal?"},
          {{"a.mp4", "-o", "out", "--tilte=x"}, "did you mean --title?"},
          {{"a.mp4", "-o", "out", "--zzz"}, "no option '--zzz': see --help"},
          {{"a.mp4", "-out", "x"}, "no option '-out': did you mean --output?"},
          {{"a.mp4", "--write", "a.txt"}, "a project file (*.toml), not 'a.txt'"},
          {{"a.mp4", "-o", "out", "--pal", "--ntsc"}, "exclude each other"},
          {{"a.mp4", "-o", "out", "--burn", "--preview"},
           "--burn and --preview exclude each other"},
          {{"a.mp4", "--write", "x.toml", "--burn=/dev/sr0"}, "--burn and --write exclude"},
          {{"a.mp4", "-o", "out", "--burn", "--no-image"}, "--burn and --no-image exclude"},
          {{"a.mp4", "-o", "out", "--erase"}, "give --burn, too"},
          {{"a.mp4", "-o", "out", "--burn=stdio:"}, "--burn wants a path"},
          {{"a.mp4", "-o", "out", "--burn="}, "nothing behind the '=' of --burn="},
          {{"--burn", "-o", "out"}, "no film"},
          {{"a.mp4", "-o", "out", "--quiet=no"}, "--quiet takes no value"},
          {{"a.mp4", "-o", "out", "--size", "cd"}, "--size wants dvd5 or dvd9, not 'cd'"},
          {{"a.mp4", "-o", "out", "--chapters", "every=0"}, "--chapters wants marks"},
          {{"a.mp4", "-o", "out", "--language", "tlh"}, "--language wants de, en"},
          {{"a.mp4", "-o", "out", "--music="}, "--music wants the path"},
          {{"a.mp4", "-o", "out", "--label", "home=x"}, "NAME is one of play-all"},
          {{"a.mp4", "-o", "out", "--label", "menu="}, "--label wants NAME=TEXT"},
          {{"a.TOML", "b.toml", "-o", "out"}, "two project files"}}) {
        int status = 0;
        const std::string error = errorsOf([&, &line = words] {
            EXPECT_FALSE(readCommandLine(line, {"/", ""}, status));
        });
        EXPECT_NE(error.find(part), std::string::npos) << error;
        EXPECT_TRUE(error.starts_with("tkvDvdDisc: ") && error.find('\n') == error.size() - 1);
        EXPECT_EQ(status, 2);
    }
    Strings films(100, "a.mp4");
    EXPECT_NE(discErrorOf([&] { optionsOf(films); }).find("100 films"), std::string::npos);
    films.back() = "-oout";
    EXPECT_EQ(pathsOf(films).size(), 99U);
}

TEST(CommandLine, CountsMoreThanTheFile) {
    const ScopedVariable language("LC_ALL", "es_ES");
    const TempFolder folder;
    const std::string file = folder.write(
        "my.toml",
        "language = 'fr'\nformat = 'pal'\nsize = 'dvd9'\nlabels = {next = 'Après', menu = 'M'}\n"
        "film = [{path = 'b/../a.mp4', excerpt = 83, chapters = ['0:00', '5m  Les 5 m ']},\n"
        "{path = '~/c.mp4', excerpt = [5, '1:23.5']}]\n");
    const ScopedVariable home("HOME", "/homes/ada");
    const Project project =
        optionsOf({"z.mp4", file, "-o", "x", "--ntsc", "--language=de", "--label", "menu=N"})
            .project;
    EXPECT_TRUE(project.standard == Standard::ntsc && project.size == DiscSize::dvd9);
    const Labels& labels = project.labels;
    EXPECT_EQ(labels.language + labels.next + labels.menu + labels.previous, "deAprèsNZurück");
    const std::vector<FilmRequest> films{
        {folder.file("a.mp4"), {}, {83}, std::vector<Chapter>{{0, ""}, {300, "Les 5 m"}}},
        {"/homes/ada/c.mp4", {}, {5, 83.5}, {}},
        {fs::current_path() / "z.mp4", {}, {}, {}, true}};
    EXPECT_EQ(placeless(project).films, films);
}

TEST(ProjectFile, TellsTheLineOfAnError) {
    for (const auto& [text, error] :
         {std::pair{"\ntittle = 'x'", ":2: nothing here is called 'tittle': did you mean title?"},
          {"size = 9", ":1: size wants dvd5 or dvd9"},
          {"music = ''", ":1: music wants the path"},
          {"music = \"a\\u0000b\"", ":1: music wants the path"},
          {"menu = 'yes'", ":1: menu wants true or false"},
          {"labels = 'x'", ":1: labels wants a [labels] line"},
          {"[labels]\nmenu = 1", ":2: menu wants a text"},
          {"[labels]\nmenu = ''", ":2: menu wants a text"},
          {"[labels]\nhome = 'x'", ":2: nothing here is called 'home'"},
          {"[film]\npath = 'a'", ":1: film wants [[film]]"},
          {"film = ['a']", ":1: film wants [[film]]"},
          {"\n[[film]]\ncaption = 'x'", ":2: this film has no path"},
          {"[[film]]\npath = 'x'\nmusik = 'x'", ":3: nothing here is called 'musik'"},
          {"[[film]]\npath = 'x'\nmusic = 'x'", ":3: music wants a film of slides"},
          {"[[film]]\npath = 'x'\nslides = 'x'", ":3: slides wants no path or parts"},
          {"[[film]]\nslides = []", ":2: slides wants a name, or a list"},
          {"[[film]]\nslides = ['a',\n1]", ":3: slides wants a name, or a list"},
          {"[[film]]\nslides = 'x'\nseconds = 1.4", ":3: seconds wants a number from 1.5 to 600"},
          {"[[film]]\nslides = 'x'\nseconds = 601", ":3: seconds wants a number from 1.5 to 600"},
          {"[[film]]\nslides = 'x'\nmotion = 'fast'", ":3: motion wants none or slow"},
          {"[[film]]\nslides = 'x'\nmusic = ''", ":3: music wants a name, or a list"},
          {"[[film]]\nslides = 'x'\nfit = 'music'", ":3: fit wants music to be there"},
          {"[[film]]\nslides = 'x'\nmusic = 'y'\nfit = true", ":4: fit wants music"},
          {"[[film]]\nslides = 'x'\ntitles = 'all'", ":3: titles wants true or false"},
          {"[[film]]\nslides = 'x'\ntitle = 1", ":3: title wants a DVD"},
          {"[[film]]\npath = 'x'\ntitle = 4294967297", ":3: title wants the number of"},
          {"[[film]]\npath = 'x'\nexcerpt = -1", ":3: excerpt wants a time"},
          {"[[film]]\npath = 'x'\nexcerpt = nan", ":3: excerpt wants a time"},
          {"[[film]]\npath = 'x'\nexcerpt = [1,\n'x']", ":4: excerpt wants a time"},
          {"[[film]]\npath = 'x'\nchapters = [\n'0:00',\n'Home']", ":5: chapters wants a list"},
          {"[[film]]\npath = 'x'\nstart = 'x'", ":3: start wants a time"},
          {"[[film]]\npath = 'x'\nend = 3\nstart = 3", ":3: end wants a time behind the start"},
          {"[[film]]\npath = 'x'\naudio = [1,\n'xx1']", ":4: audio wants a list"},
          {"[[film]]\npath = 'x'\naudio = [0]", ":3: audio wants a list"},
          {"[[film]]\npath = 'x'\naudio-delay = 11", ":3: audio-delay wants seconds"},
          {"[[film]]\npath = 'x'\ncrop = [1, 2, 3]", ":3: crop wants \"auto\", or the pixels"},
          {"[[film]]\npath = 'x'\ncrop = [1, 2, 3, -4]", ":3: crop wants"},
          {"[[film]]\npath = 'x'\naspect = '16:0'", ":3: aspect wants width to height"},
          {"[[film]]\npath = 'x'\ndeinterlace = 'yes'", ":3: deinterlace wants true or false"},
          {"[[film]]\nparts = ['x']", ":2: parts wants a list of two films or more"},
          {"[[film]]\npath = 'x'\nparts = ['x', 'y']", ":3: a film has a path or parts"},
          {"title = 'a'\ntitle = 'b'", ":2: "},
          {"title = 'a", ":1: "},
          {"caption = '''.b.c.d.e.f.g.h.i'''\n\n[a.b.c . 'd'.e.f.g.h.\"i\"]", ":3: a name has too"},
          {"a = {b.'.=',c.d.e.f.g.h.i.j.k.l = 1}", ":1: a name has too many parts"},
          {"title = '\xFF'", ":1: "},
          {"title = \"\"\"\\\"......... \n'\"\"\" #.........\nx = 1.2", ":3: nothing here"}})
        EXPECT_TRUE(fileError(text).starts_with(error)) << fileError(text);
    std::string deep = "a";
    for (int i = 0; i < 100'000; ++i)
        deep += ".a";
    for (const char* format :
         {"{} = 1", "[{}]", "a = [1, {{{} = 1}}]", "a = \"\"\"\"\"\"\"\"\"{} = 1"})
        EXPECT_TRUE(fileError(fmt::format(fmt::runtime(format), deep)).starts_with(":1: a name"));
    Project project;
    EXPECT_EQ(discErrorOf([&] { readProjectFile("no/x.toml", "/", project); }).find("no/x.toml"),
              0U);
}

Project readBack(const std::string& text, const TempFolder& folder) {
    Project project;
    readProjectFile("back.toml", fs::path(folder.write("back.toml", text)).parent_path(), project);
    return placeless(project);
}

TEST(ProjectFile, ReadsBackAsItWasWritten) {
    const TempFolder folder;
    const std::string odd = "a: 'b' \"c\" \\u\t&%|\x01\x7F\n# é 本\u2028[x]";
    Labels labels = labelsOf("ja");
    labels.menu = odd;
    const Project full{
        {{folder.file("~x"), odd, {83.25}, std::vector<Chapter>{{0, ""}, {4000.5, "5m " + odd}}},
         {folder.file(odd), "", {0, 7.5, 1}, std::vector<Chapter>{}},
         {folder.path() + "x/y", "c", {}, {}, false, std::vector<SubtitleRequest>{}, "none"},
         {folder.path(),
          "d",
          {},
          {},
          false,
          std::vector<SubtitleRequest>{{folder.file(odd), "fr", true}, {"/s.srt", {}, {}}},
          "fr",
          99,
          {},
          {folder.path(), folder.file(odd)},
          {1.5, 2.25, std::vector<std::string>{"de", "2"}, -0.2, false, {2, 4, 6, 8}, 2.35, false}},
         {folder.path(),
          "e",
          {},
          {},
          false,
          {},
          {},
          0,
          SlideRequest{{folder.file(odd), "/b"}, 6, false, {}}},
         {"/c",
          "f",
          {},
          {},
          false,
          {},
          {},
          0,
          SlideRequest{{"/c/d"}, 2.5, true, {"/m", folder.file(odd)}, true, true}},
         {folder.path(),
          "g",
          {},
          {},
          false,
          {},
          {},
          0,
          {},
          {},
          {.cutsBars = true, .deinterlace = true}}},
        odd,
        folder.file("b/c.jpg"),
        "/m/" + odd,
        Standard::ntsc,
        DiscSize::dvd9,
        {ChapterRule::Source::every, 90},
        "ja",
        false,
        true,
        false,
        true,
        false,
        false,
        labels,
        {},
        true};
    const std::string text = projectFileText(full, folder.path());
    EXPECT_EQ(readBack(text, folder), full) << text;
    EXPECT_NE(text.find("path = \"./~x\"\n"), std::string::npos) << text;

    Project unwritable;
    unwritable.films = {{"/a\xFF.mp4", {}, {}, {}}};
    EXPECT_TRUE(discErrorOf([&] { projectFileText(unwritable, "/"); }).starts_with("'a\uFFFD"));
}

TEST(ProjectFile, ShowsWhatTheFilmsSay) {
    const TempFolder folder;
    Project project;
    project.films = {{folder.file("my_a.mp4"), {}, {}, {}}, {folder.file("b.mkv"), {}, {}, {}}};
    project.labels = labelsOf("fr");
    std::vector<Film> films(2);
    films[1].title = "Un été";
    films[1].marks = {{0, "Départ"}, {12.345, ""}};
    Project unmarked = project;
    unmarked.chapters.source = ChapterRule::Source::none;
    addSuggestions(unmarked, films);
    EXPECT_FALSE(unmarked.films[1].chapters);
    Project expected = project;
    expected.films[0].caption = "My a";
    expected.films[1].caption = "Un été";
    expected.films[1].chapters = {{0, "Départ"}, {12.35, ""}};
    addSuggestions(project, films);
    std::string text = projectFileText(project, folder.path());
    Project read;
    read.labels = labelsOf("de");
    readProjectFile(folder.write("x.toml", text), "/", read);
    EXPECT_EQ(placeless(read), expected);
    // Whoever takes the marks of comments away gets settings.
    for (std::size_t at = 0; (at = text.find("\n#chap")) != std::string::npos;)
        text.erase(at + 1, 1);
    EXPECT_EQ(readBack(text, folder).films[0].chapters,
              (std::vector<Chapter>{{0, "Departure"}, {754, ""}}));
}

}  // namespace tkv::test::project
