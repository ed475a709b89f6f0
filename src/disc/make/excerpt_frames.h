#pragma once

#include <string>
#include <vector>

#include "disc/plan/plan.h"
#include "disc/run/workshop.h"

namespace tkv::disc {

/// A moving picture that is to be part of an excerpt's frames: the names of its pictures in the
/// workshop, in order.
using Pictures = std::vector<std::string>;

/// An excerpt's frame, by its number from 0, as pictures in a folder are called.
std::string frameName(int number);

/// Writes the frames of an excerpt into a folder of the workshop, as JPEGs that play as a loop.
/// `parts`: one for each picture of the shape, of its size; the excerpt is as long as the shortest.
/// `lead`: so many of each part's pictures stand before its first frame; the last frames turn into
/// them, so that the first follows from the last. Around the window the frames repeat its edge, as
/// far as the blocks of a JPEG reach across it. Throws DiscError when a picture cannot be read or
/// written, Interrupted when the workshop's programs are stopped.
void writeExcerpt(const std::vector<Pictures>& parts, const FrameShape& shape, int lead,
                  const std::string& folder, const Workshop& workshop);

}  // namespace tkv::disc
