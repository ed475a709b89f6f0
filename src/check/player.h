// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <dvdnav/dvdnav.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace tkv::check {

/// A DVD player without a screen. It throws std::runtime_error where a disc does not go on.
class Player {
  public:
    using Block = std::array<std::uint8_t, DVD_VIDEO_LB_LEN>;

    /// Is told each event but that of a navigation pack, and what comes with it.
    using Taker = std::function<void(std::int32_t event, const Block& block)>;

    /// Nothing plays before start.
    explicit Player(const std::string& disc, Taker taker = {});
    ~Player();
    Player(Player&&) = delete;

    /// Puts the disc in, or once more.
    void start();

    /// Where it is: "film 1" and so on, "films-1" for a page of the films, "film-2-page-1" for
    /// one of its own menu; empty when the disc has stopped. A menu is known by what is shown
    /// there, not by the number of its program.
    std::string place() const;

    /// The place with the chapter that plays or the button that is highlighted.
    std::string spot();

    /// Seconds since the film's start.
    double seconds();

    /// The part of the film, from 1.
    int chapter();

    /// The highlighted button, from 1.
    int button();

    /// What the disc says about the buttons here.
    const hli_t& highlights() { return dvdnav_get_current_nav_pci(nav_)->hli; }

    /// Plays on for half a second or less, and answers the place.
    std::string play();

    /// Plays on to wherever the disc leads from here.
    std::string leave();

    /// The same from shortly before the film's end.
    std::string leaveAtEnd();

    /// Presses button `number` from 1, of the group for wide displays (0) or that for others (1).
    std::string press(int number, int group = 0);

    /// Presses a key of the remote.
    std::string press(DVDMenuID_t key);

    /// Asks for a film by its number, from 1.
    std::string playFilm(int number);

  protected:
    dvdnav_t* nav() const { return nav_; }

  private:
    [[noreturn]] void fail() const;

    Taker taker_;
    dvdnav_t* nav_ = nullptr;
    Block block_{};
    int titleSet_ = 0;
    bool isAtEnd_ = false;
};

}  // namespace tkv::check
