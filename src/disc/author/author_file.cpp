#include "disc/author/author_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>
#include <utility>

// Navigation. Each film is a title set of its own, so that each has its own aspect ratio and sound;
// the pages of the films stand in the VMGM domain, chapter menus in the menu domain of their title
// set. Titles can reach no other set, so what follows a film always goes through the VMGM domain.
// The first PGC of each domain, the one that the remote's keys and the ends of films lead to, has
// no video: it only dispatches. Page `i` is menu i + 2.

namespace tkv::disc {

namespace {

// The general-purpose registers that hold where the viewer is. Buttons are kept as the player
// counts them, times 1024; with a button of 0 nothing would be highlighted.
constexpr std::string_view kPage = "g0";           // of the films, from 1
constexpr std::string_view kButton = "g1";         // there
constexpr std::string_view kNextFilm = "g2";       // to be played by its page; else 0
constexpr std::string_view kPlayingAll = "g3";     // 1 while the films follow each other
constexpr std::string_view kChapterPage = "g4";    // from 1; 0: the film was started elsewhere
constexpr std::string_view kChapterButton = "g5";  // there
constexpr std::string_view kSubtitled = "g6";      // 1: a film has switched subtitles on
constexpr std::string_view kChosen =
    "g7";  // the film whose subtitles the viewer has chosen, from 1

// What a player is told to show: no subtitles, or a track from this number on.
constexpr std::size_t kNoSubtitles = 62, kFirstSubtitles = 64;

template <typename... Args>
void add(std::string& commands, fmt::format_string<Args...> format, Args&&... args) {
    commands += fmt::format(format, std::forward<Args>(args)...);
    commands += ' ';
}

std::string braced(const std::string& commands) {
    return "{ " + commands + "}";
}

std::size_t menuNumber(std::size_t page) {
    return page + 2;
}

std::size_t buttonNumber(std::size_t button) {
    return (button + 1) * 1024;
}

void addText(pugi::xml_node& parent, const char* name, const std::string& commands) {
    parent.append_child(name).text().set(braced(commands).c_str());
}

// A PGC without video.
pugi::xml_node addDispatcher(pugi::xml_node& menus, const char* entry,
                             const std::string& commands) {
    pugi::xml_node pgc = menus.append_child("pgc");
    if (entry != nullptr) pgc.append_attribute("entry") = entry;
    addText(pgc, "pre", commands);
    return pgc;
}

void setVideo(pugi::xml_node& parent, Standard standard, bool isWide, const char* widescreen) {
    pugi::xml_node video = parent.append_child("video");
    video.append_attribute("format") = factsOf(standard).name.data();
    video.append_attribute("aspect") = isWide ? "16:9" : "4:3";
    if (isWide) video.append_attribute("widescreen") = widescreen;
}

// As the disc's tables tell whom subtitles are for.
const char* contentOf(SubtitleKind kind) {
    switch (kind) {
        case SubtitleKind::hearing:
            return "normal_cc";
        case SubtitleKind::commentary:
            return "director";
        case SubtitleKind::forced:
            return "forced";
        default:
            return "normal";
    }
}

class AuthorFile {
  public:
    AuthorFile(const DiscPlan& plan, const DiscPieces& pieces) : plan_(plan), pieces_(pieces) {}

    std::string text(const std::string& destination) {
        pugi::xml_document document;
        pugi::xml_node disc = document.append_child("dvdauthor");
        disc.append_attribute("dest") = destination.c_str();
        addDiscMenus(disc);
        for (const DiscFilm& film : plan_.films)
            addTitleSet(disc, film);
        std::ostringstream text;
        document.save(text, "  ");
        return text.str();
    }

  private:
    bool hasMenus() const { return !plan_.pages.empty(); }

