#pragma once

#include <string>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"
#include "graphics/bitmap.h"

namespace tkv::disc {

/// The ratio of contrast that texts have on a page at least, as WCAG 2 defines it.
inline constexpr double kLeastContrast = 4.5;

/// Darkens a background, evenly and no further than the texts of all pages need for that contrast.
/// `background`, and what is returned: names in the workshop of pictures of the page's size.
std::string dimmedBackground(const std::string& background, const DiscPlan& plan,
                             Workshop& workshop);

/// What the background's pixels are multiplied by for that: above 0, at most 1. `background`: as
/// large as the page.
double dimmingFor(const Bitmap& background, const DiscPlan& plan);

}  // namespace tkv::disc
