#pragma once

#include <string>
#include <vector>

#include "disc/project/project.h"

namespace tkv::disc {

/// A film of pictures, or of folders of them: absolute paths, at least one. It is called as the
/// only folder, or as that of the first picture. Looks at what is there.
FilmRequest filmOfPictures(std::vector<std::string> paths);

}  // namespace tkv::disc
