#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "disc/film.h"
#include "disc/plan.h"
#include "disc/scenes.h"
#include "disc/workshop.h"

namespace tkv::disc {

/// A page of a menu, and the pictures of its thumbnails.
struct PageWork {
    const MenuPage* page = nullptr;
    std::string name;  ///< of its preview picture, without an extension
    PixelSize thumbnailSize;
    std::vector<Scene> scenes;          ///< where each thumbnail's excerpt begins
    std::vector<std::string> excerpts;  ///< the folders of their frames
};

/// All pages of a disc: those of the films, then those of each film's chapters.
std::vector<PageWork> pagesOf(const DiscPlan& plan);

/// Finds the scenes of a film that the pages show. May be called from several threads, each with a
/// film of its own.
void findScenes(std::vector<PageWork>& pages, std::size_t number, const Film& film,
                Workshop& workshop);

}  // namespace tkv::disc
