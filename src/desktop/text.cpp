#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "desktop/functions.h"
#include "desktop/pango_text.h"
#include "graphics/cairo_handles.h"
#include "system/unicode.h"

namespace tkv::desktop {

namespace {

using FontOwner = std::unique_ptr<PangoFont, Releaser<g_object_unref>>;
using Fontset = std::unique_ptr<PangoFontset, Releaser<g_object_unref>>;
using FontMetrics = std::unique_ptr<PangoFontMetrics, Releaser<pango_font_metrics_unref>>;

/// A rectangle in pixels, origin at the top left.
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

/// The metrics of a line, in whole pixels. They are those of the primary font whatever fallback
/// fonts a text uses, so that the captions of a row share a baseline.
struct LineBox {
    int ascent;
    int height;
};

LineBox lineBoxOf(const PangoFontDescription* font) {
    const FontOwner face(pango_context_load_font(sharedContext(), font));
    const FontMetrics metrics(pango_font_get_metrics(face.get(), nullptr));
    const int ascent = PANGO_PIXELS_CEIL(pango_font_metrics_get_ascent(metrics.get()));
    const int descent = PANGO_PIXELS_CEIL(pango_font_metrics_get_descent(metrics.get()));
    return {ascent, std::max(1, ascent + descent)};
}

/// The part of the canvas that a text may fill, in pixels from the top left.
struct Frame {
    double left;
    double top;
    double width;
    double height;
    Alignment alignment;
    bool growsUpwards;  ///< Anchored by the last line at the bottom, not the first at the top.

