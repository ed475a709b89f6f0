#include "graphics/sheet.h"

#include <cairo-pdf.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>
#include <new>
#include <numbers>
#include <utility>

#include "desktop/functions.h"
#include "desktop/pango_text.h"
#include "graphics/cairo_handles.h"
#include "system/unicode.h"

namespace tkv::desktop {

namespace {

using Pattern = std::unique_ptr<cairo_pattern_t, Releaser<cairo_pattern_destroy>>;

// PDF's unit.
constexpr double kPointsPerMillimetre = 72 / 25.4;

// From one size of a text to the next smaller one that is tried.
constexpr double kSmaller = 0.94;

// A longer text fills a sheet.
constexpr std::size_t kMostOfASheet = 2000;

SheetPlace inPoints(const SheetPlace& place) {
    return {place.left * kPointsPerMillimetre, place.top * kPointsPerMillimetre,
            place.width * kPointsPerMillimetre, place.height * kPointsPerMillimetre};
}

void draw(cairo_t* context, const SheetFill& fill) {
    const auto [left, top, width, height] = inPoints(fill.place);
    const Color& first = fill.colors.front();
    const Pattern pattern(
        fill.colors.size() > 1
            ? cairo_pattern_create_linear(0, top, 0, top + height)
            : cairo_pattern_create_rgba(first.red, first.green, first.blue, first.alpha));
    const std::size_t parts = fill.colors.size() - 1;
    for (std::size_t i = 0; parts > 0 && i <= parts; ++i) {
        const auto& [red, green, blue, alpha] = fill.colors[i];
        const double offset = static_cast<double>(i) / static_cast<double>(parts);
        cairo_pattern_add_color_stop_rgba(pattern.get(), offset, red, green, blue, alpha);
    }
    cairo_set_source(context, pattern.get());
    cairo_rectangle(context, left, top, width, height);
    cairo_fill(context);
}

// The file is embedded instead of the surface's pixels, which nobody looks at.
void draw(cairo_t* context, const SheetPicture& picture) {
    const auto [left, top, width, height] = inPoints(picture.place);
    const CairoSurface surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, picture.size.width, picture.size.height));
    cairo_surface_set_mime_data(surface.get(), CAIRO_MIME_TYPE_JPEG, picture.jpeg.data(),
                                picture.jpeg.size(), nullptr, nullptr);
    cairo_save(context);
    cairo_translate(context, left, top);
    cairo_scale(context, width / picture.size.width, height / picture.size.height);
    cairo_set_source_surface(context, surface.get(), 0, 0);
    cairo_paint(context);
    cairo_restore(context);
}

bool fits(PangoLayout* layout, const SheetText& text, double width, double height) {
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    return pango_layout_get_line_count(layout) <= text.mostLines &&
           pango_units_to_double(logical.width) <= width &&
           pango_units_to_double(logical.height) <= height;
}

void setSize(PangoLayout* layout, const SheetText& text, double points) {
    const FontDescription font = fontOf(static_cast<float>(points));
    if (text.isBold) pango_font_description_set_weight(font.get(), PANGO_WEIGHT_BOLD);
    pango_layout_set_font_description(layout, font.get());
}

// Pango takes "left" for where a line begins.
PangoAlignment alignmentOf(PangoLayout* layout, Alignment alignment) {
    if (alignment == Alignment::center) return PANGO_ALIGN_CENTER;
    const bool isReversed = pango_layout_get_direction(layout, 0) == PANGO_DIRECTION_RTL;
    return (alignment == Alignment::right) == isReversed ? PANGO_ALIGN_LEFT : PANGO_ALIGN_RIGHT;
}

PangoLayoutOwner layOut(const SheetText& text, double width, double height) {
    const std::string line = fmt::format("{}", fmt::join(linesToDraw(text.text), " "));
    const std::string_view shown = firstCharacters(line, kMostOfASheet);
    PangoLayoutOwner layout(pango_layout_new(sharedContext()));
    pango_layout_set_text(layout.get(), shown.data(), static_cast<int>(shown.size()));
    pango_layout_set_alignment(layout.get(), alignmentOf(layout.get(), text.alignment));
    pango_layout_set_width(layout.get(), pango_units_from_double(width));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD);
    double points = text.points;
    while (points > text.leastPoints) {
        setSize(layout.get(), text, points);
        if (fits(layout.get(), text, width, height)) return layout;
        points *= kSmaller;
    }
    setSize(layout.get(), text, text.leastPoints);
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    pango_layout_set_height(layout.get(), -text.mostLines);
    return layout;
}

void draw(cairo_t* context, const SheetText& text) {
    auto [left, top, width, height] = inPoints(text.place);
    cairo_save(context);
    cairo_translate(context, left, top);
    if (text.isTurned) {
        cairo_translate(context, width, 0);
        cairo_rotate(context, std::numbers::pi / 2);
        std::swap(width, height);
    }
    const PangoLayoutOwner layout = layOut(text, width, height);
    PangoRectangle logical;
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    const double free = height - pango_units_to_double(logical.height);
    cairo_move_to(context, 0, free * static_cast<int>(text.edge) / 2);
    const Color& color = text.color;
    cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
    pango_cairo_show_layout(context, layout.get());
    cairo_restore(context);
}

// Callback for each part of the file. `file`: where it goes.
cairo_status_t append(void* file, const unsigned char* bytes, unsigned count) {
    auto& whole = *static_cast<Bytes*>(file);
    try {
        whole.insert(whole.end(), bytes, bytes + count);
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

std::optional<Bytes> sheetPdf(const Sheet& sheet) {
    Bytes file;
    const CairoSurface surface(cairo_pdf_surface_create_for_stream(
        append, &file, sheet.width * kPointsPerMillimetre, sheet.height * kPointsPerMillimetre));
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE,
                                   validUtf8(sheet.title).c_str());
    // Without the time, which would be that of the run.
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, "");
    const CairoContext context(cairo_create(surface.get()));
    for (const SheetItem& item : sheet.items)
        std::visit([&](const auto& shape) { draw(context.get(), shape); }, item);
    const bool isDrawn = cairo_status(context.get()) == CAIRO_STATUS_SUCCESS;
    cairo_surface_finish(surface.get());
    if (!isDrawn || cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        return std::nullopt;
    return file;
}

}  // namespace tkv::desktop
