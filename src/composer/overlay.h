#pragma once

#include <string>

#include "composer/button_layout.h"

namespace tkv {

/// How a map names its video format, `format="PAL"` or `format="NTSC"`; empty for a multiplexer too
/// old to know the attribute. `spumuxVersion`: as versionSpumux returns it.
std::string formatAttribute(float spumuxVersion, bool isPal);

/// Writes what the subpicture multiplexer needs for the buttons of a menu: "overlayHighlight.png"
/// and "overlaySelect.png" in the folder of `output`, and in place of any earlier ones the button
/// maps named like `output` without its extension, with "_169.txt" and "_43.txt" appended.
/// What cannot be written whole is only logged, if at all, and not left behind.
void writeOverlayFiles(const std::string& output, const ButtonMap& buttons, bool isPal);

}  // namespace tkv