    double topOf(std::size_t lineCount, const LineBox& box) const {
        return growsUpwards ? top + height - static_cast<double>(lineCount) * box.height : top;
    }
    double leftOf(double lineWidth) const {
        if (alignment == Alignment::right) return left + width - lineWidth;
        if (alignment == Alignment::center) return left + (width - lineWidth) / 2;
        return left;
    }
};

Frame frameOf(const TextPlace& place, Alignment alignment, PixelSize canvas) {
    if (const Rect* rect = std::get_if<Rect>(&place)) {
        return {rect->x,     canvas.height - rect->y - rect->height,
                rect->width, rect->height,
                alignment,   false};
    }
    const Point& point = std::get<Point>(place);
    return {point.x, 0, canvas.width - point.x, canvas.height - point.y, Alignment::left, true};
}

/// The lines that fit into the frame, but at least one; if it grows upwards, also the two that may
/// overlap it from above. A caller's text may be far longer, and its layout would take seconds.
std::span<const std::string> shownLines(const std::vector<std::string>& lines, const Frame& frame,
                                        const LineBox& box) {
    const double fitting = std::floor((frame.height + 0.01) / box.height);
    const double most = frame.growsUpwards ? fitting + 2 : std::max(fitting, 1.0);
    const std::span<const std::string> all = lines;
    if (most >= static_cast<double>(all.size())) return all;
    const auto count = static_cast<std::size_t>(std::max(most, 0.0));
    return frame.growsUpwards ? all.last(count) : all.first(count);
}

/// Lines wider than that, in pixels, are ellipsized at their end.
PangoLayoutOwner layOut(std::span<const std::string> lines, const PangoFontDescription* font,
                        double width) {
    constexpr std::size_t kMostCharacters = 4000;
    std::string text;
    for (const std::string& line : lines) {
        text += firstCharacters(line, kMostCharacters);
        text += '\n';
    }
    text.pop_back();
    PangoLayoutOwner layout(pango_layout_new(sharedContext()));
    pango_layout_set_font_description(layout.get(), font);
    pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
    pango_layout_set_width(layout.get(), pango_units_from_double(width));
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
    return layout;
}

/// A line of a layout and the origin of its baseline, in pixels from the canvas' top left.
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

/// Pango widens the ellipsis glyph to fill the line's width, which would break the alignment.
void tightenEllipsis(PangoLayoutLine* line) {
    for (const GSList* at = line->runs; at != nullptr; at = at->next) {
        const auto* run = static_cast<const PangoGlyphItem*>(at->data);
        const PangoAnalysis& analysis = run->item->analysis;
        if ((analysis.flags & PANGO_ANALYSIS_FLAG_IS_ELLIPSIS) == 0) continue;
        PangoGlyphInfo& dots = run->glyphs->glyphs[0];
        PangoRectangle logical;
        pango_font_get_glyph_extents(analysis.font, dots.glyph, nullptr, &logical);
        dots.geometry.width = logical.width;
    }
}

/// Baselines are snapped to whole pixels, which keeps the glyphs crisp. Pango itself would align
/// each line by its base direction.
std::vector<PlacedLine> placeLines(PangoLayout* layout, const Frame& frame, const LineBox& box) {
    const auto count = static_cast<std::size_t>(pango_layout_get_line_count(layout));
    long baseline = std::lround(frame.topOf(count, box)) + box.ascent;
    std::vector<PlacedLine> placed;
    for (const GSList* at = pango_layout_get_lines(layout); at != nullptr; at = at->next) {
        auto* const line = static_cast<PangoLayoutLine*>(at->data);
        tightenEllipsis(line);
        PangoRectangle logical;
        pango_layout_line_get_extents(line, nullptr, &logical);
        const double left = frame.leftOf(pango_units_to_double(logical.width));
        placed.push_back({line, static_cast<int>(std::lround(left)), static_cast<int>(baseline)});
        baseline += box.height;
    }
    return placed;
}

bool drawLines(Bitmap& target, const Box& box, const std::vector<PlacedLine>& lines,
               const Color& color) {
    const CairoSurface surface = surfaceOn(target);
    const CairoContext context(cairo_create(surface.get()));
    // Of a source's opacity colour glyphs take no notice, so the whole is drawn translucent.
    if (color.alpha < 1) cairo_push_group(context.get());
    cairo_set_source_rgba(context.get(), color.red, color.green, color.blue, 1);
    for (const PlacedLine& line : lines) {
        cairo_move_to(context.get(), line.x - box.left, line.baseline - box.top);
        pango_cairo_show_layout_line(context.get(), line.line);
    }
    if (color.alpha < 1) {
        cairo_pop_group_to_source(context.get());
        cairo_paint_with_alpha(context.get(), color.alpha);
    }
    return cairo_status(context.get()) == CAIRO_STATUS_SUCCESS;
}

/// The letters in whose place Pango draws boxes.
void appendBoxes(const PangoGlyphString& string, std::u32string& letters) {
    constexpr char32_t kReplacement = 0xFFFD;  // For it Pango has a sign of its own.
    for (int i = 0; i < string.num_glyphs; ++i) {
        const PangoGlyph glyph = string.glyphs[i].glyph;
        const char32_t letter = glyph & ~PANGO_GLYPH_UNKNOWN_FLAG;
        if (letter != glyph && letter != kReplacement) letters += letter;
    }
}

/// Callback for each font of a fontset. `names` is a string; FALSE continues the iteration.
gboolean appendName(PangoFontset*, PangoFont* face, gpointer names) {
    const FontDescription description(pango_font_describe(face));
    const std::unique_ptr<char, Releaser<g_free>> name(
        pango_font_description_to_string(description.get()));
    *static_cast<std::string*>(names) += std::string(name.get()) + '\n';
    return FALSE;
}

}  // namespace

std::optional<PlacedBitmap> rasterizeText(const std::string& text, const TextAttributes& attributes,
                                          const TextPlace& place, PixelSize canvas) {
    const std::vector<std::string> all = linesToDraw(text);
    if (all.empty() || !(attributes.fontSize > 0)) return std::nullopt;
    const FontDescription font = fontOf(attributes.fontSize);
    const LineBox lineBox = lineBoxOf(font.get());
    const Frame frame = frameOf(place, attributes.alignment, canvas);
    const std::span<const std::string> shown = shownLines(all, frame, lineBox);
    if (shown.empty()) return std::nullopt;
    const PangoLayoutOwner layout = layOut(shown, font.get(), frame.width);
    const std::vector<PlacedLine> lines = placeLines(layout.get(), frame, lineBox);
    Box ink;
    for (const PlacedLine& line : lines)
        ink = ink.joinedWith(line.inkBox());
    if (ink.isEmpty()) return std::nullopt;

    // Glyphs just off the canvas still cast their shadow onto it.
    const int margin = shadowReach(attributes.shadow);
    const Box canvasBox{0, 0, canvas.width, canvas.height};
    const Box box = ink.grownBy(margin).cutTo(canvasBox.grownBy(margin));
    if (box.isEmpty()) return std::nullopt;
    std::optional<Bitmap> bitmap = Bitmap::create({box.right - box.left, box.bottom - box.top});
    if (!bitmap) throw std::bad_alloc();
    const bool isWhole = drawLines(*bitmap, box, lines, attributes.color);
    addShadow(*bitmap, attributes.shadow);
    return PlacedBitmap{*std::move(bitmap), box.left, box.top, isWhole};
}

std::u32string lettersWithoutFont(const std::string& text) {
    constexpr double kNoEdge = 1e6;
    const std::vector<std::string> lines = linesToDraw(text);
    if (lines.empty()) return {};
    const PangoLayoutOwner layout = layOut(lines, fontOf(16).get(), kNoEdge);
    std::u32string letters;
    for (const GSList* line = pango_layout_get_lines_readonly(layout.get()); line != nullptr;
         line = line->next) {
        const GSList* run = static_cast<const PangoLayoutLine*>(line->data)->runs;
        for (; run != nullptr; run = run->next)
            appendBoxes(*static_cast<const PangoGlyphItem*>(run->data)->glyphs, letters);
    }
    return letters;
}

std::string fallbackFaces() {
    const Fontset faces(pango_context_load_fontset(sharedContext(), fontOf(1).get(),
                                                   pango_context_get_language(sharedContext())));
    std::string names;
    pango_fontset_foreach(faces.get(), appendName, &names);
    return names;
}

}  // namespace tkv::desktop
