#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "graphics/geometry.h"

// Messages for people, where the lines that programs parse say nothing: why the output is not there
// or a picture that was named is not on the page.

namespace tkv {

/// Writes the line "tkvDvdMenuImg: WHAT: WHY" to the standard error stream; control characters in
/// it are replaced.
void tellWhy(std::string_view what, std::string_view why);

/// The same of a file, once for each of its states, however often a page names it.
void tellWhyOnce(const std::string& path, std::string_view why);

/// The same with why decodePicture has no picture of it (tilde already expanded). `size`: as
/// whyNoPicture takes it.
void tellWhyNoPicture(const std::string& path, std::optional<PixelSize> size);

/// Why no file could be written at `path` (tilde already expanded), as far as the disk still tells.
std::string whyNotWritten(const std::string& path);

}  // namespace tkv