    void addDiscMenus(pugi::xml_node& disc) {
        pugi::xml_node manager = disc.append_child("vmgm");
        std::string start;
        add(start, "{} = 1; {} = {}; {} = 0; {} = {}; {} = 0; {} = {};", kPage, kButton,
            buttonNumber(0), kNextFilm, kPlayingAll, hasMenus() ? 0 : 1, kChapterPage,
            kChapterButton, buttonNumber(0));
        const auto* played = std::get_if<PlayFilm>(&plan_.start);
        add(start, "{}", played != nullptr ? toTitle(played->film) : "jump vmgm menu 1;");
        addText(manager, "fpc", start);

        pugi::xml_node menus = addMenus(manager);
        const auto* titled = std::get_if<PlayFilm>(&plan_.titleKey);
        addDispatcher(menus, "title",
                      titled != nullptr ? toTitle(titled->film) + ' '
                                        : toKeptPage(kPage, plan_.filmPages.count));
        // Without menus there is still a PGC for each nine films, of which one is played next.
        for (std::size_t i = 0; i <= plan_.films.back().page; ++i) {
            std::string commands = playNext(i);
            if (!hasMenus()) {
                addDispatcher(menus, nullptr, commands + "exit; ");
                continue;
            }
            add(commands, "{} = 0; {} = 0; {} = {}; button = {};", kPlayingAll, kChapterPage, kPage,
                i + 1, kButton);
            addPage(menus, i, commands, fromFilms);
        }
    }

    void addTitleSet(pugi::xml_node& disc, const DiscFilm& film) {
        pugi::xml_node titleset = disc.append_child("titleset");
        addSetMenus(titleset, film);

        pugi::xml_node titles = titleset.append_child("titles");
        setVideo(titles, plan_.standard, film.conversion.isWide, "nopanscan");
        for (const DiscTrack& track : film.conversion.tracks)
            titles.append_child("audio").append_attribute("lang") = track.language.c_str();
        for (const DiscSubtitle& subtitle : film.subtitles) {
            pugi::xml_node stream = titles.append_child("subpicture");
            stream.append_attribute("lang") = subtitle.source.language.c_str();
            stream.append_attribute("content") = contentOf(subtitle.source.kind);
            if (film.conversion.keepsSubtitles)
                addStreams(stream, subtitle.source, film.conversion.isWide);
        }
        pugi::xml_node pgc = titles.append_child("pgc");
        if (!film.subtitles.empty())
            pgc.append_attribute("palette") = pieces_.palettes[film.number].c_str();
        if (const std::string shown = showSubtitles(film); !shown.empty())
            addText(pgc, "pre", shown);
        pugi::xml_node vob = pgc.append_child("vob");
        vob.append_attribute("file") = pieces_.films[film.number].c_str();
        std::string chapters;
        for (const Chapter& chapter : film.conversion.chapters)
            chapters += fmt::format("{}{:.3f}", chapters.empty() ? "" : ",", chapter.seconds);
        vob.append_attribute("chapters") = chapters.c_str();
        addText(pgc, "post", afterFilm(film));
    }

    // Without a track, forced ones are shown where the film shows some.
    static std::string subtitleCommand(const DiscFilm& film, std::optional<std::size_t> track) {
        for (std::size_t i = 0; !track && i < film.subtitles.size(); ++i) {
            const DiscSubtitle& each = film.subtitles[i];
            if (each.isShown && each.source.kind == SubtitleKind::forced) track = i;
        }
        return fmt::format("subtitle = {};", track ? kFirstSubtitles + *track : kNoSubtitles);
    }

    // The streams of a copied film keep their numbers.
    static void addStreams(pugi::xml_node& subpicture, const FilmSubtitle& own, bool isWide) {
        constexpr int kFirstStream = 0x20;
        const auto addStream = [&](const char* mode, int id) {
            pugi::xml_node stream = subpicture.append_child("stream");
            stream.append_attribute("id") = id - kFirstStream;
            stream.append_attribute("mode") = mode;
        };
        addStream(isWide ? "widescreen" : "normal", own.id);
        if (isWide) addStream("letterbox", own.letterboxedId);
    }

