#pragma once

#include <optional>
#include <string>

#include "composer/menu_request.h"
#include "composer/page.h"

namespace tkv {

/// The picture behind a page.
struct Background {
    std::optional<std::string> path;
    /// How much larger than the canvas it is drawn; not 1 when the page asks for its first
    /// thumbnail as background, even if no picture could be made of that.
    double zoom = 1.0;

    bool isZoomed() const;
};

/// The background of a request whose thumbnails are resolved, in all modes but overlay. One that is
/// missing is dropped; one that equals the first thumbnail is cropped to 960 x 540 into "bkgV.jpg"
/// in the folder that holds the output, and that file becomes the background.
Background prepareBackground(const MenuRequest& request);

/// A picture behind a page: the whole canvas, enlarged `zoom` times about its centre, at 60 %.
PictureLayer backgroundPicture(const std::string& path, double zoom, PixelSize canvas);

}  // namespace tkv
