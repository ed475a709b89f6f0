#pragma once

#include "disc/subtitle/drawing.h"
#include "disc/subtitle/pgs.h"
#include "disc/subtitle/picture.h"

namespace tkv::disc {

/// Pictures in a film's canvas as a disc has them: scaled as the film is, in the two colours that
/// differ most for what they cover, and one between.
SubtitlePicture pictureOf(const BitmapCue& cue, const SubtitleFrame& frame);

}  // namespace tkv::disc
