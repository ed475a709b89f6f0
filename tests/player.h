#pragma once

#include <array>
#include <string>
#include <utility>

#include "check/player.h"
#include "support.h"

namespace tkv::test {

/// What can lie over a page: the pixels' values, '0' to '3', by rows from the top, and a blank
/// where there is none. `contrasts`: of the values while no button is highlighted, four bits each.
struct Subpicture {
    Strings rows;
    std::size_t contrasts;
};

/// A player that also keeps what it is to draw.
class Player : public check::Player {
  public:
    explicit Player(const std::string& disc)
        : check::Player(disc, [this](auto event, const Block& block) { keep(event, block); }) {
        start();
    }

    /// The subpicture for wide displays (0) or others (1) of a page that has just been reached.
    Subpicture subpicture(int stream);

    /// Y, Cr and Cb of the colour that a highlight gives to the pixels of a value (0 to 3), and its
    /// contrast (0 to 15).
    Rgba highlightColor(std::uint32_t highlight, int value) const;

    /// The tracks of sound and of subtitles that a film is played with, from 0; the latter is -1
    /// where none are shown.
    std::pair<int, int> tracks();

    /// The buttons, from 1, to which the up, down, left and right keys lead from a button.
    std::string arrowsFrom(int number);

  private:
    void keep(std::int32_t event, const Block& block);

    std::array<std::uint32_t, 16> palette_{};
    std::array<std::vector<std::uint8_t>, 2> subpictures_;  ///< as they are coded
};

/// The rectangles of a group of buttons, counted from 0, as a map writes them.
Strings rectanglesOf(const hli_t& highlights, int group);

}  // namespace tkv::test
