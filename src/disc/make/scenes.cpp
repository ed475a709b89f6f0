#include "disc/make/scenes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "disc/make/film_encoding.h"
#include "disc/make/slide_feed.h"
#include "disc/project/names.h"
#include "disc/run/fault.h"
#include "graphics/formats.h"

namespace tkv::disc {

namespace {

// Parts of the excerpt's span.
constexpr std::array kPlaces{0.0, 0.05, 0.15, 0.3, 0.5, 0.8};

// A picture of which only something is to be seen.
constexpr Raster kGlance = ofSquares({160, 90});

// Levels of the standard deviation of the pixels' brightness: a picture of black or of a plain
// colour stays below, noise and all.
constexpr double kEnough = 12;

// How long before a moment a keyframe may stand in for it, in seconds.
constexpr double kNear = 0.25;

// Of a film whose frames are not counted, keyframes are not known.
bool hasKeyframeAt(const Film& film, double seconds) {
    const auto next = std::ranges::upper_bound(film.keyframes, seconds);
    return next != film.keyframes.begin() && seconds - *(next - 1) <= kNear;
}

// How long before a moment its film is to be entered, each longer than the one before. Only streams
// without an index are entered between two keyframes.
std::vector<double> leadsTo(const Film& film, double seconds) {
    constexpr double kShort = 2, kLong = 30;
    if (!film.container.starts_with("mpeg")) return {kShort};
    if (film.keyframes.empty()) return {kShort, kLong};
    const auto next = std::ranges::upper_bound(film.keyframes, seconds);
    const double keyframe = next == film.keyframes.begin() ? 0 : *(next - 1);
    return {seconds - keyframe + kShort};
}

double brightness(std::uint32_t pixel) {
    const std::uint32_t red = pixel >> 16 & 255U, green = pixel >> 8 & 255U, blue = pixel & 255U;
    return 0.299 * red + 0.587 * green + 0.114 * blue;
}

// How much is to be seen in the middle of a picture, where no bars are even beside an upright film.
double contrastOf(const Bitmap& picture) {
    double sum = 0, squares = 0, count = 0;
    for (int y = picture.height() / 4; y < picture.height() * 3 / 4; ++y) {
        for (int x = picture.width() * 3 / 8; x < picture.width() * 5 / 8; ++x) {
            const double value = brightness(picture.row(y)[x]);
            sum += value;
            squares += value * value;
            ++count;
        }
    }
    if (count == 0) return 0;
    const double mean = sum / count;
    return std::sqrt(std::max(0.0, squares / count - mean * mean));
}

// A picture of the film, by its name in the workshop, and how much is to be seen on it; none when
// the file ends before, or the disk is full.
struct Taken {
    std::string name;
    double contrast = 0;
};

std::optional<Taken> takePicture(const DiscFilm& film, const Moment& moment, const Raster& raster,
                                 Workshop& workshop) {
    const auto commandFor = [&](const std::string& output) {
        return pictureCommand(film.film, film.conversion.colors, moment, raster, output);
    };
    Arguments inputs = commandFor("");
    inputs.push_back(film.film.source.stamp);
    if (film.conversion.isDrawn) inputs.push_back(fmt::format("{:.3f}", moment.seconds));
    const std::string name = Workshop::nameOf("picture", ".jpg", inputs);
    const bool isNew = !workshop.has(name);
    const std::string made = isNew ? Workshop::unfinished(name) : name;
    if (isNew) {
        const std::string& path = film.request.path;
        const Failure failure{path, fmt::format("No picture of {} could be taken", path), ""};
        if (film.conversion.isDrawn) {
            encodeFilm(film, stillOf(film, moment.seconds), workshop.tools(), commandFor(made),
                       failure);
        } else {
            workshop.tools().run(commandFor(made), failure);
        }
    }
    const std::optional<Bitmap> picture = decodePicture(workshop.path(made));
    if (!picture) return std::nullopt;
    if (isNew) workshop.finish(name);
    return Taken{name, contrastOf(*picture)};
}

// Of slides all are worth seeing: the next moment at which one is there alone, and was half a
// second before.
double slideMoment(const SlideShow& show, double seconds) {
    constexpr double kBefore = 0.5;
    const double slide = std::floor(seconds / show.step), begin = slide * show.step;
    if (begin + show.step - fadeSeconds(show.step) < seconds) return begin + show.step + kBefore;
    return std::max(seconds, begin + (slide == 0 ? kBlackSeconds : 0) + kBefore);
}

}  // namespace

Scene findScene(const DiscFilm& film, const Span& wanted, const Raster& raster,
                Workshop& workshop) {
    Span span = wanted;
    const auto& slides = film.film.source.slides;
    if (slides && span.until > span.from) span.from = span.until = slideMoment(*slides, span.from);
    Scene best;
    double bestContrast = -1;
    const double length = std::max(0.0, span.until - span.from);
    for (const double place : kPlaces) {
        const double seconds = span.from + place * length;
        Moment moment{seconds, length == 0 || !hasKeyframeAt(film.film, seconds)};
        std::optional<Taken> taken;
        for (const double lead : leadsTo(film.film, seconds)) {
            moment.lead = lead;
            if (!taken) taken = takePicture(film, moment, raster, workshop);
        }
        if (taken && taken->contrast > bestContrast) {
            bestContrast = taken->contrast;
            best = {seconds, taken->name, bestContrast >= kEnough || length == 0};
        }
        if (bestContrast >= kEnough || length == 0) break;
    }
    if (best.picture.empty()) {
        throw DiscError(fmt::format("No picture of {} could be taken at {}. Is the disk full, or "
                                    "the film damaged?",
                                    film.request.path, timeText(span.from)),
                        film.request.path);
    }
    return best;
}

std::vector<std::vector<Scene>> findScenes(const DiscFilm& film, Workshop& workshop) {
    std::vector<std::vector<Scene>> scenes;
    for (const Excerpt& excerpt : film.excerpts) {
        std::vector<Scene> parts;
        for (const Span& moment : excerpt.moments)
            parts.push_back(findScene(film, moment, onPage(excerpt.shape.picture()), workshop));
        scenes.push_back(std::move(parts));
    }
    return scenes;
}

void lookAt(const DiscFilm& film, Workshop& workshop) {
    if (film.excerpts.empty()) {
        findScene(film, film.span, kGlance, workshop);
    } else {
        findScenes(film, workshop);
    }
}

}  // namespace tkv::disc
