#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "desktop/functions.h"
#include "graphics/cairo_handles.h"
#include "system/unicode.h"

namespace tkv::desktop {

namespace {

constexpr const char* kFontFamily = "DejaVu Sans";

using PangoContextOwner = std::unique_ptr<PangoContext, Releaser<g_object_unref>>;
using PangoLayoutOwner = std::unique_ptr<PangoLayout, Releaser<g_object_unref>>;
using FontDescription =
    std::unique_ptr<PangoFontDescription, Releaser<pango_font_description_free>>;
using FontOptions = std::unique_ptr<cairo_font_options_t, Releaser<cairo_font_options_destroy>>;
using LayoutIterator = std::unique_ptr<PangoLayoutIter, Releaser<pango_layout_iter_free>>;

/// Pixel rectangle from the top left.
struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool isEmpty() const { return right <= left || bottom <= top; }
    Box grownBy(int margin) const {
        return {left - margin, top - margin, right + margin, bottom + margin};
    }
    Box cutTo(const Box& other) const {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
    Box joinedWith(const Box& other) const {
        if (isEmpty()) return other;
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }
};

/// Most of the time that a first text takes goes into finding the fonts, so one context serves the
/// whole process.
PangoContext* sharedContext() {
    static const PangoContextOwner context = [] {
        PangoContextOwner made(pango_font_map_create_context(pango_cairo_font_map_get_default()));
        // Neither hinting nor sub-pixel colour: the same picture on every machine.
        const FontOptions options(cairo_font_options_create());
        cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(made.get(), options.get());
        return made;
    }();
    return context.get();
}

/// Pango reads left and right as the start and end of the text's own direction; here they are the
/// sides of the page.
PangoAlignment pangoAlignment(Alignment alignment, PangoLayout* layout) {
    if (alignment == Alignment::center) return PANGO_ALIGN_CENTER;
    const bool rightToLeft = pango_layout_line_get_resolved_direction(
                                 pango_layout_get_line_readonly(layout, 0)) == PANGO_DIRECTION_RTL;
    const bool toTheRight = alignment == Alignment::right;
    return toTheRight != rightToLeft ? PANGO_ALIGN_RIGHT : PANGO_ALIGN_LEFT;
}

/// A caller's text may be far longer than a page is wide or high, and laying it all out takes
/// seconds: keeps the first lines of a rectangle, the last ones of a text that grows upwards from a
/// point, and the beginning of each.
std::string shownPart(const std::string& text, const TextPlace& place) {
    constexpr std::size_t kMostLines = 1000;
    constexpr std::size_t kMostCharacters = 4000;
    std::vector<std::string_view> lines;
    for (std::string_view rest = text; !rest.empty();) {
        int next = 0;
        pango_find_paragraph_boundary(rest.data(), static_cast<int>(rest.size()), nullptr, &next);
        lines.push_back(rest.substr(0, static_cast<std::size_t>(next)));
        rest.remove_prefix(static_cast<std::size_t>(next));
    }
    std::span<const std::string_view> kept = lines;
    if (kept.size() > kMostLines) {
        kept = std::holds_alternative<Rect>(place) ? kept.first(kMostLines) : kept.last(kMostLines);
    }
    std::string shown;
    for (const std::string_view line : kept) {
        shown += firstCharacters(line, kMostCharacters);
        if (characterCount(line) > kMostCharacters) shown += '\n';
    }
    return shown;
}

PangoLayoutOwner layOut(const std::string& text, const TextAttributes& attributes,
                        const TextPlace& place) {
    PangoLayoutOwner layout(pango_layout_new(sharedContext()));
    const FontDescription font(pango_font_description_new());
    pango_font_description_set_family_static(font.get(), kFontFamily);
    pango_font_description_set_absolute_size(font.get(), double{attributes.fontSize} * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
    if (const Rect* rect = std::get_if<Rect>(&place)) {
        pango_layout_set_width(layout.get(), pango_units_from_double(rect->width));
        pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_alignment(layout.get(),
                                   pangoAlignment(attributes.alignment, layout.get()));
        pango_layout_set_justify(layout.get(), attributes.alignment == Alignment::justified);
    }
    return layout;
}

/// A line of a layout and where its baseline starts, in pixels from the canvas' top left.
struct PlacedLine {
    PangoLayoutLine* line;  ///< Owned by the layout.
    int x;
    int baseline;

    Box inkBox() const {
        PangoRectangle ink;
        pango_layout_line_get_pixel_extents(line, &ink, nullptr);
        return {x + ink.x, baseline + ink.y, x + ink.x + ink.width, baseline + ink.y + ink.height};
    }
};

/// The lines that are shown. Baselines stand on whole pixels, which keeps the letters crisp.
std::vector<PlacedLine> placeLines(PangoLayout* layout, const TextPlace& place, PixelSize canvas) {
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    double left = 0;
    double top = 0;
    double height = 0;
    if (const Rect* rect = std::get_if<Rect>(&place)) {
        left = rect->x;
        top = canvas.height - (rect->y + rect->height);
        height = rect->height;
    } else {
        const Point& point = std::get<Point>(place);
        height = pango_units_to_double(logical.height);
        left = point.x;
        top = canvas.height - point.y - height;
    }

    std::vector<PlacedLine> lines;
    const LayoutIterator at(pango_layout_get_iter(layout));
    do {
        PangoRectangle extents;
        pango_layout_iter_get_line_extents(at.get(), nullptr, &extents);
        const double bottom = pango_units_to_double(extents.y + extents.height);
        if (!lines.empty() && bottom > height + 0.01) break;
        lines.push_back(
            {pango_layout_iter_get_line_readonly(at.get()),
             static_cast<int>(std::lround(left + pango_units_to_double(extents.x))),
             static_cast<int>(std::lround(
                 top + pango_units_to_double(pango_layout_iter_get_baseline(at.get()))))});
    } while (pango_layout_iter_next_line(at.get()));
    return lines;
}

void drawLines(Bitmap& target, const Box& box, const std::vector<PlacedLine>& lines,
               const Color& color) {
    const CairoSurface surface = surfaceOn(target);
    const CairoContext context(cairo_create(surface.get()));
    cairo_set_source_rgba(context.get(), color.red, color.green, color.blue, color.alpha);
    for (const PlacedLine& line : lines) {
        cairo_move_to(context.get(), line.x - box.left, line.baseline - box.top);
        pango_cairo_show_layout_line(context.get(), line.line);
    }
}

}  // namespace

std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas) {
    if (text.empty() || !(attributes.fontSize > 0)) return std::nullopt;
    const PangoLayoutOwner layout = layOut(shownPart(validUtf8(text), place), attributes, place);
    const std::vector<PlacedLine> lines = placeLines(layout.get(), place, canvas);
    Box ink;
    for (const PlacedLine& line : lines)
        ink = ink.joinedWith(line.inkBox());
    if (ink.isEmpty()) return std::nullopt;

    // Letters just off the canvas still cast their shadow onto it.
    const int margin = shadowReach(attributes.shadow);
    const Box canvasBox{0, 0, canvas.width, canvas.height};
    const Box box = ink.grownBy(margin).cutTo(canvasBox.grownBy(margin));
    if (box.isEmpty()) return std::nullopt;
    std::optional<Bitmap> bitmap = Bitmap::create({box.right - box.left, box.bottom - box.top});
    if (!bitmap) return std::nullopt;
    drawLines(*bitmap, box, lines, attributes.color);
    addShadow(*bitmap, attributes.shadow);
    return PlacedBitmap{*std::move(bitmap), box.left, box.top};
}

}  // namespace tkv::desktop
