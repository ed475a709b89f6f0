#pragma once

#include <dvdnav/dvdnav.h>

#include <array>
#include <string>

#include "support.h"

namespace tkv::test {

/// What can lie over a page: the pixels' values, '0' to '3', by rows from the top, and a blank
/// where there is none. `contrasts`: of the values while no button is highlighted, four bits each.
struct Subpicture {
    Strings rows;
    std::size_t contrasts;
};

/// A DVD player without a screen. It throws where a disc stops, or does not go on.
class Player {
  public:
    explicit Player(const std::string& disc);
    ~Player();
    Player(Player&&) = delete;

    /// Where it is: "film 1" and so on, "films 1" for a page of the films, "chapters 2.1" for one
    /// of film 2. A menu is known by what is shown there, not by the number of its program.
    std::string place() const;

    /// Seconds since the film's start.
    double seconds();

    /// The part of the film, from 1.
    int chapter();

    /// The highlighted button, from 1.
    int button();

    /// What the disc says about the buttons here.
    const hli_t& highlights() { return dvdnav_get_current_nav_pci(nav_)->hli; }

    /// The subpicture for wide displays (0) or others (1) of a page that has just been reached.
    Subpicture subpicture(int stream);

    /// Y, Cr and Cb of the colour that a highlight gives to the pixels of a value (0 to 3), and its
    /// contrast (0 to 15).
    Rgba highlightColor(std::uint32_t highlight, int value) const;

    /// Plays on for half a second or less, and answers the place; "" when the disc is at its end.
    std::string play();

    /// Plays on to wherever the disc leads from here.
    std::string leave();

    /// Presses button `number` from 1, of the group for wide displays (0) or that for others (1).
    std::string press(int number, int group = 0);

    /// The buttons, from 1, to which the up, down, left and right keys lead from a button.
    std::string arrowsFrom(int number);

    /// Presses a key of the remote.
    std::string press(DVDMenuID_t key);

  private:
    void keepSubpicture();

    dvdnav_t* nav_ = nullptr;
    std::array<std::uint8_t, DVD_VIDEO_LB_LEN> block_{};
    std::array<std::uint32_t, 16> palette_{};
    std::array<std::vector<std::uint8_t>, 2> subpictures_;  ///< as they are coded
    int titleSet_ = 0;
    bool isAtEnd_ = false;
};

/// The rectangles of a group of buttons, counted from 0, as a map writes them.
Strings rectanglesOf(const hli_t& highlights, int group);

}  // namespace tkv::test
