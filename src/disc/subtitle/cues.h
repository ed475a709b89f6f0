#pragma once

#include <functional>

#include "disc/subtitle/drawing.h"
#include "system/processes.h"

namespace tkv::disc {

/// A picture over some of a disc's frames: from `first` to the one before `end`.
struct Cue {
    int first = 0, end = 0;
    SubtitlePicture picture;
    bool isForced = false;  ///< is it shown where subtitles are switched off, too?
};

/// How the times of a film become frames of the disc's.
struct CueTimes {
    std::function<int(double seconds)> frameAt;
    std::function<double(int frame)> secondsOf;  ///< the other way round
    int frames = 0;                              ///< of the disc's film
};

/// Tells `take` what a drawing's text shows, from picture to picture: those that last for no frame
/// are left out, and none lies beyond the film. Throws Interrupted when `stop` says so.
void cuesOf(SubtitleDrawing& drawing, const CueTimes& times, const ProgramStop& stop,
            const std::function<void(const Cue& cue)>& take);

}  // namespace tkv::disc
