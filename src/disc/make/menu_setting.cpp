#include "disc/make/menu_setting.h"

#include <fmt/format.h>

#include <optional>

#include "composer/page_geometry.h"
#include "disc/film/source.h"
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

// Cut to the shape of a wide display and squeezed into the page, which is shown stretched.
void cutPicture(const std::string& picture, const std::string& made) {
    const std::string cut = made + ".png";
    if (imgRescale(picture, cut, kWidePage.width, kWidePage.height, 0, kFillAndCrop, 1) &&
        imgRescale(cut, made, kPageSize.width, kPageSize.height, 0, kStretch, kPictureQuality))
        return;
    throw DiscError(fmt::format("{} cannot stand behind the menus: {}.", picture,
                                whyNoPicture(picture, std::nullopt)),
                    picture);
}

std::string sceneOf(const DiscFilm& film, PixelSize size, Workshop& workshop) {
    return findScene(film, film.span, size, workshop).picture;
}

std::string blurredScene(const DiscFilm& film, Workshop& workshop) {
    const std::string scene = sceneOf(film, kPageSize, workshop);
    const auto commandFor = [&](const std::string& output) {
        return backgroundCommand(scene, film.film.video.aspect, kPageSize, output);
    };
    return workshop.result(
        Workshop::nameOf("background", ".jpg", commandFor("")), [&](const std::string& made) {
            workshop.tools().run(commandFor(made),
                                 {"", "The menus' background could not be made", ""});
        });
}

}  // namespace

MenuSetting menuSettingOf(const Project& project, const DiscPlan& plan) {
    MenuSetting setting;
    setting.standard = plan.standard;
    setting.rate = plan.menuRate;
    if (!project.background) setting.background = BackgroundKind::scene;
    if (project.background && project.background != kNone) {
        setting.background = BackgroundKind::picture;
        setting.picture = *project.background;
    }
    const DiscFilm& first = plan.films.front();
    if (project.music && project.music != kNone) {
        setting.sound = {inputName({*project.music}), 0, stampOf({*project.music})};
    } else if (!project.music && !first.film.audio.empty()) {
        const FilmSource& source = first.film.source;
        setting.sound = {inputName(source.files), first.span.from, source.stamp};
    }
    return setting;
}

std::string makeBackground(const MenuSetting& setting, const DiscPlan& plan, Workshop& workshop) {
    switch (setting.background) {
        case BackgroundKind::none:
            return "";
        case BackgroundKind::picture:
            return workshop.result(
                Workshop::nameOf("background", ".jpg", {stampOf({setting.picture})}),
                [&](const std::string& made) { cutPicture(setting.picture, workshop.path(made)); });
        case BackgroundKind::scene:
            return blurredScene(plan.films.front(), workshop);
    }
    return "";
}

std::string jacketPicture(const MenuSetting& setting, const DiscPlan& plan, Workshop& workshop) {
    if (setting.background != BackgroundKind::scene) return setting.picture;
    return workshop.path(sceneOf(plan.films.front(), kWidePage, workshop));
}

}  // namespace tkv::disc
