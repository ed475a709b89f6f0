#pragma once

#include <functional>
#include <vector>

#include "disc/run/fault.h"

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

/// Does what a run does, and returns how it ended. `run`: returns what is wrong with the films that
/// it went on without.
Outcome outcomeOf(const std::function<std::vector<Fault>()>& run);

}  // namespace tkv::disc
