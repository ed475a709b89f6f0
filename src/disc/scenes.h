#pragma once

#include <string>

#include "disc/film.h"
#include "disc/plan.h"
#include "disc/workshop.h"

namespace tkv::disc {

/// A moment at which something is to be seen, neither black nor of one colour.
struct Scene {
    double seconds = 0;   ///< of the film as it came
    std::string picture;  ///< a result of the workshop, 16:9 squeezed into the asked-for size
};

/// Looks for the first such moment in an excerpt's part of the film, at some places that lie the
/// further apart the later they are; the best of them when nothing is to be seen at any.
Scene findScene(const Film& film, const Excerpt& excerpt, PixelSize size, Workshop& workshop);

}  // namespace tkv::disc
