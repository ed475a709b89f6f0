#include "disc/project/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <functional>

#include "disc/project/names.h"
#include "disc/project/nearest_name.h"
#include "disc/project/project_file.h"
#include "disc/project/settings.h"
#include "disc/run/fault.h"
#include "system/log.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

constexpr const char* kVersion = "tkvDvdDisc " TKV_VERSION;
constexpr const char* kUsage = R"(Usage: tkvDvdDisc [options] FILM... -o FOLDER

FILM is a film file, a folder of films, a VIDEO_TS folder, the VOBs of a title,
or one project file (*.toml) with films and settings. A name that begins with a
hyphen stands behind the word --.
)";
constexpr const char* kExamples = R"(Examples:
  tkvDvdDisc holiday -o holiday-dvd
  tkvDvdDisc --title "Our summer" --music waves.flac --ntsc a.mov b.mkv -o out
  tkvDvdDisc --write film.toml *.mp4
  tkvDvdDisc film.toml -o out)";

// What is wrong with the words, as it goes on behind the program's name.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <typename... Args>
[[noreturn]] void refuse(fmt::format_string<Args...> format, Args&&... args) {
    throw UsageError(fmt::format(format, std::forward<Args>(args)...));
}

// What CLI11 takes for the value of a flag without one.
constexpr const char* kNoValue = "true";

// What options change, and where their paths begin.
struct Reading {
    Options options;
    Surroundings surroundings;

    std::string pathOf(const char* option, const std::string& value) const {
        if (value.empty()) refuse("{} wants a path, not an empty word", option);
        return absolutePath(value, surroundings.folder);
    }

    // "/dev/sr0", "stdio:blank.img"
    std::string driveOf(const std::string& value) const {
        if (value == kNoValue) return {};
        constexpr std::string_view kFile = "stdio:";
        const bool isFile = value.starts_with(kFile);
        return (isFile ? std::string(kFile) : "") +
               pathOf("--burn", value.substr(isFile ? kFile.size() : 0));
    }
};

using Apply = std::function<void(Reading& reading, const std::string& value)>;

struct OptionRow {
    const char* group;
    std::string names;
    std::string argument;  // empty: a flag
    std::string explanation;
    Apply apply;

    // A value that may be left out stands behind an equals sign, so that it is never a film.
    bool isFlag() const { return argument.empty() || argument.starts_with('['); }
};

// What is none of them would be a film.
bool isProjectFile(const std::string& word) {
    return asciiLowered(word).ends_with(".toml");
}

constexpr const char* kRun = "The run";
constexpr const char* kDisc = "The disc";

void setLabel(Reading& reading, const std::string& value) {
    const std::size_t equals = value.find('=');
    const auto label = labelNamed(value.substr(0, equals));
    if (equals == std::string::npos || label == nullptr || equals + 1 == value.size())
        refuse("--label wants NAME=TEXT, not '{}'; NAME is one of {}", value, labelNames());
    reading.options.project.labels.*label = value.substr(equals + 1);
}

OptionRow rowOf(const TextSetting& setting) {
    return {kDisc, fmt::format("--{}", setting.name), std::string(setting.argument),
            std::string(setting.explanation),
            [&setting](Reading& reading, const std::string& value) {
                const bool isPath = setting.isPath && !value.empty() && value != kNone;
                const std::string text =
                    isPath ? absolutePath(value, reading.surroundings.folder) : value;
                if (!setting.set(reading.options.project, text))
                    refuse("--{} wants {}, not '{}'", setting.name, setting.wanted, value);
            }};
}

