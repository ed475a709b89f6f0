#include "disc/subtitle/drawing.h"

#include <ass/ass.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>

#include "graphics/releaser.h"

namespace tkv::disc {

namespace {

// The menus' font; others come in where it lacks a letter.
constexpr const char* kFontFamily = "DejaVu Sans";

// How plain subtitles look, in units of 384 x 288 for the whole frame.
constexpr double kUnitsX = 384, kUnitsY = 288;
constexpr double kFontSize = 19, kOutline = 1.3;
constexpr int kMarginX = 38, kMarginY = 20;

void ignoreMessage(int /*level*/, const char* /*format*/, va_list /*words*/, void* /*data*/) {}

// Converted texts have styles that the converter has made up.
void setPlainStyle(ASS_Track& track) {
    const double x = track.PlayResX / kUnitsX, y = track.PlayResY / kUnitsY;
    for (ASS_Style& style : std::span(track.styles, static_cast<std::size_t>(track.n_styles))) {
        style.FontSize = kFontSize * y;
        style.Outline = kOutline * y;
        style.Shadow = 0;
        style.MarginL = style.MarginR = static_cast<int>(std::lround(kMarginX * x));
        style.MarginV = static_cast<int>(std::lround(kMarginY * y));
        // Lines begin on the side of their own script; with any other value, on the left.
        style.Encoding = -1;
        std::free(style.FontName);
        style.FontName = strdup(kFontFamily);
    }
}

}  // namespace

struct SubtitleDrawing::Handles {
    std::unique_ptr<ASS_Library, Releaser<ass_library_done>> library{ass_library_init()};
    std::unique_ptr<ASS_Renderer, Releaser<ass_renderer_done>> renderer;
    std::unique_ptr<ASS_Track, Releaser<ass_free_track>> track;
};

SubtitleDrawing::SubtitleDrawing(const SubtitleFrame& frame, const std::vector<std::string>& fonts)
    : frame_(frame), handles_(std::make_unique<Handles>()) {
    ASS_Library* const library = handles_->library.get();
    if (library == nullptr) throw std::bad_alloc();
    ass_set_message_cb(library, ignoreMessage, nullptr);
    ass_set_extract_fonts(library, 1);
    for (const std::string& font : fonts)
        ass_add_font(library, nullptr, font.data(), static_cast<int>(font.size()));
    handles_->renderer.reset(ass_renderer_init(library));
    ASS_Renderer* const renderer = handles_->renderer.get();
    if (renderer == nullptr) throw std::bad_alloc();
    const PixelSize raster = frame.raster;
    ass_set_frame_size(renderer, raster.width, raster.height);
    // Of a pixel, height to width.
    ass_set_pixel_aspect(renderer, 1.0 * raster.width / raster.height / frame.aspect);
    ass_set_fonts(renderer, nullptr, kFontFamily, ASS_FONTPROVIDER_AUTODETECT, nullptr, 1);
}

SubtitleDrawing::~SubtitleDrawing() = default;

bool SubtitleDrawing::load(const std::string& text, bool keepsStyle) {
    std::string copy = text;  // libass changes nothing in it, but does not say so.
    handles_->track.reset(
        ass_read_memory(handles_->library.get(), copy.data(), copy.size(), nullptr));
    if (!handles_->track) return false;
    ASS_Renderer* const renderer = handles_->renderer.get();
    if (keepsStyle) {
        // Places are those in the film's picture, but lines may stand on the bars.
        ass_set_storage_size(renderer, frame_.film.width, frame_.film.height);
        ass_set_margins(renderer, frame_.barY, frame_.barY, frame_.barX, frame_.barX);
    } else {
        setPlainStyle(*handles_->track);
        ass_set_storage_size(renderer, 0, 0);
        ass_set_margins(renderer, 0, 0, 0, 0);
    }
    ass_set_use_margins(renderer, keepsStyle ? 1 : 0);
    return true;
}

std::vector<SubtitleDrawing::Span> SubtitleDrawing::lines() const {
    const ASS_Track& track = *handles_->track;
    std::vector<Span> lines;
    lines.reserve(static_cast<std::size_t>(track.n_events));
    for (const ASS_Event& event :
         std::span(track.events, static_cast<std::size_t>(track.n_events))) {
        const double begin = static_cast<double>(event.Start) / 1000;
        lines.push_back({begin, begin + static_cast<double>(event.Duration) / 1000});
    }
    return lines;
}

SubtitlePicture SubtitleDrawing::at(double seconds) {
    return pictureOf(ass_render_frame(handles_->renderer.get(), handles_->track.get(),
                                      std::llround(seconds * 1000), nullptr));
}

}  // namespace tkv::disc
