#include "graphics/drawing.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "graphics/cairo_handles.h"
#include "graphics/resample.h"

namespace tkv {

namespace {

/// Converts a rectangle from the bitmap's drawing units to its pixels.
PixelRect pixelsOf(const Bitmap& bitmap, const Rect& units) {
    const PixelRect& extent = bitmap.extent();
    const double x = extent.width / bitmap.nominalSize().width;
    const double y = extent.height / bitmap.nominalSize().height;
    return {extent.left + units.x * x, extent.top + extent.height - (units.y + units.height) * y,
            units.width * x, units.height * y};
}

/// The pixels of a picture's part; `Rect{}` means all of it.
PixelRect partOf(const Bitmap& picture, const Rect& from) {
    return from == Rect{} ? picture.extent() : pixelsOf(picture, from);
}

void addRectangle(cairo_t* context, const PixelRect& rect) {
    cairo_rectangle(context, rect.left, rect.top, rect.width, rect.height);
}

CairoContext contextOn(Bitmap& bitmap) {
    return CairoContext(cairo_create(surfaceOn(bitmap).get()));
}

/// cairo's errors are sticky: contexts and surfaces keep the first one, and do nothing from then
/// on; a surface's error propagates to the context that draws on it or with it.
bool isDrawn(cairo_t* context) {
    return cairo_status(context) == CAIRO_STATUS_SUCCESS;
}

bool isEmpty(const PixelRect& rect) {
    return !(rect.width > 0 && rect.height > 0);
}

PixelRect common(const PixelRect& a, const PixelRect& b) {
    const double left = std::max(a.left, b.left);
    const double top = std::max(a.top, b.top);
    return {left, top, std::min(a.left + a.width, b.left + b.width) - left,
            std::min(a.top + a.height, b.top + b.height) - top};
}

/// The pixel-aligned bounding box of a rectangle.
PixelRect touched(const PixelRect& rect) {
    const double left = std::floor(rect.left);
    const double top = std::floor(rect.top);
    return {left, top, std::ceil(rect.left + rect.width) - left,
            std::ceil(rect.top + rect.height) - top};
}

/// Maps `rect` by the transformation that maps `from` to `to`.
PixelRect scaled(const PixelRect& rect, const PixelRect& from, const PixelRect& to) {
    const double x = to.width / from.width;
    const double y = to.height / from.height;
    return {to.left + (rect.left - from.left) * x, to.top + (rect.top - from.top) * y,
            rect.width * x, rect.height * y};
}

/// Whether a picture's part `from` is drawn at `to` pixel by pixel, by a surface that cairo takes.
bool isUnscaled(const Bitmap& picture, const PixelRect& from, const PixelRect& to) {
    constexpr int kLargestSurface = 32767;
    const auto isWhole = [](double shift) { return shift == std::floor(shift); };
    return from.width == to.width && from.height == to.height && isWhole(to.left - from.left) &&
           isWhole(to.top - from.top) &&
           std::max(picture.width(), picture.height()) <= kLargestSurface;
}

/// Sets a picture as cairo's source, its top left pixel at a whole one of the target.
void setSource(cairo_t* context, const Bitmap& picture, double left, double top) {
    const CairoSurface pixels = surfaceOn(picture);
    cairo_set_source_surface(context, pixels.get(), left, top);
    if (!isDrawn(context)) return;  // cairo_get_source would create a source, and leak it.
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
}

}  // namespace

CairoSurface surfaceOn(Bitmap& bitmap) {
    return CairoSurface(cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(bitmap.row(0)), CAIRO_FORMAT_ARGB32, bitmap.width(),
        bitmap.height(), static_cast<int>(bitmap.rowBytes())));
}

CairoSurface surfaceOn(const Bitmap& bitmap) {
    // cairo has no type for a surface that is only read.
    return surfaceOn(const_cast<Bitmap&>(bitmap));
}

bool fillRect(Bitmap& target, const Rect& area, const Color& color) {
    const CairoContext context = contextOn(target);
    cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(context.get(), color.red, color.green, color.blue, color.alpha);
    addRectangle(context.get(), pixelsOf(target, area));
    cairo_fill(context.get());
    return isDrawn(context.get());
}

bool drawPicture(Bitmap& target, const Bitmap& picture, const Rect& from, const Rect& to,
                 Compositing compositing, double opacity) {
    const PixelRect source = partOf(picture, from);
    const PixelRect destination = pixelsOf(target, to);
    if (isEmpty(source) || isEmpty(destination)) return true;
    const PixelRect whole = scaled(picture.extent(), source, destination);
    const PixelRect canvas{0, 0, static_cast<double>(target.width()),
                           static_cast<double>(target.height())};
    const PixelRect seen = common(common(destination, whole), canvas);
    if (isEmpty(seen)) return true;

    std::optional<Bitmap> made;  // Outlives the context that paints it.
    const CairoContext context = contextOn(target);
    cairo_t* const cr = context.get();
    addRectangle(cr, destination);
    cairo_clip(cr);
    addRectangle(cr, whole);
    cairo_clip(cr);
    if (isUnscaled(picture, source, destination)) {
        setSource(cr, picture, destination.left - source.left, destination.top - source.top);
    } else {
        // The clip antialiases fractional edges; the resampled bitmap covers whole pixels.
        const PixelRect area = touched(seen);
        const PixelSize size{static_cast<int>(area.width), static_cast<int>(area.height)};
        made = resampled(picture, scaled(area, destination, source), size);
        if (!made) return false;
        setSource(cr, *made, area.left, area.top);
    }
    cairo_set_operator(cr, compositing == Compositing::sourceOver ? CAIRO_OPERATOR_OVER
                                                                  : CAIRO_OPERATOR_DEST_OVER);
    cairo_paint_with_alpha(cr, opacity);
    return isDrawn(cr);
}

std::optional<Bitmap> filledBy(PixelSize size, const Bitmap& picture, const Rect& from,
                               const Rect& to) {
    constexpr double kNothing = 1e-6;  // As much as rounding errors.
    const PixelRect source = partOf(picture, from);
    const PixelRect destination{to.x, size.height - to.y - to.height, to.width, to.height};
    if (isEmpty(source) || isEmpty(destination)) return std::nullopt;
    const PixelRect seen = common(destination, scaled(picture.extent(), source, destination));
    if (seen.left > kNothing || seen.top > kNothing ||
        seen.left + seen.width < size.width - kNothing ||
        seen.top + seen.height < size.height - kNothing) {
        return std::nullopt;
    }
    const PixelRect all{0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    return resampled(picture, scaled(all, destination, source), size);
}

bool blend(Bitmap& target, const PlacedBitmap& placed, double opacity) {
    const CairoContext context = contextOn(target);
    setSource(context.get(), placed.pixels, placed.left, placed.top);
    cairo_paint_with_alpha(context.get(), opacity);
    return isDrawn(context.get());
}

}  // namespace tkv
