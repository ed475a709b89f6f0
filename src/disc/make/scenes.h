#pragma once

#include <string>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// A moment at which something is to be seen, neither black nor of one colour.
struct Scene {
    double seconds = 0;   ///< of the film as it came
    std::string picture;  ///< a result of the workshop, which fills the asked-for raster
    bool isSeen = true;   ///< Is something to be seen, or did somebody choose it?
};

/// Looks for the first such moment in a part of the film, at some places that lie the further apart
/// the later they are; the best of them when nothing is to be seen at any. The picture is that of
/// the moment itself, within a quarter of a second. Throws DiscError when none can be taken.
Scene findScene(const DiscFilm& film, const Span& span, const Raster& raster, Workshop& workshop);

/// Where the pictures of each excerpt of a film begin, in their order.
std::vector<std::vector<Scene>> findScenes(const DiscFilm& film, Workshop& workshop);

/// Finds these for a film before they are needed, at least one. Throws as findScene.
void lookAt(const DiscFilm& film, Workshop& workshop);

}  // namespace tkv::disc
