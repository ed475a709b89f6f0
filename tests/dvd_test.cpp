#include <dvdnav/dvdnav.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <regex>

#include "support.h"

// The tool's pages on a disc, and what a player does with it.

namespace tkv::test::dvd {

/// The buttons of a map, in its order: names, and rectangles as the map writes them.
struct Buttons {
    Strings names, rectangles;
};

Buttons buttonsOf(const std::string& path) {
    static const std::regex line(R"re(<button name="(\w+)" (.*) />)re");
    const std::string map = readText(path);
    Buttons buttons;
    for (std::sregex_iterator it(map.begin(), map.end(), line), end; it != end; ++it) {
        buttons.names.push_back(it->str(1));
        buttons.rectangles.push_back(it->str(2));
    }
    return buttons;
}

/// A player without a screen. It throws where a disc stops, or does not go on.
class Player {
  public:
    explicit Player(const std::string& disc) {
        const dvdnav_logger_cb silent{[](void*, dvdnav_logger_level_t, const char*, va_list) {}};
        if (dvdnav_open2(&nav_, this, &silent, disc.c_str()) != DVDNAV_STATUS_OK)
            throw std::runtime_error("no disc at " + disc);
        play();
    }
    ~Player() { dvdnav_close(nav_); }
    Player(Player&&) = delete;

    /// "title 1" and so on, or "menu 3", the main menu, or "menu 7", that of the chapters.
    std::string place() {
        std::int32_t title = 0, part = 0;
        dvdnav_current_title_info(nav_, &title, &part);
        return title == 0 ? fmt::format("menu {}", part) : fmt::format("title {}", title);
    }

    /// What the disc says about the buttons here.
    const hli_t& highlights() { return dvdnav_get_current_nav_pci(nav_)->hli; }

    /// Y, Cr and Cb of the colour that a highlight gives to the pixels of a value (0 to 3), and its
    /// contrast (0 to 15).
    Rgba highlightColor(std::uint32_t highlight, int value) const {
        const int shift = 4 * value;
        const std::uint32_t entry = palette_.at(highlight >> (16 + shift) & 15U);
        const auto byte = [&](int at) { return static_cast<int>(entry >> at & 255U); };
        return {byte(16), byte(8), byte(0), static_cast<int>(highlight >> shift & 15U)};
    }

    /// Plays on for half a second or less, and answers the place.
    std::string play() {
        for (int blocks = 0; blocks < 10'000; ++blocks) {
            std::int32_t event = DVDNAV_NOP, length = 0;
            if (dvdnav_get_next_block(nav_, block_.data(), &event, &length) != DVDNAV_STATUS_OK)
                throw std::runtime_error(dvdnav_err_to_string(nav_));
            if (event == DVDNAV_NAV_PACKET) return place();
            if (event == DVDNAV_STOP) throw std::runtime_error("the disc stops");
            if (event == DVDNAV_WAIT) dvdnav_wait_skip(nav_);
            if (event == DVDNAV_STILL_FRAME) dvdnav_still_skip(nav_);
            if (event == DVDNAV_SPU_CLUT_CHANGE)
                std::memcpy(palette_.data(), block_.data(), sizeof palette_);
        }
        throw std::runtime_error("no navigation pack for long");
    }

    /// Plays on to wherever the disc leads from here.
    std::string leave() {
        const std::string here = place();
        for (int packs = 0; packs < 100; ++packs) {
            if (play() != here) return place();
        }
        throw std::runtime_error(here + " does not end");
    }

    /// Presses button `number`, counted from 1.
    std::string press(int number) {
        pci_t* pci = dvdnav_get_current_nav_pci(nav_);
        if (dvdnav_button_select_and_activate(nav_, pci, number) != DVDNAV_STATUS_OK)
            throw std::runtime_error(fmt::format("button {} does nothing", number));
        return play();
    }

