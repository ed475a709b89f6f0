#pragma once

#include "disc/make/cover.h"
#include "disc/make/menu_setting.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// Makes the pictures of a cover for that paper: on the front the background that was given, or a
/// scene of the first film on which something is to be seen, with no more pixels than it has and
/// the paper shows; on the back moments of films spread over the disc. What cannot be taken is
/// left out: no disc is to fail for its cover.
CoverPictures makeCoverPictures(const MenuSetting& setting, const DiscPlan& plan, Paper paper,
                                Workshop& workshop);

}  // namespace tkv::disc
