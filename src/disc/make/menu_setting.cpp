#include "disc/make/menu_setting.h"

#include <fmt/format.h>

#include <optional>

#include "composer/page_geometry.h"
#include "disc/film/source.h"
#include "disc/make/readability.h"
#include "disc/make/scenes.h"
#include "disc/run/fault.h"
#include "graphics/picture_faults.h"
#include "imaging/rescale.h"

namespace tkv::disc {

namespace {

constexpr PixelSize kPageSize{kPageWidth, kPageHeight};

// A page as a wide display shows it, in square pixels.
constexpr PixelSize kWidePage{960, 540};

constexpr float kPictureQuality = 0.95F;

// The picture cut to a shape, of square pixels, and stretched from it to the page's.
void cutPicture(const std::string& picture, PixelSize shape, const std::string& made) {
    const std::string cut = made + ".png";
    if (imgRescale(picture, cut, shape.width, shape.height, 0, kFillAndCrop, 1) &&
        imgRescale(cut, made, kPageSize.width, kPageSize.height, 0, kStretch, kPictureQuality))
        return;
    throw DiscError(fmt::format("{} cannot stand behind the menus: {}.", picture,
                                whyNoPicture(picture, std::nullopt)),
                    picture);
}

// Of the first film on which something is to be seen; of the first of all when it is on none.
struct DiscScene {
    const DiscFilm& film;
    std::string picture;
};

DiscScene sceneOf(const DiscPlan& plan, const Raster& raster, Workshop& workshop) {
    std::string first;
    for (const DiscFilm& film : plan.films) {
        const Scene scene = findScene(film, film.span, raster, workshop);
        if (scene.isSeen) return {film, scene.picture};
        if (first.empty()) first = scene.picture;
    }
    return {plan.films.front(), first};
}

std::string blurredScene(const DiscPlan& plan, Workshop& workshop) {
    const DiscScene found = sceneOf(plan, onPage(kPageSize), workshop);
    const auto commandFor = [&](const std::string& output) {
        return backgroundCommand(found.picture, found.film.film.video.aspect, kPageSize, output);
    };
    return workshop.result(
        Workshop::nameOf("background", ".jpg", commandFor("")), [&](const std::string& made) {
            workshop.tools().run(commandFor(made),
                                 {"", "The menus' background could not be made", ""});
        });
}

}  // namespace

std::string cutBackground(const std::string& picture, Workshop& workshop) {
    return workshop.result(
        Workshop::nameOf("background", ".jpg", {stampOf({picture})}),
        [&](const std::string& made) { cutPicture(picture, kWidePage, workshop.path(made)); });
}

MenuSetting menuSettingOf(const Project& project, const DiscPlan& plan) {
    MenuSetting setting;
    setting.standard = plan.standard;
    setting.rate = plan.menuRate;
    setting.dims = project.dimsBackground;
    if (!project.background) setting.background = BackgroundKind::scene;
    if (project.background && project.background != kNone) {
        setting.background = BackgroundKind::picture;
        setting.picture = *project.background;
    }
    const DiscFilm& first = plan.films.front();
    if (project.music && project.music != kNone) {
        setting.sound = {.input = inputName(*project.music), .stamp = stampOf({*project.music})};
    } else if (!project.music && !first.film.audio.empty()) {
        const FilmSource& source = first.film.source;
        const FilmPlace place = placeIn(first.film, first.span.from, first.span.from);
        const AudioTrack& track = first.film.audio.front();
        setting.sound = {place.input, place.seconds,
                         place.isPart ? "a:0" : std::to_string(track.index), source.stamp};
    }
    return setting;
}

namespace {

std::string ownBackground(const MenuSetting& setting, const DiscPlan& plan, Workshop& workshop) {
    switch (setting.background) {
        case BackgroundKind::none:
            return "";
        case BackgroundKind::picture:
            return cutBackground(setting.picture, workshop);
        case BackgroundKind::scene:
            return blurredScene(plan, workshop);
    }
    return "";
}

}  // namespace

std::string makeBackground(const MenuSetting& setting, const DiscPlan& plan, Workshop& workshop) {
    std::string background = ownBackground(setting, plan, workshop);
    if (background.empty() || !setting.dims) return background;
    return dimmedBackground(background, plan, workshop);
}

std::string makeJacketPicture(const MenuSetting& setting, const DiscPlan& plan,
                              Workshop& workshop) {
    if (setting.background == BackgroundKind::none) return "";
    if (setting.background == BackgroundKind::scene)
        return sceneOf(plan, ofSquares(kPageSize), workshop).picture;
    return workshop.result(Workshop::nameOf("jacket", ".jpg", {stampOf({setting.picture})}),
                           [&](const std::string& made) {
                               cutPicture(setting.picture, kPageSize, workshop.path(made));
                           });
}

}  // namespace tkv::disc