  private:
    dvdnav_t* nav_ = nullptr;
    std::array<std::uint8_t, DVD_VIDEO_LB_LEN> block_{};
    std::array<std::uint32_t, 16> palette_{};
};

/// The rectangles of a group of buttons, counted from 0, as a map writes them.
Strings rectanglesOf(const hli_t& highlights, int group) {
    const btni_t* const buttons = highlights.btnit + group * 36 / highlights.hl_gi.btngr_ns;
    Strings rectangles;
    for (int i = 0; i < highlights.hl_gi.btn_ns; ++i) {
        const btni_t& button = buttons[i];
        rectangles.push_back(fmt::format(R"(x0="{}" y0="{}" x1="{}" y1="{}")", +button.x_start,
                                         +button.y_start, +button.x_end, +button.y_end));
    }
    return rectangles;
}

/// A menu of the example disc.
struct Menu {
    const char *place, *maps;  ///< The maps' names without "_169.txt" and "_43.txt".
    std::vector<int> titles;   ///< What the thumbnails lead to.
    const char *otherButton, *other;
};

void expectButtonsOfTheMaps(const hli_t& highlights, const std::string& maps) {
    ASSERT_EQ(highlights.hl_gi.btngr_ns, 2);
    EXPECT_EQ(highlights.hl_gi.btngr1_dsp_ty, 1) << "wide displays";
    EXPECT_EQ(highlights.hl_gi.btngr2_dsp_ty, 4) << "4:3 displays, the middle of the page";
    EXPECT_EQ(rectanglesOf(highlights, 0), buttonsOf(maps + "_169.txt").rectangles);
    EXPECT_EQ(rectanglesOf(highlights, 1), buttonsOf(maps + "_43.txt").rectangles);
    std::vector<int> reached{1};  // by the arrow keys from the first
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const btni_t& button = highlights.btnit[reached[i] - 1];
        EXPECT_EQ(button.btn_coln, 1) << "the first colours";
        for (const int next : {+button.up, +button.down, +button.left, +button.right})
            if (!std::ranges::count(reached, next)) reached.push_back(next);
    }
    EXPECT_EQ(reached.size(), highlights.hl_gi.btn_ns);
}

/// Highlighted and activated, one of a button's four pixel values is the overlays' orange, which is
/// 146, 193, 53 as Y, Cr and Cb.
void expectOrangeHighlights(Player& player) {
    const auto& colors = player.highlights().btn_colit.btn_coli[0];
    for (const auto& [color, contrast] : {std::pair(colors[0], 4), {colors[1], 9}}) {
        EXPECT_TRUE(std::ranges::any_of(std::array{0, 1, 2, 3}, [&, color = color,
                                                                 contrast = contrast](int value) {
            const Rgba shown = player.highlightColor(color, value);
            return shown.alpha == contrast && near(shown, {146, 193, 53, contrast}, 2);
        })) << contrast;
    }
}

/// Presses every button of the menu that the player is in, that of the other menu last.
void expectButtonsToLead(Player& player, const Menu& menu, const Strings& names) {
    const auto press = [&](const std::string& name) {
        return player.press(static_cast<int>(std::ranges::find(names, name) - names.begin()) + 1);
    };
    ASSERT_EQ(names.size(), menu.titles.size() + 2);
    for (int packs = 0; packs < 10; ++packs)
        ASSERT_EQ(player.play(), menu.place) << "its clip repeats";
    for (std::size_t i = 0; i < menu.titles.size(); ++i) {
        EXPECT_EQ(press(fmt::format("BT_{}", i)), fmt::format("title {}", menu.titles[i]));
        ASSERT_EQ(player.leave(), menu.place);
    }
    EXPECT_EQ(press("dvdBt_readAll"), "title 1");
    for (int title = 2; title <= 9; ++title)
        EXPECT_EQ(player.leave(), fmt::format("title {}", title));
    ASSERT_EQ(player.leave(), menu.place) << "after all titles";
    ASSERT_EQ(press(menu.otherButton), menu.other);
}

TEST(Dvd, ExampleDiscHasTheButtonsOfTheMapsAndTheyLead) {
    const TempFolder folder;
    const std::string out = folder.file("it's a disc, 100 % \"A&B\"");
    const ScopedVariable tool("TKV_TOOL", toolPath()), menuFrames("MENU_FRAMES", "25");
    run(fmt::format("{} {}", quoted(checkoutPath("examples/dvd/make-dvd.sh")), quoted(out)));
    EXPECT_EQ(namesIn(out), (Strings{"disc", "disc.iso", "maps"}));
    const std::vector<int> all{1, 2, 3, 4, 5, 6, 7, 8, 9};
    const Menu menus[] = {{"menu 3", "/maps/main", {1, 5, 6, 3}, "dvdBt_menuNext", "menu 7"},
                          {"menu 7", "/maps/chapters", all, "dvdBt_menuMain", "menu 3"}};
    for (const char* disc : {"/disc", "/disc.iso"}) {
        Player player(out + disc);
        for (const Menu& menu : menus) {
            SCOPED_TRACE(std::string(menu.maps) + " of " + disc);
            ASSERT_EQ(player.play(), menu.place);
            expectButtonsOfTheMaps(player.highlights(), out + menu.maps);
            expectOrangeHighlights(player);
            expectButtonsToLead(player, menu, buttonsOf(out + menu.maps + "_169.txt").names);
        }
    }
}

}  // namespace tkv::test::dvd
