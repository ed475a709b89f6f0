#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "disc/run/workshop.h"

namespace tkv::disc {

/// Sectors of 2,048 bytes.
struct Layers {
    std::int64_t single = 2'295'104;  ///< of a blank disc with one layer
    std::int64_t first = 2'086'912;   ///< at most, of the first of two
};

/// Has the second layer of a disc that needs two begin with a chapter, where the player's pause on
/// the way from one to the other is least noticed: the table of that
/// chapter's title set gets up to 15 sectors longer, since a layer ends with an error correction
/// block. `folder`: a name in the workshop, of
/// the finished disc. Returns the sectors of the first layer, as a burner is to be told them; none
/// where one layer is enough, or no chapter begins behind the middle and on the first layer.
/// Throws DiscError where the disc's tables or sizes cannot be read or written.
std::optional<std::int64_t> setLayerBreak(const std::string& folder, const Workshop& workshop,
                                          const Layers& layers = {});

}  // namespace tkv::disc