// In the order in which they are told and applied.
std::vector<OptionRow> optionRows() {
    std::vector<OptionRow> rows{
        {kRun, "-o,--output", "FOLDER", "the place of all that is made",
         [](Reading& reading, auto& value) {
             reading.options.output = reading.pathOf("--output", value);
         }},
        {kRun, "--preview", "", "only pictures of the menus, in seconds",
         [](Reading& reading, auto&) { reading.options.isPreview = true; }},
        {kRun, "--write", "FILE.toml", "only a project file of these films, for you to edit",
         [](Reading& reading, auto& value) {
             if (!isProjectFile(value))
                 refuse("--write wants the name of a project file (*.toml), not '{}'", value);
             reading.options.projectFile = reading.pathOf("--write", value);
         }},
        {kRun, "--no-image", "", "the disc as a folder only, without disc.iso",
         [](Reading& reading, auto&) { reading.options.makesImage = false; }},
        {kRun, "--burn", "[=DRIVE]", "writes the disc, and compares what is on it then",
         [](Reading& reading, auto& value) {
             reading.options.burns = true;
             reading.options.drive = reading.driveOf(value);
         }},
        {kRun, "--erase", "", "writes over what is on a disc that can be erased",
         [](Reading& reading, auto&) { reading.options.erases = true; }},
        {kRun, "--clean", "", "keeps no intermediate results for a next run",
         [](Reading& reading, auto&) { reading.options.cleans = true; }},
        {kRun, "--keep-going", "", "leaves out films that turn out to be faulty",
         [](Reading& reading, auto&) { reading.options.keepsGoing = true; }},
        {kRun, "--verify", "", "reads kept results whole, and makes damaged ones anew",
         [](Reading& reading, auto&) { reading.options.verifies = true; }},
        {kRun, "--quiet", "", "tells nothing but errors",
         [](Reading& reading, auto&) { reading.options.isQuiet = true; }},
        {kDisc, "--pal", "", "a PAL disc; by default what most films suggest",
         [](Reading& reading, auto&) { reading.options.project.standard = Standard::pal; }},
        {kDisc, "--ntsc", "", "an NTSC disc",
         [](Reading& reading, auto&) { reading.options.project.standard = Standard::ntsc; }},
        {kDisc, "--first-film", "", "plays the first film before the menu comes",
         [](Reading& reading, auto&) { reading.options.project.playsFirstFilm = true; }},
        {kDisc, "--join", "", "one film of the pieces of a recording",
         [](Reading& reading, auto&) { reading.options.project.joinsClips = true; }},
        {kDisc, "--no-menu", "", "the films just play",
         [](Reading& reading, auto&) { reading.options.project.hasMenu = false; }},
    };
    for (const TextSetting& setting : textSettings()) {
        if (!setting.argument.empty()) rows.push_back(rowOf(setting));
    }
    rows.push_back({kDisc, "--label", "NAME=TEXT",
                    "words a label of the menus; may be repeated. NAME:\n"
                    "play-all, play-film, previous, next, menu,\n"
                    "chapters, chapter, title or minutes",
                    setLabel});
    return rows;
}

class Usage : public CLI::Formatter {
    std::string make_usage(const CLI::App*, std::string) const override { return kUsage; }

    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string text = CLI::Formatter::make_option_opts(option);
        return text.starts_with(" [=") ? text.substr(1) : text;
    }
};

// The words of a line, sorted by CLI11. It is given no place for the films: it would take a
// name in brackets for a list of names.
class Line {
  public:
    Line() {
        app_.formatter(std::make_shared<Usage>());
        app_.get_formatter()->column_width(24);
        app_.allow_extras();
        app_.footer(kExamples);
        for (const OptionRow& row : optionRows())
            add(row);
        app_.set_help_flag("-h,--help", "tells this")->group(kRun);
        app_.set_version_flag("--version", kVersion, "tells the version")->group(kRun);
    }

    // False when the words ask for a text, which has been written.
    bool parse(const std::vector<std::string>& given) {
        refuseGlued(given);
        std::vector<std::string> words = withEmptyValues(given);
        std::reverse(words.begin(), words.end());
        try {
            app_.parse(words);
        } catch (const CLI::CallForHelp&) {
            const std::string text = CLI::detail::find_and_replace(app_.help(), "\n\n\n", "\n\n");
            fmt::print("{}", text);
            return false;
        } catch (const CLI::CallForVersion& version) {
            fmt::print("{}\n", version.what());
            return false;
        }
        return true;
    }

    void apply(Reading& reading) const {
        for (const Given& given : given_) {
            for (const std::string& value : given.option->results()) {
                if (given.takesNone && value != kNoValue)
                    refuse("{} takes no value", given.option->get_name());
                given.apply(reading, value);
            }
        }
    }

    bool has(const char* name) const { return app_.count(name) > 0; }

    std::vector<std::string> films() const {
        std::vector<std::string> films;
        bool areNames = false;
        for (const std::string& word : app_.remaining()) {
            if (word == "--" && !areNames) {
                areNames = true;
                continue;
            }
            if (word.starts_with('-') && !areNames) refuseOption(word);
            if (word.empty()) refuse("a film's name is empty; give the name of a file");
            films.push_back(word);
        }
        return films;
    }

    // CLI11 takes "-out" for "-o ut".
    void refuseGlued(const std::vector<std::string>& words) const {
        for (const std::string& word : words) {
            if (word == "--") return;
            if (word.size() < 3 || word[0] != '-' || word[1] == '-') continue;
            const std::vector<std::string> names = optionNames();
            const auto meant = std::ranges::find_if(
                names, [&](const std::string& name) { return name.starts_with("-" + word); });
            if (meant != names.end())
                refuse("there is no option '{}': did you mean {}? see --help", word, *meant);
        }
    }

  private:
    struct Given {
        const CLI::Option* option;
        Apply apply;
        bool takesNone;
    };
    CLI::App app_{"Makes a DVD with animated menus of your films.\n", "tkvDvdDisc"};
    std::vector<Given> given_;

    std::vector<std::string> optionNames() const {
        std::vector<std::string> names;
        for (const CLI::Option* option : app_.get_options()) {
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
        }
        return names;
    }

