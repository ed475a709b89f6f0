#pragma once

#include "disc/project/command_line.h"
#include "disc/run/outcome.h"
#include "disc/run/progress.h"
#include "system/processes.h"

namespace tkv::disc {

/// Writes the project file that the options name, from what the films tell.
/// The receiver is told how the run goes on and, line by line, what it has made; stopping `stop`,
/// which is this run's alone, ends the run. Both must outlive it.
Outcome writeProjectFile(const Options& options, ProgressReceiver& receiver, ProgramStop& stop);

}  // namespace tkv::disc
