#pragma once

#include <vector>

#include "disc/project/command_line.h"
#include "disc/run/fault.h"
#include "disc/run/progress.h"
#include "system/processes.h"

namespace tkv::disc {

/// How a run ended.
struct Outcome {
    enum class How {
        made,
        interrupted,  ///< by its ProgramStop; nothing is wrong
        lacking,      ///< made without the films that have faults
        failed,
    };
    How how = How::made;
    std::vector<Fault> faults;
};

/// Writes the project file that the options name, from what the films tell.
/// The receiver is told how the run goes on and, line by line, what it has made; stopping `stop`,
/// which is this run's alone, ends the run. Both must outlive it.
Outcome writeProjectFile(const Options& options, ProgressReceiver& receiver, ProgramStop& stop);

/// The same for the disc, or the pictures of its menus only.
Outcome makeDisc(const Options& options, ProgressReceiver& receiver, ProgramStop& stop);

}  // namespace tkv::disc
