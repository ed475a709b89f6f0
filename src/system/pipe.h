#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "system/descriptor.h"

namespace tkv {

/// Both ends are close-on-exec, so that a child process has only those that it is given: an
/// inherited end would keep readers from the end of file, and writers from the broken pipe.
struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// `bytes`: the capacity, where that can be set; 0: the system's default. None when there are too
/// many open files.
std::optional<Pipe> makePipe(int bytes = 0);

/// Writes all of the bytes, blocking as often as the pipe is full; false when its reader is gone.
bool writeWhole(const Descriptor& writeEnd, std::span<const std::byte> bytes);

}  // namespace tkv
