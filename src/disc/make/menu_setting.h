#pragma once

#include <string>

#include "disc/make/menu_clip.h"
#include "disc/plan/plan.h"
#include "disc/project/project.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// What stands behind the menus.
enum class BackgroundKind { none, picture, scene };

/// What all menus of a disc share.
struct MenuSetting {
    Standard standard = Standard::pal;
    int rate = 0;  ///< kb/s of the picture
    BackgroundKind background = BackgroundKind::none;
    std::string picture;  ///< absolute path of that background; of a scene none
    bool dims = true;     ///< Is it darkened as far as the texts need it?
    MenuSound sound;
};

/// The setting that a project asks for; a scene is one of the first film on which something is to
/// be seen. Looks at the sound's file for its stamp.
MenuSetting menuSettingOf(const Project& project, const DiscPlan& plan);

/// Makes of a picture, an absolute path, a background as makeBackground does, but as bright as it
/// is. Returns its name in the workshop. Throws as that.
std::string cutBackground(const std::string& picture, Workshop& workshop);

/// Makes the background, of the page's size: the picture cut to the shape of a wide display, or a
/// scene that is blurred; dark enough for the texts if it is to be. Returns its name in the
/// workshop; empty for none. Throws DiscError where that is not possible.
std::string makeBackground(const MenuSetting& setting, const DiscPlan& plan, Workshop& workshop);

/// Makes the picture behind the jacket, of the jacket's size and shape, of the background that was
/// given, or of a scene. Returns its name in the workshop; empty for none.
/// Throws as makeBackground.
std::string makeJacketPicture(const MenuSetting& setting, const DiscPlan& plan, Workshop& workshop);

}  // namespace tkv::disc
