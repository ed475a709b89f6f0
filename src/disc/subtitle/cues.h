#pragma once

#include <functional>
#include <vector>

#include "disc/subtitle/drawing.h"

namespace tkv::disc {

/// A picture over some of a disc's frames: from `first` to the one before `end`.
struct Cue {
    int first = 0, end = 0;
    SubtitlePicture picture;
};

/// How the times of a film become frames of the disc's.
struct CueTimes {
    std::function<int(double seconds)> frameAt;
    std::function<double(int frame)> secondsOf;  ///< the other way round
    int frames = 0;                              ///< of the disc's film
};

/// What a drawing's text shows, from picture to picture: those that last for no frame are left
/// out, and none lies beyond the film.
std::vector<Cue> cuesOf(SubtitleDrawing& drawing, const CueTimes& times);

}  // namespace tkv::disc
