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

/// A subpicture as it lies in a disc's stream: pixels of the values 0 to 3.
class Subpicture {
  public:
    explicit Subpicture(std::vector<std::uint8_t> packet) : packet_(std::move(packet)) {
        std::size_t at = word(2) + 4;
        for (; packet_.at(at) != 0xFF; at += kCommandSizes.at(packet_.at(at))) {
            if (packet_[at] == 4) contrasts_ = word(at + 1);
            if (packet_[at] == 5) {
                width_ = (word(at + 2) & 0xFFFU) - (word(at + 1) >> 4U) + 1;
                height_ = (word(at + 5) & 0xFFFU) - (word(at + 4) >> 4U) + 1;
            }
            if (packet_[at] == 6) fields_ = {word(at + 1) * 2, word(at + 3) * 2};
        }
        for (std::size_t y = 0; y < height_; ++y) {
            decodeRow(fields_.at(y % 2));
        }
    }

    std::array<std::size_t, 2> size() const { return {width_, height_}; }
    int value(int x, int y) const {
        return pixels_.at(static_cast<std::size_t>(y) * width_ + static_cast<std::size_t>(x));
    }
    /// How much of a value shows where no button is highlighted, 0 to 15.
    std::size_t contrast(int value) const {
        return contrasts_ >> 4U * static_cast<unsigned>(value) & 0xFU;
    }

  private:
    static constexpr std::array<std::size_t, 7> kCommandSizes{1, 1, 1, 3, 3, 7, 5};

    std::size_t word(std::size_t at) const { return packet_.at(at) * 256U + packet_.at(at + 1); }

    /// Appends a row of runs; each is a length and two bits of value in one to four nibbles. `at`
    /// counts nibbles; rows begin at whole bytes.
    void decodeRow(std::size_t& at) {
        const std::size_t end = pixels_.size() + width_;
        while (pixels_.size() < end) {
            unsigned run = 0;
            for (unsigned least = 1; least <= 0x40 && run < least; least *= 4, ++at) {
                const unsigned byte = packet_.at(at / 2);
                run = run * 16 + (at % 2 == 0 ? byte >> 4U : byte & 0xFU);
            }
            const std::size_t rest = end - pixels_.size();
            pixels_.insert(pixels_.end(), run < 4 ? rest : std::min<std::size_t>(run / 4, rest),
                           static_cast<std::uint8_t>(run % 4));
        }
        at += at % 2;
    }

    std::vector<std::uint8_t> packet_;
    std::vector<std::uint8_t> pixels_;
    std::array<std::size_t, 2> fields_{};
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::size_t contrasts_ = 0;
};

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
                case DVDNAV_BLOCK_OK:
                    keepSubpicture();
                    break;
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

    /// The last subpicture seen of a stream.
    Subpicture subpicture(std::size_t stream) const { return Subpicture(subpictures_.at(stream)); }

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
    /// The menus' subpictures fit into one pack each: its header, that of the packet, the stream's
    /// number, the data.
    void keepSubpicture() {
        constexpr std::array<std::uint8_t, 4> kPrivateStream{0, 0, 1, 0xBD};
        if (!std::equal(kPrivateStream.begin(), kPrivateStream.end(), block_.begin() + 14)) return;
        const std::size_t payload = 23U + block_[22];
        const std::size_t stream = block_.at(payload) - 0x20U;
        if (stream >= subpictures_.size()) return;
        subpictures_.at(stream).assign(block_.begin() + static_cast<std::ptrdiff_t>(payload) + 1,
                                       block_.end());
    }

    dvdnav_t* nav_ = nullptr;
    std::array<std::uint8_t, DVD_VIDEO_LB_LEN> block_{};
    std::array<std::uint32_t, 16> palette_{};
    std::array<std::vector<std::uint8_t>, 2> subpictures_;
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

/// Highlighted, the whole area of a button is orange; before, nothing of the subpicture shows.
void expectOrangeHighlights(const Player& player, const hli_t& highlights) {
    for (const int group : {0, 1}) {
        const Subpicture subpicture = player.subpicture(static_cast<std::size_t>(group));
        ASSERT_EQ(subpicture.size(), (std::array<std::size_t, 2>{720, 576}));
        std::set<int> values;
        for (const auto& [left, top, right, bottom] : rectanglesOf(highlights, group)) {
            for (int y = top; y <= bottom; ++y) {
                for (int x = left; x <= right; ++x) {
                    values.insert(subpicture.value(x, y));
                }
            }
        }
        for (const int value : values) {
            EXPECT_EQ(subpicture.contrast(value), 0U);
            const auto& colors = highlights.btn_colit.btn_coli[0];
            const Rgba selected = player.highlightColor(colors[0], value);
            const Rgba activated = player.highlightColor(colors[1], value);
            EXPECT_TRUE(near(selected, {255, 128, 0, selected.alpha}, 4));
            EXPECT_TRUE(near(activated, {255, 128, 0, activated.alpha}, 4));
            EXPECT_NEAR(selected.alpha, 0.3 * 15, 0.5);
            EXPECT_NEAR(activated.alpha, 0.6 * 15, 0.5);
        }
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
    const Outcome made = run({TKV_EXAMPLES "/dvd/make-dvd.sh", out});
    ASSERT_EQ(made.status, 0) << made.output;
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
        const Outcome encoded = run({"ffmpeg", "-nostdin", "-y", "-f", "lavfi", "-i", "color",
                                     "-target", isPal ? "pal-dvd" : "ntsc-dvd", "-t", "1", clip});
        ASSERT_EQ(encoded.status, 0) << encoded.output;
        for (const Case& c :
             {Case{true, 0}, {true, 1}, {true, 2}, {true, 3}, {true, 4}, {false, 9}}) {
            request.isMainMenu = c.isMainMenu;
            request.thumbs = Names(c.thumbs, "");
            errorsOf([&] { EXPECT_TRUE(dvdMenuPicture(request)); });
            for (const char* map : {"menu_169.txt", "menu_43.txt"}) {
                const Outcome outcome =
                    run({"sh", "-c", "spumux \"$0\" <\"$1\" >/dev/null", folder.file(map), clip});
                EXPECT_EQ(outcome.status, 0);
                EXPECT_NE(outcome.output.find("INFO: 1 subtitles added"), std::string::npos);
                for (const char* complaint : {"WARN", "ERR"}) {
                    EXPECT_EQ(outcome.output.find(complaint), std::string::npos)
                        << outcome.output << readText(folder.file(map));
                }
            }
        }
    }
}

}  // namespace
}  // namespace tkv::test
