#pragma once

#include <string>
#include <vector>

#include "disc/project/project.h"

namespace tkv::disc {

/// A picture of a film that is made of pictures.
struct Slide {
    std::string path;
    std::string title;  ///< drawn onto it; may be empty
};

/// A film that is made of pictures.
struct SlideShow {
    SlideRequest request;       ///< its pictures those of the folders, too
    std::vector<Slide> slides;  ///< those that can be read; none until that is known
    double step = 0;            ///< seconds from one slide's beginning to the next one's
    std::string sound;          ///< in the workshop, as long as the film; empty without any
};

/// Seconds in which one slide turns into the next, of which there is one each `step` seconds.
constexpr double fadeSeconds(double step) {
    return step < 3 ? step / 3 : 1;
}

/// Seconds in which the first comes out of black, and the last goes into it.
inline constexpr double kBlackSeconds = 0.5;

}  // namespace tkv::disc
