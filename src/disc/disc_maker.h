#pragma once

#include "disc/command_line.h"
#include "disc/progress.h"

namespace tkv::disc {

/// Writes the project file that the options name, from what the films tell.
void writeProjectFile(const Options& options);

/// Makes the disc, or the pictures of its menus only, and says on the standard output what it has
/// made. Throws DiscError, or Interrupted after stopPrograms().
void makeDisc(const Options& options);

}  // namespace tkv::disc
