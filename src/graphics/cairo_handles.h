#pragma once

#include <cairo.h>

#include <memory>

#include "graphics/bitmap.h"
#include "graphics/releaser.h"

// Owning handles (RAII) of cairo's objects, private to this layer.

namespace tkv {

using CairoSurface = std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_destroy>>;
using CairoContext = std::unique_ptr<cairo_t, Releaser<cairo_destroy>>;

/// A surface on the bitmap's own pixels, in pixels from the top left; the bitmap must outlive it.
/// In cairo's error state (drawing does nothing) when a side is above 32,767 pixels.
CairoSurface surfaceOn(Bitmap& bitmap);

/// The same for reading only.
CairoSurface surfaceOn(const Bitmap& bitmap);

}  // namespace tkv
