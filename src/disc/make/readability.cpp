#include "disc/make/readability.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "composer/background.h"
#include "composer/page_geometry.h"
#include "disc/make/page_request.h"
#include "disc/make/text_fit.h"
#include "disc/run/fault.h"
#include "graphics/formats.h"
#include "graphics/pixels.h"
#include "imaging/rescale.h"

namespace tkv::disc {

namespace {

constexpr PixelSize kPage{kPageWidth, kPageHeight};
constexpr float kDimmedQuality = 0.95F;

// What JPEG and the drawing of the page take away is added.
constexpr double kAimedContrast = kLeastContrast + 0.1;

// Of the brightest pixels behind a text, so many are left out: points that nobody sees.
constexpr double kLeftOut = 0.05;

// The relative luminance of WCAG 2, of parts of the highest level.
double luminanceOf(double red, double green, double blue) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(red) + 0.7152 * linear(green) + 0.0722 * linear(blue);
}

double luminanceOf(std::uint32_t pixel, double factor) {
    const double part = factor / 255;
    return luminanceOf(redOf(pixel) * part, greenOf(pixel) * part, blueOf(pixel) * part);
}

// The brightest pixel that counts behind the letters' box.
std::optional<std::uint32_t> brightestBehind(const PlacedBitmap& text, const Bitmap& background) {
    std::vector<std::uint32_t> pixels;
    for (int y = std::max(0, text.top); y < std::min(kPage.height, text.top + text.pixels.height());
         ++y) {
        for (int x = std::max(0, text.left);
             x < std::min(kPage.width, text.left + text.pixels.width()); ++x)
            pixels.push_back(background.row(y)[x]);
    }
    if (pixels.empty()) return {};
    const auto at = pixels.end() - 1 -
                    static_cast<std::ptrdiff_t>(kLeftOut * static_cast<double>(pixels.size()));
    std::ranges::nth_element(pixels, at, {},
                             [](std::uint32_t pixel) { return luminanceOf(pixel, 1); });
    return *at;
}

// What a pixel is multiplied by, so that its luminance is not above that.
double factorFor(std::uint32_t pixel, double opacity, double most) {
    double least = 0, best = 1;
    if (luminanceOf(pixel, opacity) <= most) return best;
    for (int i = 0; i < 20; ++i) {
        const double middle = (least + best) / 2;
        (luminanceOf(pixel, opacity * middle) <= most ? least : best) = middle;
    }
    return least;
}

std::uint32_t dimmed(std::uint32_t pixel, double factor) {
    const auto level = [factor](unsigned value) {
        return static_cast<unsigned>(std::lround(value * factor));
    };
    return pixelOf(alphaOf(pixel), level(redOf(pixel)), level(greenOf(pixel)),
                   level(blueOf(pixel)));
}

}  // namespace

double dimmingFor(const Bitmap& background, const DiscPlan& plan) {
    // Behind a page's background is black.
    const double opacity = backgroundPicture("", 1, kPage).opacity;
    double factor = 1;
    for (const MenuPage& page : plan.pages) {
        const std::vector<std::string> thumbnails(page.thumbnails.size());
        const MenuRequest request =
            pageRequest(page, plan.standard, "", thumbnails, MenuMode::definitive, "");
        for (const TextLayer& text : textsOf(request)) {
            const auto letters = lettersOf(text);
            const auto pixel = letters ? brightestBehind(*letters, background) : std::nullopt;
            if (!pixel) continue;
            const Color& color = text.attributes.color;
            const double most =
                (luminanceOf(color.red, color.green, color.blue) + 0.05) / kAimedContrast - 0.05;
            factor = std::min(factor, factorFor(*pixel, opacity, most));
        }
    }
    return factor;
}

std::string dimmedBackground(const std::string& background, const DiscPlan& plan,
                             Workshop& workshop) {
    std::optional<Bitmap> picture = decodePicture(workshop.path(background));
    if (!picture || picture->width() != kPage.width || picture->height() != kPage.height)
        return background;
    const double factor = dimmingFor(*picture, plan);
    if (factor > 0.995) return background;
    return workshop.result(
        Workshop::nameOf("background", ".jpg", {background, fmt::format("{:.3f}", factor)}),
        [&](const std::string& made) {
            for (int y = 0; y < picture->height(); ++y) {
                std::uint32_t* const row = picture->row(y);
                std::transform(row, row + picture->width(), row,
                               [&](std::uint32_t pixel) { return dimmed(pixel, factor); });
            }
            const std::string path = workshop.path(made);
            if (!imgRescale(&*picture, path, kPage.width, kPage.height, 0, kStretch,
                            kDimmedQuality))
                failOn(path, "written");
        });
}

}  // namespace tkv::disc
