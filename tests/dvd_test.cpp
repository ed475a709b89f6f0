#include <dvdnav/dvdnav.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <regex>
#include <set>

#include "composer/dvd_menu_picture.h"
#include "support.h"

// The tool's pages on a disc: what other people's programs make of them, and what a player does.

namespace tkv::test {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

/// Left, top, right and bottom.
using Rectangles = std::vector<std::array<int, 4>>;

/// The buttons of a map, in its order.
struct MapButtons {
    Names names;
    Rectangles rectangles;
};

MapButtons readMap(const std::string& path) {
    static const std::regex line(
        R"re(<button name="(\w+)" x0="(\d+)" y0="(\d+)" x1="(\d+)" y1="(\d+)" />)re");
    const std::string map = readText(path);
    MapButtons buttons;
    for (std::sregex_iterator it(map.begin(), map.end(), line), end; it != end; ++it) {
        const auto number = [&](std::size_t group) { return std::stoi(it->str(group)); };
        buttons.names.push_back(it->str(1));
        buttons.rectangles.push_back({number(2), number(3), number(4), number(5)});
    }
    return buttons;
}

/// Where a player is: in a title, or in a menu of some kind (and title 0).
struct Place {
    int title;
    int menu;
    bool operator==(const Place&) const = default;
};

void PrintTo(const Place& place, std::ostream* out) {
    *out << "title " << place.title << ", menu " << place.menu;
}

constexpr Place kMainMenu{0, DVD_MENU_Root};
constexpr Place kChapterMenu{0, DVD_MENU_Part};

/// A player without a screen. It throws where a disc stops, or does not go on.
class Player {
  public:
    explicit Player(const std::string& disc) {
        const dvdnav_logger_cb silent{[](void*, dvdnav_logger_level_t, const char*, va_list) {}};
        if (dvdnav_open2(&nav_, this, &silent, disc.c_str()) != DVDNAV_STATUS_OK) {
            throw std::runtime_error("no disc at " + disc);
        }
        play();
    }
    ~Player() { dvdnav_close(nav_); }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    Place place() {
        std::int32_t title = -1;
        std::int32_t part = -1;
        dvdnav_current_title_info(nav_, &title, &part);
        return title == 0 ? Place{0, part} : Place{title, 0};
    }

    /// What the disc says about the buttons here.
    const hli_t& highlights() { return dvdnav_get_current_nav_pci(nav_)->hli; }

    /// Plays on for half a second or less.
    Place play() {
        for (int blocks = 0; blocks < 10'000; ++blocks) {
            std::int32_t event = DVDNAV_NOP;
            std::int32_t length = 0;
            if (dvdnav_get_next_block(nav_, block_.data(), &event, &length) != DVDNAV_STATUS_OK) {
                throw std::runtime_error(dvdnav_err_to_string(nav_));
            }
            switch (event) {
                case DVDNAV_NAV_PACKET:
                    return place();
                case DVDNAV_SPU_CLUT_CHANGE:
                    std::memcpy(palette_.data(), block_.data(), sizeof palette_);
                    break;
                case DVDNAV_WAIT:
                    dvdnav_wait_skip(nav_);
                    break;
                case DVDNAV_STILL_FRAME:
                    dvdnav_still_skip(nav_);
                    break;
                case DVDNAV_STOP:
                    throw std::runtime_error("the disc stops");
                default:
                    break;
            }
        }
        throw std::runtime_error("no navigation pack for long");
    }

    /// Plays on to wherever the disc leads from here.
    Place leave() {
        const Place here = place();
        for (int packs = 0; packs < 100; ++packs) {
            if (play() != here) return place();
        }
        throw std::runtime_error(fmt::format("title {} does not end", here.title));
    }

    /// Presses button `number`, counted from 1.
    Place press(int number) {
        pci_t* pci = dvdnav_get_current_nav_pci(nav_);
        if (dvdnav_button_select_and_activate(nav_, pci, number) != DVDNAV_STATUS_OK) {
            throw std::runtime_error(fmt::format("button {} does nothing", number));
        }
        return play();
    }

