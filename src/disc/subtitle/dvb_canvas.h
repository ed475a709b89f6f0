#pragma once

#include <string_view>

#include "graphics/geometry.h"

namespace tkv::disc {

/// The size of the canvas in which pictures of subtitles lie, as television (DVB) sends them.
PixelSize dvbCanvas(std::string_view segments);

}  // namespace tkv::disc
