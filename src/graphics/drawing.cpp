#include "graphics/drawing.h"

#include "graphics/cairo_handles.h"

namespace tkv {

namespace {

/// From drawing units to pixels.
struct PixelScale {
    explicit PixelScale(const Bitmap& bitmap)
        : x(bitmap.width() / bitmap.nominalSize().width),
          y(bitmap.height() / bitmap.nominalSize().height),
          height(bitmap.height()) {}

    /// The same rectangle in pixels from the top left; its y is that of the top edge.
    Rect pixels(const Rect& units) const {
        return {units.x * x, height - (units.y + units.height) * y, units.width * x,
                units.height * y};
    }

    double x;
    double y;
    double height;
};

void addRectangle(cairo_t* context, const Rect& rect) {
    cairo_rectangle(context, rect.x, rect.y, rect.width, rect.height);
}

CairoContext contextOn(Bitmap& bitmap) {
    return CairoContext(cairo_create(surfaceOn(bitmap).get()));
}

bool isEmpty(const Rect& rect) {
    return !(rect.width > 0 && rect.height > 0);
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

void fillRect(Bitmap& target, const Rect& area, const Color& color) {
    const CairoContext context = contextOn(target);
    cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(context.get(), color.red, color.green, color.blue, color.alpha);
    addRectangle(context.get(), PixelScale(target).pixels(area));
    cairo_fill(context.get());
}

void drawPicture(Bitmap& target, const Bitmap& picture, const Rect& from, const Rect& to,
                 Compositing compositing, double opacity) {
    const Rect whole{0, 0, picture.nominalSize().width, picture.nominalSize().height};
    const Rect source = PixelScale(picture).pixels(from == Rect{} ? whole : from);
    const Rect destination = PixelScale(target).pixels(to);
    if (isEmpty(source) || isEmpty(destination)) return;

    const CairoContext context = contextOn(target);
    cairo_t* const cr = context.get();
    addRectangle(cr, destination);
    cairo_clip(cr);
    cairo_translate(cr, destination.x, destination.y);
    cairo_scale(cr, destination.width / source.width, destination.height / source.height);
    cairo_translate(cr, -source.x, -source.y);
    addRectangle(
        cr, {0, 0, static_cast<double>(picture.width()), static_cast<double>(picture.height())});
    cairo_clip(cr);

    const CairoSurface pixels = surfaceOn(picture);
    cairo_set_source_surface(cr, pixels.get(), 0, 0);
    // Padding keeps the filter from mixing transparency into the picture's edges.
    cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_set_operator(cr, compositing == Compositing::sourceOver ? CAIRO_OPERATOR_OVER
                                                                  : CAIRO_OPERATOR_DEST_OVER);
    cairo_paint_with_alpha(cr, opacity);
}

void blend(Bitmap& target, const PlacedBitmap& placed, double opacity) {
    const CairoContext context = contextOn(target);
    const CairoSurface pixels = surfaceOn(placed.pixels);
    cairo_set_source_surface(context.get(), pixels.get(), placed.left, placed.top);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_NEAREST);
    cairo_paint_with_alpha(context.get(), opacity);
}

}  // namespace tkv