    // What the viewer has chosen stays from film to film. What a film has switched on is switched
    // off by the next one.
    std::string showSubtitles(const DiscFilm& film) const {
        const auto isShown = [](const DiscSubtitle& subtitle) { return subtitle.isShown; };
        const auto shown = std::ranges::find_if(film.subtitles, isShown);
        std::string commands;
        if (shown != film.subtitles.end()) {
            add(commands, "if ({} ne {}) {{ {} {} = 1; {} = 0; }}", kChosen, film.number + 1,
                subtitleCommand(film, shown - film.subtitles.begin()), kSubtitled, kChosen);
        } else if (std::ranges::any_of(plan_.films, [&](const DiscFilm& other) {
                       return std::ranges::any_of(other.subtitles, isShown);
                   })) {
            add(commands, "if ({0} eq 1) {{ subtitle = {1}; {0} = 0; }}", kSubtitled, kNoSubtitles);
        }
        return commands;
    }

    // The Menu key leads to the chapters, or to the page that shows the film; without menus to
    // where the Title key leads.
    void addSetMenus(pugi::xml_node& titleset, const DiscFilm& film) {
        pugi::xml_node menus = addMenus(titleset);
        if (!hasMenus()) {
            addDispatcher(menus, "root", "jump vmgm menu 1; ");
            return;
        }
        if (const auto* shown = std::get_if<ShowFilms>(&film.keys.menu)) {
            addDispatcher(menus, "root", toFilmsPage(*shown));
            return;
        }
        std::string root;
        add(root, "{} = 0; if ({} eq 0) {{ {} = 1; {} = {}; }}", kPlayingAll, kChapterPage,
            kChapterPage, kChapterButton, buttonNumber(0));
        addDispatcher(menus, "root", root + toKeptPage(kChapterPage, film.ownPages().count));
        for (std::size_t i = 0; i < film.ownPages().count; ++i) {
            std::string commands;
            add(commands, "{} = {}; button = {};", kChapterPage, i + 1, kChapterButton);
            addPage(menus, film.ownPages().first + i, commands,
                    [this](std::size_t button, const Action& action) {
                        return fromOwnMenu(button, action);
                    });
        }
    }

    pugi::xml_node addMenus(pugi::xml_node& parent) {
        pugi::xml_node menus = parent.append_child("menus");
        menus.append_attribute("lang") = plan_.language.c_str();
        // Two sets of buttons, for wide displays and for those that show the middle of the page.
        setVideo(menus, plan_.standard, true, "noletterbox");
        if (!hasMenus()) return menus;
        menus.append_child("audio").append_attribute("lang") = plan_.language.c_str();
        pugi::xml_node subpicture = menus.append_child("subpicture");
        const char* const modes[] = {"widescreen", "panscan"};
        for (int i = 0; i < 2; ++i) {
            pugi::xml_node stream = subpicture.append_child("stream");
            stream.append_attribute("id") = i;
            stream.append_attribute("mode") = modes[i];
        }
        return menus;
    }

    // `number`: of a page of the plan. `commandsOf(button, action)`: what a button does.
    template <typename Commands>
    void addPage(pugi::xml_node& menus, std::size_t number, const std::string& commands,
                 Commands commandsOf) const {
        const MenuPage& page = plan_.pages[number];
        pugi::xml_node pgc = addDispatcher(menus, nullptr, commands);
        pgc.append_child("vob").append_attribute("file") = pieces_.clips[number].c_str();
        for (std::size_t i = 0; i < page.buttons.size(); ++i) {
            pugi::xml_node button = pgc.append_child("button");
            button.append_attribute("name") = page.buttons[i].name.c_str();
            button.text().set(braced(commandsOf(i, page.buttons[i].action)).c_str());
        }
        // The page's own commands would highlight another button.
        addText(pgc, "post", "jump cell 1; ");
    }

    // To the page, of `pages`, that a register keeps.
    static std::string toKeptPage(std::string_view page, std::size_t pages) {
        std::string commands;
        for (std::size_t i = 1; i < pages; ++i)
            add(commands, "if ({} eq {}) jump menu {};", page, i + 1, menuNumber(i));
        add(commands, "jump menu {};", menuNumber(0));
        return commands;
    }

