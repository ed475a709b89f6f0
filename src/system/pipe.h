#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "system/descriptor.h"

namespace tkv {

/// Both ends are closed in every program that is started, but for those that it is given: an end
/// left open there would hide the end of the data, or that nobody reads any more.
struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// `bytes`: how much may wait in it to be read, where that can be chosen; 0: as the system has it.
/// None when there are too many open files.
std::optional<Pipe> makePipe(int bytes = 0);

/// Writes all of the bytes, however often it has to wait for the reader; false when it is gone.
bool writeWhole(const Descriptor& writeEnd, std::span<const std::byte> bytes);

}  // namespace tkv
