#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "graphics/pixels.h"

// Colour quantisation. Colours are pixels without alpha, 0x00RRGGBB.

namespace tkv {

/// The distinct colours where there are no more than `most`; otherwise that many, chosen for a
/// small squared error over all of `colors`, which is not empty.
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
    /// The colour space is a grid of cells, each with its few candidates for the nearest colour;
    /// they are computed lazily, at the first lookup in the cell.
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

    std::array<std::vector<float>, 3> palette_;  // By channel, for SIMD.
    std::vector<Candidate> candidates_;
    std::vector<Cell> cells_;
};

}  // namespace tkv