    /// The colour that a highlight gives to the pixels of a value; its alpha is the contrast, 0 to
    /// 15.
    Rgba highlightColor(std::uint32_t highlight, int value) const {
        const unsigned shift = 4U * static_cast<unsigned>(value);
        const std::uint32_t entry = palette_.at(highlight >> (16U + shift) & 0xFU);
        const double luma = 1.164 * (static_cast<int>(entry >> 16U & 0xFFU) - 16);
        const double red = static_cast<int>(entry >> 8U & 0xFFU) - 128;
        const double blue = static_cast<int>(entry & 0xFFU) - 128;
        const auto channel = [](double level) {
            return static_cast<int>(std::lround(std::clamp(level, 0.0, 255.0)));
        };
        return {channel(luma + 1.596 * red), channel(luma - 0.813 * red - 0.391 * blue),
                channel(luma + 2.018 * blue), static_cast<int>(highlight >> shift & 0xFU)};
    }

  private:
    dvdnav_t* nav_ = nullptr;
    std::array<std::uint8_t, DVD_VIDEO_LB_LEN> block_{};
    std::array<std::uint32_t, 16> palette_{};
};

/// The rectangles of a group of buttons, the groups counted from 0.
Rectangles rectanglesOf(const hli_t& highlights, int group) {
    const int first = group * 36 / highlights.hl_gi.btngr_ns;
    Rectangles rectangles;
    for (int i = 0; i < highlights.hl_gi.btn_ns; ++i) {
        const btni_t& button = highlights.btnit[first + i];
        rectangles.push_back({+button.x_start, +button.y_start, +button.x_end, +button.y_end});
    }
    return rectangles;
}

/// The buttons that the arrow keys lead to from the first.
std::set<int> reachedByArrows(const hli_t& highlights) {
    std::set<int> reached;
    std::vector<int> pending{1};
    while (!pending.empty()) {
        const int number = pending.back();
        pending.pop_back();
        if (!reached.insert(number).second) continue;
        const btni_t& button = highlights.btnit[number - 1];
        pending.insert(pending.end(), {+button.up, +button.down, +button.left, +button.right});
    }
    return reached;
}

/// A menu of the example disc.
struct Menu {
    Place place;
    std::string maps;         ///< Path of the maps without "_169.txt" and "_43.txt".
    std::vector<int> titles;  ///< What the thumbnails lead to.
    std::string otherButton;  ///< The name of the button to the other menu.
    Place other;
};

void expectButtonsOfTheMaps(const hli_t& highlights, const Menu& menu) {
    const auto wide = readMap(menu.maps + "_169.txt");
    const auto panScan = readMap(menu.maps + "_43.txt");
    ASSERT_EQ(wide.names.size(), menu.titles.size() + 2);
    ASSERT_EQ(highlights.hl_gi.btngr_ns, 2);
    EXPECT_EQ(highlights.hl_gi.btngr1_dsp_ty, 1) << "wide displays";
    EXPECT_EQ(highlights.hl_gi.btngr2_dsp_ty, 4) << "4:3 displays, the middle of the page";
    EXPECT_EQ(rectanglesOf(highlights, 0), wide.rectangles);
    EXPECT_EQ(rectanglesOf(highlights, 1), panScan.rectangles);
    EXPECT_EQ(reachedByArrows(highlights).size(), wide.names.size());
}

/// Highlighted and activated, one of a button's four pixel values is the overlays' orange.
void expectOrangeHighlights(const Player& player, const hli_t& highlights) {
    const auto& colors = highlights.btn_colit.btn_coli[0];
    for (const auto& [color, opacity] : {std::pair(colors[0], 0.3), {colors[1], 0.6}}) {
        const bool isOrange = std::ranges::any_of(std::array{0, 1, 2, 3}, [&](int value) {
            const Rgba shown = player.highlightColor(color, value);
            return near(shown, {255, 128, 0, shown.alpha}, 4) &&
                   std::abs(shown.alpha - opacity * 15) <= 0.5;
        });
        EXPECT_TRUE(isOrange) << opacity;
    }
    for (int i = 0; i < highlights.hl_gi.btn_ns; ++i) {
        EXPECT_EQ(highlights.btnit[i].btn_coln, 1) << "every button has the first colours";
    }
}

/// Presses every button of the menu that the player is in, that of the other menu last.
void expectButtonsToLead(Player& player, const Menu& menu) {
    const Names names = readMap(menu.maps + "_169.txt").names;
    const auto press = [&](const std::string& name) {
        const auto found = std::find(names.begin(), names.end(), name);
        return player.press(static_cast<int>(found - names.begin()) + 1);
    };
    for (int packs = 0; packs < 10; ++packs) {
        ASSERT_EQ(player.play(), menu.place) << "its clip repeats";
    }
    for (std::size_t i = 0; i < menu.titles.size(); ++i) {
        EXPECT_EQ(press(fmt::format("BT_{}", i)), (Place{menu.titles[i], 0}));
        ASSERT_EQ(player.leave(), menu.place) << "after title " << menu.titles[i];
    }
    EXPECT_EQ(press("dvdBt_readAll"), (Place{1, 0}));
    for (int title = 2; title <= 9; ++title) {
        EXPECT_EQ(player.leave(), (Place{title, 0}));
    }
    ASSERT_EQ(player.leave(), menu.place) << "after all titles";
    ASSERT_EQ(press(menu.otherButton), menu.other);
}

TEST(Dvd, ExampleDiscHasTheButtonsOfTheMapsAndTheyLead) {
    const TempFolder folder;
    const std::string out = folder.file("a disc, 100 % \"A&B\"");
    const std::string tool = fs::canonical("/proc/self/exe").parent_path() / "tkvDvdMenuImg";
    const ScopedVariable toolVariable("TKV_TOOL", tool);
    const ScopedVariable menuFrames("MENU_FRAMES", "25");
    const std::string made =
        run(fmt::format("'{}/dvd/make-dvd.sh' '{}' && echo done", TKV_EXAMPLES, out));
    ASSERT_TRUE(made.ends_with("done\n")) << made;
    EXPECT_EQ(namesIn(out), (Names{"disc", "disc.iso", "maps"}));

    const Menu menus[] = {
        {kMainMenu, out + "/maps/main", {1, 5, 6, 3}, "dvdBt_menuNext", kChapterMenu},
        {kChapterMenu,
         out + "/maps/chapters",
         {1, 2, 3, 4, 5, 6, 7, 8, 9},
         "dvdBt_menuMain",
         kMainMenu},
    };
    for (const char* disc : {"/disc", "/disc.iso"}) {
        SCOPED_TRACE(disc);
        Player player(out + disc);
        for (const Menu& menu : menus) {
            SCOPED_TRACE(menu.maps);
            ASSERT_EQ(player.play(), menu.place);
            expectButtonsOfTheMaps(player.highlights(), menu);
            expectOrangeHighlights(player, player.highlights());
            expectButtonsToLead(player, menu);
        }
    }
}

TEST(Dvd, MultiplexerTakesTheMapsOfEveryLayout) {
    const TempFolder folder;
    const std::string clip = folder.file("clip.mpg");
    MenuRequest request;
    request.mode = MenuMode::overlay;
    request.output = folder.file("menu.png");
    request.dvdBt_readAll = request.dvdBt_menuPrev = "label";
    request.dvdBt_menuMain = request.dvdBt_menuNext = "label";
    struct Case {
        bool isMainMenu;
        std::size_t thumbs;
    };
    for (const bool isPal : {true, false}) {
        request.isPal = isPal;
        run(fmt::format("ffmpeg -nostdin -y -f lavfi -i color -target {} -t 1 {}",
                        isPal ? "pal-dvd" : "ntsc-dvd", clip));
        for (const Case& c :
             {Case{true, 0}, {true, 1}, {true, 2}, {true, 3}, {true, 4}, {false, 9}}) {
            request.isMainMenu = c.isMainMenu;
            request.thumbs = Names(c.thumbs, "");
            errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
            for (const char* map : {"menu_169.txt", "menu_43.txt"}) {
                const std::string told =
                    run(fmt::format("spumux {} <{} >/dev/null", folder.file(map), clip));
                EXPECT_NE(told.find("INFO: 1 subtitles added"), std::string::npos) << told;
                for (const char* complaint : {"WARN", "ERR"}) {
                    EXPECT_EQ(told.find(complaint), std::string::npos)
                        << told << readText(folder.file(map));
                }
            }
        }
    }
}

}  // namespace
}  // namespace tkv::test
