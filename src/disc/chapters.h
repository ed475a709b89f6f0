#pragma once

#include <vector>

#include "disc/film.h"
#include "disc/project.h"

namespace tkv::disc {

/// The chapters of a film on the disc.
struct ChapterList {
    /// Seconds of the disc's film: the first at 0, each 2 s at least from the next and the end, no
    /// more than 99, each at the start of a frame, in a copied film of a keyframe.
    std::vector<Chapter> chapters;
    bool hasMenu = false;  ///< Are they worth a menu, or there for the skip key only?
};

/// `isCopied`: are the film's pictures left as they are? `speed`: how much faster the disc's film
/// plays.
ChapterList chaptersOf(const FilmRequest& request, const Film& film, const ChapterRule& rule,
                       Standard standard, bool isCopied, double speed);

}  // namespace tkv::disc
