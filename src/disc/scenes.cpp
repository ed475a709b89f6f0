#include "disc/scenes.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

#include "disc/film_encoding.h"
#include "disc/tools.h"
#include "graphics/formats.h"

namespace tkv::disc {

namespace {

// Parts of the excerpt's span.
constexpr std::array kPlaces{0.0, 0.02, 0.05, 0.1, 0.2, 0.4};

// Levels of the standard deviation of the pixels' brightness: a picture of black or of a plain
// colour stays below, noise and all.
constexpr double kEnough = 12;

double brightness(std::uint32_t pixel) {
    const std::uint32_t red = pixel >> 16 & 255U, green = pixel >> 8 & 255U, blue = pixel & 255U;
    return 0.299 * red + 0.587 * green + 0.114 * blue;
}

// How much is to be seen in the middle of a picture, where no bars are even beside an upright film.
double contrastOf(const std::string& path) {
    const std::optional<Bitmap> picture = decodePicture(path);
    if (!picture) return 0;
    double sum = 0, squares = 0, count = 0;
    for (int y = picture->height() / 4; y < picture->height() * 3 / 4; ++y) {
        for (int x = picture->width() * 3 / 8; x < picture->width() * 5 / 8; ++x) {
            const double value = brightness(picture->row(y)[x]);
            sum += value;
            squares += value * value;
            ++count;
        }
    }
    if (count == 0) return 0;
    const double mean = sum / count;
    return std::sqrt(std::max(0.0, squares / count - mean * mean));
}

}  // namespace

Scene findScene(const Film& film, const Excerpt& excerpt, PixelSize size, Workshop& workshop) {
    Scene best;
    double bestContrast = -1;
    for (const double place : kPlaces) {
        const double span = std::max(0.0, excerpt.until - excerpt.from);
        const double seconds = excerpt.from + place * span;
        const auto command = [&](const std::string& output) {
            return pictureCommand(film, seconds, size, output);
        };
        std::vector<std::string> inputs = command("");
        inputs.push_back(film.stamp);
        const std::string picture = workshop.result(
            Workshop::nameOf("picture", ".jpg", inputs), [&](const std::string& path) {
                runTool({command(path), "", "", {}, {}},
                        fmt::format("No picture of {} could be taken", film.path));
            });
        const double contrast = contrastOf(picture);
        if (contrast > bestContrast) {
            bestContrast = contrast;
            best = {seconds, picture};
        }
        if (contrast >= kEnough || span == 0) break;
    }
    return best;
}

}  // namespace tkv::disc
