#pragma once

#include <optional>
#include <string>

#include "graphics/geometry.h"

namespace tkv {

/// Why decodePicture has no picture of what is at `path` (tilde already expanded), as what follows
/// a colon in an English sentence: "it is empty". Looks at the file's first bytes once more.
/// `size`: what decodePicture has asked about, if it came so far.
std::string whyNoPicture(const std::string& path, std::optional<PixelSize> size);

}  // namespace tkv
