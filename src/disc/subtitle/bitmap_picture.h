#pragma once

#include "disc/subtitle/bitmap_cue.h"
#include "disc/subtitle/drawing.h"
#include "disc/subtitle/picture.h"

namespace tkv::disc {

/// Pictures in a film's canvas as a disc has them: scaled as the film is, in the two colours that
/// differ most for what they cover, and a third one of theirs, or else one between.
SubtitlePicture pictureOf(const BitmapCue& cue, const SubtitleFrame& frame);

}  // namespace tkv::disc