    // CLI11 takes the word behind "--title=" for its value.
    std::vector<std::string> withEmptyValues(const std::vector<std::string>& words) const {
        std::vector<std::string> result;
        for (auto word = words.begin(); word != words.end(); ++word) {
            if (*word == "--") {
                result.insert(result.end(), word, words.end());
                break;
            }
            const bool isEmpty = word->starts_with("--") && word->find('=') == word->size() - 1;
            result.push_back(isEmpty ? word->substr(0, word->size() - 1) : *word);
            if (!isEmpty) continue;
            const CLI::Option* option = app_.get_option_no_throw(result.back());
            if (option != nullptr && option->get_expected_max() == 0)
                refuse("there is nothing behind the '=' of {}; leave it out", *word);
            result.emplace_back();
        }
        return result;
    }

    [[noreturn]] void refuseOption(const std::string& word) const {
        const std::string name = nearestName(word.substr(0, word.find('=')), optionNames());
        if (!name.empty())
            refuse("there is no option '{}': did you mean {}? see --help", word, name);
        refuse("there is no option '{}': see --help; a film of that name stands behind --", word);
    }

    void add(const OptionRow& row) {
        CLI::Option* option = row.isFlag() ? app_.add_flag(row.names) : app_.add_option(row.names);
        option->group(row.group)->description(row.explanation)->option_text(row.argument);
        option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        given_.push_back({option, row.apply, row.argument.empty()});
    }
};

// The VOBs of a title, given one by one as a shell's wildcard does, are one film, that of the
// first; what else is in their folder is none.
void addFilms(const std::vector<std::string>& words, const std::string& here, Project& project) {
    std::string continuation;  // the VOB that would go on with the last one
    for (const std::string& word : words) {
        const std::string path = absolutePath(word, here);
        const std::string folder = parentFolder(path);
        const auto part = dvdPartOf(path);
        if (part && (!part->isVob || part->number == 0)) continue;
        const bool goesOn = joinPath(folder, asciiLowered(lastComponent(path))) == continuation;
        continuation.clear();
        if (part && (goesOn || part->number == 1))
            continuation = fmt::format("{}/vts_{:02}_{}.vob", folder == "/" ? "" : folder,
                                       part->titleSet, part->number + 1);
        if (goesOn) continue;
        FilmRequest& film = project.films.emplace_back();
        film.path = path;
        film.isListed = true;
    }
}

Options optionsOf(const Line& line, const Surroundings& surroundings) {
    if (line.has("--pal") && line.has("--ntsc"))
        refuse("--pal and --ntsc exclude each other; give one of them");
    for (const char* other : {"--no-image", "--preview", "--write"}) {
        if (line.has("--burn") && line.has(other))
            refuse("--burn and {} exclude each other; give one of them", other);
    }
    if (line.has("--erase") && !line.has("--burn"))
        refuse("--erase is about the disc to be written; give --burn, too");
    std::vector<std::string> words = line.films();
    const auto firstFile = std::stable_partition(
        words.begin(), words.end(), [](const std::string& word) { return !isProjectFile(word); });
    const std::vector<std::string> files(firstFile, words.end());
    words.erase(firstFile, words.end());
    // cppcheck-suppress invalidContainer  ; a copy, not a pair of iterators
    if (files.size() > 1)
        refuse("'{}' and '{}' are two project files; give one of them", files[0], files[1]);

    Reading reading{{}, surroundings};
    Options& options = reading.options;
    options.project.labels = labelsOf(surroundings.language);
    options.project.plainFolders = surroundings.plainFolders;
    options.paper = surroundings.paper;
    if (!files.empty()) readProjectFile(files[0], surroundings.folder, options.project);
    line.apply(reading);
    addFilms(words, surroundings.folder, options.project);
    const std::size_t count = options.project.films.size();
    if (count == 0) refuse("there is no film; name the files of some, or see --help");
    if (count > kMostFilms)
        throw DiscError(fmt::format("there are {} films, and a disc holds {}; make several discs",
                                    count, kMostFilms));
    if (options.output.empty() && options.projectFile.empty())
        refuse("there is no place for the disc; name a folder with -o FOLDER");
    return options;
}

}  // namespace

std::optional<Options> readCommandLine(const std::vector<std::string>& words,
                                       const Surroundings& surroundings, int& status) {
    status = 0;
    std::string error;
    try {
        Line line;
        if (!line.parse(words)) return {};
        return optionsOf(line, surroundings);
    } catch (const UsageError& wrong) {
        error = wrong.what();
    } catch (const CLI::ArgumentMismatch&) {
        // Only the last word can lack its value.
        error = fmt::format("'{}' wants a value behind it; see --help", words.back());
    } catch (const CLI::ParseError& wrong) {
        error = fmt::format("{}; see --help", wrong.what());
    }
    writeStandardError(fmt::format("tkvDvdDisc: {}\n", error));
    status = 2;
    return {};
}

}  // namespace tkv::disc
