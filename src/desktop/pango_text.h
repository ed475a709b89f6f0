#pragma once

#include <pango/pangocairo.h>

#include <memory>

#include "graphics/releaser.h"

// What all texts are set with, on pages and on paper.

namespace tkv::desktop {

using PangoLayoutOwner = std::unique_ptr<PangoLayout, Releaser<g_object_unref>>;
using FontDescription =
    std::unique_ptr<PangoFontDescription, Releaser<pango_font_description_free>>;

/// Loading the font configuration dominates the first text's time, so the whole process shares one
/// context.
PangoContext* sharedContext();

/// The one font. `size`: units per em.
FontDescription fontOf(float size);

}  // namespace tkv::desktop
