#include "disc/make/cover_pictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>

#include "disc/film/source.h"
#include "disc/make/film_encoding.h"
#include "disc/make/scenes.h"
#include "disc/make/slide_frames.h"
#include "disc/run/fault.h"
#include "graphics/drawing.h"
#include "graphics/formats.h"
#include "graphics/pixels.h"
#include "imaging/rescale.h"
#include "system/files.h"

namespace tkv::disc {

namespace {

constexpr double kDotsPerMillimetre = 300 / 25.4;
constexpr float kFrontQuality = 0.9F;

// That are spread over the disc. One may stand on the front, or the dullest be left out.
constexpr std::size_t kShots = kCoverStills + 1;

// As the front is high at these dots.
constexpr double kSlideRows = 2200;

// As half of the back is wide at 300 dots per inch.
constexpr Raster kStill = ofSquares({640, 360});

// Of the ground's strongest channel: white texts have a contrast of 9:1 on it at least.
constexpr double kGroundLevel = 0.27;

// The mean of many colours is grey, that of one is shrill.
constexpr double kGroundStrength = 1.3;
constexpr double kGroundGrey = 0.25;  // of the weakest channel at least, as part of the strongest

double brightnessOf(std::uint32_t pixel) {
    return 0.299 * redOf(pixel) + 0.587 * greenOf(pixel) + 0.114 * blueOf(pixel);
}

// How much detail each column of a picture has.
std::vector<double> detailOf(const Bitmap& picture) {
    std::vector<double> columns(static_cast<std::size_t>(picture.width()));
    for (int y = 1; y < picture.height(); ++y) {
        for (int x = 1; x < picture.width(); ++x) {
            const double here = brightnessOf(picture.row(y)[x]);
            columns[static_cast<std::size_t>(x)] +=
                std::abs(here - brightnessOf(picture.row(y)[x - 1])) +
                std::abs(here - brightnessOf(picture.row(y - 1)[x]));
        }
    }
    return columns;
}

// Where a part so wide begins in the picture, both as parts of its width, so that what is sharp
// lies in the middle of it rather than is cut off.
double bestLeft(const std::vector<double>& detail, double width) {
    const double columns = static_cast<double>(detail.size()), half = width * columns / 2;
    double best = columns / 2, most = -1;
    for (int step = 0; half + step <= columns - half; ++step) {
        const double middle = half + step;
        double sum = 0;
        for (std::size_t i = 0; i < detail.size(); ++i) {
            const double distance = std::abs(static_cast<double>(i) + 0.5 - middle) / half;
            sum += detail[i] * std::max(0.0, 1 - distance);
        }
        if (sum <= most) continue;
        most = sum;
        best = middle;
    }
    return (best - half) / columns;
}

// The largest part of that shape, in the picture's drawing units.
Rect partFor(const Bitmap& picture, double shape) {
    const auto [width, height] = picture.nominalSize();
    const double cutHeight = std::min(height, width / shape), cutWidth = cutHeight * shape;
    return {bestLeft(detailOf(picture), cutWidth / width) * width, (height - cutHeight) / 2,
            cutWidth, cutHeight};
}

// The picture cut to the shape of its place: with its own pixels, but no more than are seen.
std::optional<Bitmap> cutTo(const SheetPlace& place, const std::string& path) {
    const double shape = place.width / place.height;
    const double mostHeight = place.height * kDotsPerMillimetre;
    const auto rough = decodePicture(path, [](PixelSize) { return PixelSize{192, 108}; });
    const auto picture = decodePicture(path, [&](PixelSize full) {
        const double height = std::min(static_cast<double>(full.height), full.width / shape);
        const double factor = std::min(1.0, mostHeight / height);
        return sufficientFor({full.width * factor, full.height * factor});
    });
    if (!rough || !picture) return std::nullopt;
    const Rect part = partFor(*rough, shape);
    const double height = std::min(part.height, mostHeight);
    auto cut = Bitmap::create(
        {static_cast<int>(std::lround(height * shape)), static_cast<int>(std::lround(height))});
    if (!cut) return std::nullopt;
    const Rect all{0, 0, cut->nominalSize().width, cut->nominalSize().height};
    if (!drawPicture(*cut, *picture, part, all, Compositing::sourceOver, 1)) return std::nullopt;
    return cut;
}

// All of a film's picture, in square pixels, as large as it came.
Raster wholeRaster(const VideoTrack& video) {
    const auto even = [](double length) {
        return std::max(2, 2 * static_cast<int>(std::lround(length / 2)));
    };
    return {{even(video.shown.height * video.aspect), even(video.shown.height)}, video.aspect};
}

// The picture that a drawn film shows at a moment: the front has room for more of it than a frame.
std::string wholeSlide(const DiscFilm& film, double seconds, Workshop& workshop) {
    const SlideShow& show = *film.film.source.slides;
    const std::string& path = show.slides[SlideTimes(show, film.conversion).slideAt(seconds)].path;
    return workshop.result(
        Workshop::nameOf("slide", ".jpg", {stampOf({path})}), [&](const std::string& made) {
            const auto picture = decodePicture(path, [](PixelSize full) {
                const double factor = std::min(1.0, kSlideRows / full.height);
                return sufficientFor({full.width * factor, full.height * factor});
            });
            const auto jpeg =
                picture ? encodePicture(*picture, "jpg", kFrontQuality) : std::nullopt;
            const std::string output = workshop.path(made);
            if (!jpeg || !writeFile(output, *jpeg)) failOn(output, "written");
        });
}

// The same of any film, by its name in the workshop.
std::string wholePicture(const DiscFilm& film, double seconds, Workshop& workshop) {
    if (film.conversion.isDrawn) return wholeSlide(film, seconds, workshop);
    const auto commandFor = [&](const std::string& output) {
        return pictureCommand(film.film, film.conversion.colors, {seconds, true},
                              wholeRaster(film.film.video), output);
    };
    Arguments inputs = commandFor("");
    inputs.push_back(film.film.source.stamp);
    return workshop.result(
        Workshop::nameOf("picture", ".jpg", inputs), [&](const std::string& made) {
            const std::string task = fmt::format("No picture of {} could be taken", film.caption);
            workshop.tools().run(commandFor(made), {film.request.path, task, ""});
            if (!imgSizes(workshop.path(made))) throw DiscError(task, film.request.path);
        });
}

// A picture of a film, by which the front's is chosen, or that stands on the back.
struct Shot {
    const DiscFilm* film;
    Scene scene;
    bool isChosen = false;  // by somebody, for the film's thumbnail
    double liveliness = 0;
};

// How much colours and brightness differ in the middle of a picture, beside which there may be what
// only fills it.
double livelinessOf(const std::string& path) {
    const auto picture = decodePicture(path, [](PixelSize) { return PixelSize{64, 36}; });
    if (!picture) return 0;
    double count = 0, red = 0, green = 0, blue = 0, squares = 0;
    for (int y = 0; y < picture->height(); ++y) {
        for (int x = picture->width() * 3 / 8; x < picture->width() * 5 / 8; ++x) {
            const std::uint32_t pixel = picture->row(y)[x];
            const double parts[] = {1.0 * redOf(pixel), 1.0 * greenOf(pixel), 1.0 * blueOf(pixel)};
            red += parts[0];
            green += parts[1];
            blue += parts[2];
            squares += parts[0] * parts[0] + parts[1] * parts[1] + parts[2] * parts[2];
            ++count;
        }
    }
    return squares / count - (red * red + green * green + blue * blue) / (count * count);
}

// What the jacket shows: of the first film on which something is to be seen.
Shot jacketShot(const DiscPlan& plan, Workshop& workshop) {
    Shot shot{};
    for (const DiscFilm& film : plan.films) {
        Scene scene = findScene(film, film.span, kStill, workshop);
        if (shot.film != nullptr && !scene.isSeen) continue;
        shot = {&film, std::move(scene), film.span.until <= film.span.from};
        if (shot.scene.isSeen) break;
    }
    return shot;
}

// Films that have several of these have them in even parts of their length.
Shot spreadShot(const DiscPlan& plan, std::size_t number, Workshop& workshop) {
    const auto filmOf = [&](std::size_t i) { return i * plan.films.size() / kShots; };
    std::size_t before = 0, all = 0;
    for (std::size_t i = 0; i < kShots; ++i) {
        if (filmOf(i) != filmOf(number)) continue;
        if (i < number) ++before;
        ++all;
    }
    const DiscFilm& film = plan.films[filmOf(number)];
    const double part = film.film.seconds / static_cast<double>(all + 1);
    const double from = part * static_cast<double>(before + 1);
    return {&film, findScene(film, {from, from + part / 2}, kStill, workshop)};
}

// What cannot be made for a cover is left out.
void attempt(const std::function<void()>& action) {
    try {
        action();
    } catch (const DiscError&) {
        return;
    }
}

// The jacket's before the others.
std::vector<Shot> takeShots(const DiscPlan& plan, Workshop& workshop) {
    std::vector<Shot> shots;
    attempt([&] { shots.push_back(jacketShot(plan, workshop)); });
    for (std::size_t i = 0; i < kShots; ++i)
        attempt([&] { shots.push_back(spreadShot(plan, i, workshop)); });
    for (Shot& shot : shots)
        shot.liveliness = livelinessOf(workshop.path(shot.scene.picture));
    return shots;
}

// Takes the front's out of the shots, and returns its whole picture.
std::string frontScene(std::vector<Shot>& shots, Workshop& workshop) {
    if (shots.empty()) return "";
    const auto best = shots.front().isChosen
                          ? shots.begin()
                          : std::ranges::max_element(shots, {}, &Shot::liveliness);
    const Shot shot = *best;
    shots.erase(best);
    return wholePicture(*shot.film, shot.scene.seconds, workshop);
}

// A picture cut to the shape of its place. `source`: its key.
std::string cutPictureFor(const SheetPlace& place, const std::string& path,
                          const std::string& source, Workshop& workshop) {
    const std::string shape = fmt::format("{} x {}", place.width, place.height);
    return workshop.result(
        Workshop::nameOf("cover", ".jpg", {source, shape}), [&](const std::string& made) {
            const std::optional<Bitmap> cut = cutTo(place, path);
            if (!cut) throw DiscError(fmt::format("{} cannot be cut for the cover.", path), path);
            const auto jpeg = encodePicture(*cut, "jpg", kFrontQuality);
            const std::string output = workshop.path(made);
            if (!jpeg || !writeFile(output, *jpeg)) failOn(output, "written");
        });
}

CoverPicture coverPicture(const std::string& name, const Workshop& workshop) {
    const std::string path = workshop.path(name);
    const auto size = imgSizes(path);
    auto jpeg = readFile(path);
    if (!size || !jpeg) failOn(path, "read");
    return {*std::move(jpeg), {(*size)[0], (*size)[1]}};
}

// A dark colour that goes with the picture.
Color groundFor(const std::string& path) {
    const auto picture = decodePicture(path, [](PixelSize) { return PixelSize{32, 32}; });
    if (!picture) return kBlack;
    double red = 0, green = 0, blue = 0;
    for (int y = 0; y < picture->height(); ++y) {
        for (int x = 0; x < picture->width(); ++x) {
            const std::uint32_t pixel = picture->row(y)[x];
            red += redOf(pixel);
            green += greenOf(pixel);
            blue += blueOf(pixel);
        }
    }
    const double mean = (red + green + blue) / 3;
    for (double* const channel : {&red, &green, &blue})
        *channel = mean + (*channel - mean) * kGroundStrength;
    const double most = std::max({red, green, blue, 1.0});
    for (double* const channel : {&red, &green, &blue})
        *channel = std::max(*channel, most * kGroundGrey);
    const double factor = kGroundLevel / most;
    return {static_cast<float>(red * factor), static_cast<float>(green * factor),
            static_cast<float>(blue * factor)};
}

}  // namespace

CoverPictures makeCoverPictures(const MenuSetting& setting, const DiscPlan& plan, Paper paper,
                                Workshop& workshop) {
    CoverPictures pictures;
    std::vector<Shot> shots = takeShots(plan, workshop);
    attempt([&] {
        const bool isGiven = setting.background == BackgroundKind::picture;
        const std::string scene = isGiven ? "" : frontScene(shots, workshop);
        const std::string path = isGiven ? setting.picture : workshop.path(scene);
        const std::string front =
            cutPictureFor(coverFront(paper), path, isGiven ? stampOf({path}) : scene, workshop);
        pictures.front = coverPicture(front, workshop);
        pictures.ground = groundFor(workshop.path(front));
    });
    while (shots.size() > kCoverStills)
        shots.erase(std::ranges::min_element(shots, {}, &Shot::liveliness));
    for (const Shot& shot : shots)
        attempt([&] { pictures.stills.push_back(coverPicture(shot.scene.picture, workshop)); });
    return pictures;
}

}  // namespace tkv::disc
