#include "player.h"

#include <cstdarg>
#include <cstring>
#include <stdexcept>

namespace tkv::test {

namespace {

Subpicture decoded(const std::vector<std::uint8_t>& coded) {
    const auto word = [&](std::size_t at) { return coded.at(at) * 256UL + coded.at(at + 1); };
    // Where the words of each command stand: 4 contrasts, 5 the area, 6 the first row's and the
    // second row's pixels.
    std::array<std::size_t, 7> words{};
    for (std::size_t at = word(2) + 4; coded.at(at) != 0xFF;) {
        const std::uint8_t command = coded[at];
        words.at(command) = at + 1;
        at += std::array{1U, 1U, 1U, 3U, 3U, 7U, 5U}.at(command);
    }
    const std::size_t left = word(words[5]) >> 4U, right = word(words[5] + 1) & 0xFFFU;
    const std::size_t top = word(words[5] + 3) >> 4U, bottom = word(words[5] + 4) & 0xFFFU;
    Subpicture picture{Strings(576, std::string(720, ' ')), word(words[4])};
    // Runs of 1, 2, 3 or 4 half bytes: the value in the last two bits, before it the length, where
    // 0 means until the row's end. A row begins with a byte.
    std::array<std::size_t, 2> next{2 * word(words[6]), 2 * word(words[6] + 2)};
    for (std::size_t y = top; y <= bottom; ++y) {
        std::size_t& at = next.at((y - top) % 2);
        const auto half = [&] {
            const unsigned byte = coded.at(at / 2);
            return at++ % 2 == 0 ? byte >> 4U : byte & 15U;
        };
        for (std::size_t x = left; x <= right;) {
            unsigned run = half();
            for (unsigned least = 4; run < least && least <= 64; least *= 4)
                run = run << 4U | half();
            const std::size_t length = run < 4 ? right + 1 - x : run >> 2U;
            picture.rows.at(y).replace(x, length, length, static_cast<char>('0' + run % 4));
            x += length;
        }
        at += at % 2;
    }
    return picture;
}

}  // namespace

Player::Player(const std::string& disc) {
    const dvdnav_logger_cb silent{[](void*, dvdnav_logger_level_t, const char*, va_list) {}};
    if (dvdnav_open2(&nav_, this, &silent, disc.c_str()) != DVDNAV_STATUS_OK)
        throw std::runtime_error("no disc at " + disc);
    dvdnav_set_PGC_positioning_flag(nav_, 1);
    play();
}

Player::~Player() {
    dvdnav_close(nav_);
}

std::string Player::place() const {
    if (isAtEnd_) return "";
    std::int32_t title = 0, part = 0;
    dvdnav_current_title_info(nav_, &title, &part);
    if (title > 0) return fmt::format("film {}", title);
    const int vob = dvdnav_get_current_nav_dsi(nav_)->dsi_gi.vobu_vob_idn;
    if (dvdnav_is_domain_vmgm(nav_)) return fmt::format("films {}", vob);
    return fmt::format("chapters {}.{}", titleSet_, vob);
}

double Player::seconds() {
    return static_cast<double>(dvdnav_get_current_time(nav_)) / 90'000;
}

int Player::chapter() {
    std::int32_t title = 0, part = 0;
    dvdnav_current_title_info(nav_, &title, &part);
    return part;
}

int Player::button() {
    std::int32_t button = 0;
    dvdnav_get_current_highlight(nav_, &button);
    return button;
}

// Each subpicture pack holds a part of one, after the number of its stream.
void Player::keepSubpicture() {
    const std::uint8_t* const packet = block_.data() + 14;
    const int end = 6 + packet[4] * 256 + packet[5];
    const int start = 9 + packet[8];
    const int stream = packet[start] - 0x20;
    if (packet[3] != 0xBD || stream < 0 || stream > 1) return;
    auto& kept = subpictures_.at(static_cast<std::size_t>(stream));
    kept.insert(kept.end(), packet + start + 1, packet + end);
}

Subpicture Player::subpicture(int stream) {
    const auto& coded = subpictures_.at(static_cast<std::size_t>(stream));
    for (auto& kept : subpictures_)
        kept.clear();
    for (int packs = 0; packs < 1000; ++packs) {
        if (coded.size() > 2 && coded.size() >= coded[0] * 256UL + coded[1]) return decoded(coded);
        play();
    }
    throw std::runtime_error(place() + " has no subpicture");
}

Rgba Player::highlightColor(std::uint32_t highlight, int value) const {
    const int shift = 4 * value;
    const std::uint32_t entry = palette_.at(highlight >> (16 + shift) & 15U);
    const auto byte = [&](int at) { return static_cast<int>(entry >> at & 255U); };
    return {byte(16), byte(8), byte(0), static_cast<int>(highlight >> shift & 15U)};
}

std::string Player::play() {
    for (int blocks = 0; blocks < 10'000; ++blocks) {
        std::int32_t event = DVDNAV_NOP, length = 0;
        if (dvdnav_get_next_block(nav_, block_.data(), &event, &length) != DVDNAV_STATUS_OK)
            throw std::runtime_error(dvdnav_err_to_string(nav_));
        isAtEnd_ = event == DVDNAV_STOP;
        if (event == DVDNAV_NAV_PACKET || event == DVDNAV_STOP) return place();
        if (event == DVDNAV_BLOCK_OK) keepSubpicture();
        if (event == DVDNAV_WAIT) dvdnav_wait_skip(nav_);
        if (event == DVDNAV_STILL_FRAME) dvdnav_still_skip(nav_);
        if (event == DVDNAV_SPU_CLUT_CHANGE)
            std::memcpy(palette_.data(), block_.data(), sizeof palette_);
        if (event == DVDNAV_VTS_CHANGE) {
            dvdnav_vts_change_event_t change{};
            std::memcpy(&change, block_.data(), sizeof change);
            titleSet_ = change.new_vtsN;
        }
    }
    throw std::runtime_error("no navigation pack for long");
}

std::string Player::leave() {
    const std::string here = place();
    for (int packs = 0; packs < 1000; ++packs) {
        if (play() != here) return place();
    }
    throw std::runtime_error(here + " does not end");
}

std::string Player::press(int number, int group) {
    pci_t* const pci = dvdnav_get_current_nav_pci(nav_);
    const auto groups = static_cast<int>(pci->hli.hl_gi.btngr_ns);
    if (group >= groups || number > pci->hli.hl_gi.btn_ns)
        throw std::runtime_error(fmt::format("{} has no button {}", place(), number));
    // The library itself knows only the first group.
    btni_t& button = pci->hli.btnit[group * 36 / groups + number - 1];
    dvdnav_button_select(nav_, pci, number);
    if (dvdnav_button_activate_cmd(nav_, number, &button.cmd) != DVDNAV_STATUS_OK)
        throw std::runtime_error(fmt::format("button {} does nothing", number));
    return play();
}

std::string Player::arrowsFrom(int number) {
    pci_t* const pci = dvdnav_get_current_nav_pci(nav_);
    const int before = button();
    std::string numbers;
    for (const auto key : {dvdnav_upper_button_select, dvdnav_lower_button_select,
                           dvdnav_left_button_select, dvdnav_right_button_select}) {
        dvdnav_button_select(nav_, pci, number);
        key(nav_, pci);
        numbers += fmt::format("{}{}", numbers.empty() ? "" : " ", button());
    }
    dvdnav_button_select(nav_, pci, before);
    return numbers;
}

std::string Player::press(DVDMenuID_t key) {
    const std::string here = place();
    if (dvdnav_menu_call(nav_, key) != DVDNAV_STATUS_OK)
        throw std::runtime_error(fmt::format("a key does nothing in {}", here));
    return play();
}

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

}  // namespace tkv::test
