#pragma once

#include <string>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// A moment at which something is to be seen, neither black nor of one colour.
struct Scene {
    double seconds = 0;   ///< of the film as it came
    std::string picture;  ///< a result of the workshop, 16:9 squeezed into the asked-for size
};

/// Looks for the first such moment in a part of the film, at some places that lie the further apart
/// the later they are; the best of them when nothing is to be seen at any. Throws DiscError when no
/// picture can be taken.
Scene findScene(const DiscFilm& film, const Span& span, PixelSize size, Workshop& workshop);

/// Where each excerpt of a film begins, in their order.
std::vector<Scene> findScenes(const DiscFilm& film, Workshop& workshop);

}  // namespace tkv::disc
