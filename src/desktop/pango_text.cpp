#include "desktop/pango_text.h"

namespace tkv::desktop {

namespace {

constexpr const char* kFontFamily = "DejaVu Sans";

using PangoContextOwner = std::unique_ptr<PangoContext, Releaser<g_object_unref>>;
using FontOptions = std::unique_ptr<cairo_font_options_t, Releaser<cairo_font_options_destroy>>;

}  // namespace

PangoContext* sharedContext() {
    static const PangoContextOwner context = [] {
        PangoContextOwner made(pango_font_map_create_context(pango_cairo_font_map_get_default()));
        // No hinting and no subpixel antialiasing: the same picture on every machine.
        const FontOptions options(cairo_font_options_create());
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(made.get(), options.get());
        return made;
    }();
    return context.get();
}

FontDescription fontOf(float size) {
    FontDescription font(pango_font_description_new());
    pango_font_description_set_family_static(font.get(), kFontFamily);
    pango_font_description_set_absolute_size(font.get(), double{size} * PANGO_SCALE);
    return font;
}

}  // namespace tkv::desktop
