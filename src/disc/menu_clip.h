#pragma once

#include <string>
#include <vector>

#include "disc/standard.h"
#include "graphics/geometry.h"

// The words that make ffmpeg prepare the pieces of a menu. Nothing here starts it.

namespace tkv::disc {

/// What is heard in a menu: from that moment of the input on; silence without an input.
struct MenuSound {
    std::string input;  ///< as ffmpeg names it
    double from = 0;    ///< seconds
};

/// Makes the menu's film of its frames, "000.jpg" and so on in `folder`, and of its sound, which
/// fades at the end. `rate`: of the picture, kb/s.
std::vector<std::string> menuClipCommand(const std::string& folder, const MenuSound& sound,
                                         Standard standard, int rate, const std::string& output);

/// Makes a quiet background of a picture: blurred and darkened.
std::vector<std::string> backgroundCommand(const std::string& picture, PixelSize size,
                                           const std::string& output);

/// Makes the picture that lies over the whole menu: nothing but a dot in a corner, next to
/// invisible. A subpicture without any mark is one that some players cut to nothing, and the
/// highlights of the buttons with it.
std::vector<std::string> dotCommand(Standard standard, const std::string& output);

}  // namespace tkv::disc
