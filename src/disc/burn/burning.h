#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "disc/burn/drive.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// Seconds of work that it takes to burn so many bytes and to compare them.
double burningWeight(std::int64_t bytes);

/// What is to be burnt, and onto what.
struct Burn {
    Drive drive;
    bool erases = false;
    std::string image;                       ///< as the workshop's programs name it
    std::optional<std::int64_t> firstLayer;  ///< its sectors, where the second is to begin with a
                                             ///< chapter
};

/// Writes the image, reads the medium and compares it with the image. Throws DiscError when the
/// medium is not, or not any more, one for it, cannot be written, or differs.
void burn(const Burn& what, const Workshop& workshop, Progress& progress);

/// How much of a disc a line of one of the burning programs says is written, from 0 to 1.
std::optional<double> writtenPart(std::string_view line);

}  // namespace tkv::disc
