#pragma once

#include "composer/background.h"
#include "composer/dvd_menu_picture.h"
#include "composer/frame_writer.h"
#include "composer/menu_request.h"

// The modes of a menu, after its inputs are resolved. Each writes the progress lines of its passes
// and returns whether the composition succeeded. `request`: thumbnails resolved, output's tilde
// expanded.

namespace tkv {

/// One picture of the first pass, 640 x 360, at the output path.
bool writePreview(const MenuRequest& request, const Background& background);

/// The folder of numbered frames at the output path, one for each pass.
bool writeFrames(const MenuRequest& request, const Background& background, EqualPages equalPages);

/// The same pages as bitmaps, without a file; also false when `take` has returned false.
bool drawFrames(const MenuRequest& request, const Background& background, const FrameTaker& take);

/// The button maps and the highlight and select pictures beside the output path, which itself is
/// only written while verbose: a picture of the buttons' areas.
bool writeOverlay(const MenuRequest& request);

/// The cover picture at the output path.
bool writeJacket(const MenuRequest& request, const Background& background);

}  // namespace tkv
