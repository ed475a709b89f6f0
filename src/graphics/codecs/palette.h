#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "graphics/pixels.h"

// A few colours that stand for many. Colours are pixels without alpha, 0x00RRGGBB.

namespace tkv {

/// The colours themselves where there are no more than `most`; otherwise so many, chosen to differ
/// as little as they can from all of `colors`, which is not empty.
/// `most`: 2 to 256.
std::vector<std::uint32_t> choosePalette(std::span<const std::uint32_t> colors, std::size_t most);

/// Red, green and blue, each in 0..255.
using Channels = std::array<int, 3>;

constexpr Channels channelsOf(std::uint32_t color) {
    return {static_cast<int>(redOf(color)), static_cast<int>(greenOf(color)),
            static_cast<int>(blueOf(color))};
}

/// Finds the nearest colours of a palette of 1 to 256.
class NearestColor {
  public:
    explicit NearestColor(std::span<const std::uint32_t> palette);

    /// The index in the palette.
    std::size_t indexOf(const Channels& channels);

  private:
    /// The space of all colours is cut into cells, each with the few colours that can be nearest
    /// to a place in it; they are looked for when the cell is first asked for.
    static constexpr int kCellSide = 8;
    static constexpr std::size_t kCellsASide = 256 / kCellSide;
    static constexpr std::size_t kCells = kCellsASide * kCellsASide * kCellsASide;

    struct Candidate {
        Channels channels;
        int index;
    };
    struct Cell {
        std::size_t first = 0;
        std::size_t count = 0;
    };

    void fill(Cell& cell, const Channels& lowest);

    std::array<std::vector<float>, 3> palette_;  // By channel, since floats are compared at once.
    std::vector<Candidate> candidates_;
    std::vector<Cell> cells_;
};

}  // namespace tkv
