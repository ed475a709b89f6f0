#pragma once

#include <string>

#include "system/processes.h"

namespace tkv::disc {

/// Has an NTSC player show the progressive pictures of a film, 24000/1001 a second, for three
/// fields and two by turns. `path`: a DVD program stream as ffmpeg has written it, whose times go
/// with that rate; only flags and times in it change, no byte moves. Throws DiscError when it
/// cannot be read or written or is none, Interrupted when the run is to stop.
void pullDown(const std::string& path, const ProgramStop& stop);

}  // namespace tkv::disc