    // Plays the film that the one before it has asked for, if it is one of this page.
    std::string playNext(std::size_t page) const {
        std::string commands;
        for (const DiscFilm& film : plan_.films) {
            if (!film.keys.next || plan_.films[film.keys.next->film].page != page) continue;
            add(commands, "if ({0} eq {1}) {{ {0} = 0; jump title {1}; }}", kNextFilm,
                film.keys.next->film + 1);
        }
        return commands;
    }

    static std::string toTitle(std::size_t film) { return fmt::format("jump title {};", film + 1); }

    // From the menus of a set to a page of the films.
    static std::string toFilmsPage(const ShowFilms& shown) {
        return fmt::format("{} = {}; jump vmgm menu {}; ", kButton, buttonNumber(shown.button),
                           menuNumber(shown.page));
    }

    // What a button of the films' pages does.
    static std::string fromFilms(std::size_t button, const Action& action) {
        if (const auto* shown = std::get_if<ShowFilms>(&action)) {
            return fmt::format("{} = {}; jump menu {}; ", kButton, buttonNumber(shown->button),
                               menuNumber(shown->page));
        }
        std::string commands;
        add(commands, "{} = {};", kButton, buttonNumber(button));
        if (const auto* shown = std::get_if<ShowChapters>(&action)) {
            add(commands, "{} = 1; {} = {}; jump titleset {} menu entry root;", kChapterPage,
                kChapterButton, buttonNumber(0), shown->film + 1);
        } else if (const auto* played = std::get_if<PlayFilm>(&action)) {
            add(commands, "{}", toTitle(played->film));
        } else {
            add(commands, "{} = 1; {}", kPlayingAll, toTitle(0));
        }
        return commands;
    }

    // What a button of a film's own menu does.
    std::string fromOwnMenu(std::size_t button, const Action& action) {
        if (const auto* played = std::get_if<PlayFilm>(&action)) {
            return fmt::format("{} = {}; jump title 1 chapter {}; ", kChapterButton,
                               buttonNumber(button), played->chapter + 1);
        }
        if (const auto* shown = std::get_if<ShowChapters>(&action)) {
            return fmt::format("{} = {}; jump menu {}; ", kChapterButton,
                               buttonNumber(shown->button), menuNumber(shown->page));
        }
        if (const auto* sound = std::get_if<SetSound>(&action)) {
            return fmt::format("audio = {}; {}", sound->track,
                               fromOwnMenu(button, ownMenu(plan_, sound->film)));
        }
        if (const auto* subtitles = std::get_if<SetSubtitles>(&action)) {
            return fmt::format(
                "{} {} = {}; {}", subtitleCommand(plan_.films[subtitles->film], subtitles->track),
                kChosen, subtitles->film + 1, fromOwnMenu(button, ownMenu(plan_, subtitles->film)));
        }
        return toFilmsPage(std::get<ShowFilms>(action));
    }

    std::string afterFilm(const DiscFilm& film) const {
        std::string commands;
        if (film.keys.next) {
            add(commands, "if ({} eq 1) {{ {} = {}; call vmgm menu {}; }}", kPlayingAll, kNextFilm,
                film.keys.next->film + 1, menuNumber(plan_.films[film.keys.next->film].page));
        }
        if (std::holds_alternative<StopDisc>(film.keys.end)) return commands + "exit; ";
        if (film.ownPages().count > 0)
            add(commands, "if ({} ne 0) call menu entry root;", kChapterPage);
        return commands + "call vmgm menu 1; ";
    }

    const DiscPlan& plan_;
    const DiscPieces& pieces_;
};

}  // namespace

std::string authorFile(const DiscPlan& plan, const DiscPieces& pieces,
                       const std::string& destination) {
    return AuthorFile(plan, pieces).text(destination);
}

}  // namespace tkv::disc
