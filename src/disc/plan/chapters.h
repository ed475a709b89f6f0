#pragma once

#include <cstddef>
#include <vector>

#include "disc/film/film.h"
#include "disc/plan/conversion.h"
#include "disc/project/project.h"

namespace tkv::disc {

inline constexpr std::size_t kMostChapters = 99;

/// The chapters of a film on the disc.
struct ChapterList {
    /// Seconds of the disc's film: the first at 0, each 2 s at least from the next and the end, no
    /// more than 99, each at the start of a frame, in a copied film of a keyframe.
    std::vector<Chapter> chapters;
    bool hasMenu = false;     ///< Are they worth a menu, or there for the skip key only?
    std::size_t leftOut = 0;  ///< that begin too soon after another, or are too many
};

/// `conversion`: that of the film, its length and speed at least.
ChapterList chaptersOf(const FilmRequest& request, const Film& film, const ChapterRule& rule,
                       const Conversion& conversion);

}  // namespace tkv::disc
