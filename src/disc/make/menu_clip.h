#pragma once

#include <string>

#include "disc/make/ffmpeg_arguments.h"
#include "disc/project/standard.h"
#include "graphics/geometry.h"

// Commands with which ffmpeg prepares the pieces of a menu. Nothing here starts it.

namespace tkv::disc {

/// What is heard in a menu: from that moment of the input on; silence without an input.
struct MenuSound {
    std::string input;           ///< as ffmpeg names it
    double from = 0;             ///< seconds
    std::string stream = "a:0";  ///< of that input, in its words
    std::string stamp;           ///< differs after the input's files have changed
};

/// Makes the menu's film of the composer's frames, whose pixels it reads from its standard input,
/// and of its sound, which fades at the end. `rate`: of the picture, kb/s.
Arguments menuClipCommand(const MenuSound& sound, Standard standard, int rate,
                          const std::string& output);

/// Makes a quiet background of a scene of a film, whose shape is `aspect`: blurred, darkened, and
/// enlarged until nothing is seen of bars.
Arguments backgroundCommand(const std::string& scene, double aspect, PixelSize size,
                            const std::string& output);

/// Makes the picture that lies over the whole menu: nothing but a dot in a corner, next to
/// invisible. A subpicture without any mark is one that some players cut to nothing, and the
/// highlights of the buttons with it.
Arguments dotCommand(Standard standard, const std::string& output);

}  // namespace tkv::disc
