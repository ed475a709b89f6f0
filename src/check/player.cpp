// SPDX-License-Identifier: GPL-2.0-or-later
#include "check/player.h"

#include <fmt/format.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace tkv::check {

namespace {

// Of a film before its end, in sectors: a second at the highest rate.
constexpr std::uint32_t kTail = 600;

// More than a disc that goes on ever needs: blocks to the next navigation pack, and of those, to a
// place's end.
constexpr int kMostBlocks = 10'000;
constexpr int kMostPacks = 1000;

}  // namespace

Player::Player(const std::string& disc, Taker taker) : taker_(std::move(taker)) {
    const dvdnav_logger_cb silent{[](void*, dvdnav_logger_level_t, const char*, va_list) {}};
    if (dvdnav_open2(&nav_, this, &silent, disc.c_str()) != DVDNAV_STATUS_OK)
        throw std::runtime_error("there is no disc at " + disc);
}

Player::~Player() {
    dvdnav_close(nav_);
}

void Player::fail() const {
    throw std::runtime_error(fmt::format("libdvdnav says: {}", dvdnav_err_to_string(nav_)));
}

void Player::start() {
    if (dvdnav_reset(nav_) != DVDNAV_STATUS_OK) fail();
    dvdnav_set_PGC_positioning_flag(nav_, 1);
    play();
}

std::string Player::place() const {
    if (isAtEnd_) return "";
    std::int32_t title = 0, part = 0;
    dvdnav_current_title_info(nav_, &title, &part);
    if (title > 0) return fmt::format("film {}", title);
    const int vob = dvdnav_get_current_nav_dsi(nav_)->dsi_gi.vobu_vob_idn;
    if (dvdnav_is_domain_vmgm(nav_)) return fmt::format("films-{}", vob);
    return fmt::format("film-{}-page-{}", titleSet_, vob);
}

std::string Player::spot() {
    if (isAtEnd_) return "the disc's end";
    const int part = chapter();
    return part > 0 ? fmt::format("{}, chapter {}", place(), part)
                    : fmt::format("{}, button {}", place(), button());
}

double Player::seconds() {
    return static_cast<double>(dvdnav_get_current_time(nav_)) / 90'000;
}

int Player::chapter() {
    std::int32_t title = 0, part = 0;
    dvdnav_current_title_info(nav_, &title, &part);
    return title > 0 ? part : 0;
}

int Player::button() {
    std::int32_t button = 0;
    dvdnav_get_current_highlight(nav_, &button);
    return button;
}

std::string Player::play() {
    for (int blocks = 0; blocks < kMostBlocks; ++blocks) {
        std::int32_t event = DVDNAV_NOP, length = 0;
        if (dvdnav_get_next_block(nav_, block_.data(), &event, &length) != DVDNAV_STATUS_OK) fail();
        isAtEnd_ = event == DVDNAV_STOP;
        if (event == DVDNAV_NAV_PACKET || event == DVDNAV_STOP) return place();
        if (event == DVDNAV_WAIT) dvdnav_wait_skip(nav_);
        if (event == DVDNAV_STILL_FRAME) dvdnav_still_skip(nav_);
        if (event == DVDNAV_VTS_CHANGE) {
            dvdnav_vts_change_event_t change{};
            std::memcpy(&change, block_.data(), sizeof change);
            titleSet_ = change.new_vtsN;
        }
        if (taker_) taker_(event, block_);
    }
    throw std::runtime_error("no navigation pack for long");
}

std::string Player::leave() {
    const std::string here = place();
    for (int packs = 0; packs < kMostPacks; ++packs) {
        if (play() != here) return place();
    }
    throw std::runtime_error(here + " does not end");
}

std::string Player::leaveAtEnd() {
    std::uint32_t position = 0, length = 0;
    if (dvdnav_get_position(nav_, &position, &length) != DVDNAV_STATUS_OK) fail();
    if (length > position + kTail &&
        dvdnav_sector_search(nav_, length - kTail, SEEK_SET) != DVDNAV_STATUS_OK)
        fail();
    return leave();
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

std::string Player::press(DVDMenuID_t key) {
    if (dvdnav_menu_call(nav_, key) != DVDNAV_STATUS_OK)
        throw std::runtime_error(fmt::format("a key does nothing in {}", place()));
    return play();
}

std::string Player::playFilm(int number) {
    if (dvdnav_title_play(nav_, number) != DVDNAV_STATUS_OK) fail();
    return play();
}

}  // namespace tkv::check
