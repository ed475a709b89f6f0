#include "composer/page_composer.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>
#include <variant>

#include "composer/page_geometry.h"
#include "composer/page_texts.h"
#include "graphics/formats.h"
#include "system/description.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

using TextList = std::vector<std::string>;

const TextList& itemsOf(const std::optional<TextList>& list) {
    static const TextList none;
    return list ? *list : none;
}

/// Whether the file is a picture; asked for a diagnostic line, the page does not depend on it.
bool isPicture(const std::optional<std::string>& file) {
    constexpr auto anySize = [](PixelSize) { return PixelSize{1, 1}; };
    return file && decodePicture(expandTilde(*file), anySize);
}

void logCaption(const TextLayer& layer, const ThumbnailPlace& place, std::size_t index) {
    // The line says "pass", but the number is the place's index.
    logLine("dvdMenuPicture       : pass {} - caption '{}' (alignStr:'{}') ", index, layer.text,
            place.alignment);
    if (const Point* point = std::get_if<Point>(&layer.place)) {
        logLine("caption('l') bt#{}: x={:.0f}, y={:.0f}, caption='{}'", index, point->x, point->y,
                layer.text);
    } else {
        // Centred captions carry the same label as right ones.
        const Rect& rect = std::get<Rect>(layer.place);
        logLine("caption('r') bt#{}: x={:.0f}, y={:.0f}, w={:.0f}, h={:.0f}, caption='{}'", index,
                rect.x, rect.y, rect.width, rect.height, layer.text);
    }
    logLine("MP 33");
}

}  // namespace

PageComposer::PageComposer(const MenuRequest& request, Background background)
    : request_(request),
      background_(std::move(background)),
      raster_{canvasSize(request.mode, request.isPal).height,
              overlayYFactor(request.mode, request.isPal)} {}

std::optional<Pass> PageComposer::composePass(int number) {
    Pass pass{{canvasSize(request_.mode, request_.isPal), {}}, {}};
    Page& page = pass.page;
    if (isDrawn()) page.layers.emplace_back(FillLayer{{0, 0, kPageWidth, kPageHeight}, kBlack});
    if (background_.path) {
        page.layers.emplace_back(
            named(backgroundPicture(*background_.path, background_.zoom, page.canvas)));
    }
    if (addThumbnails(pass, number) == Outcome::noCaption) return std::nullopt;
    if (isDrawn()) addTitle(page);
    addNavigation(pass);
    return pass;
}

PageComposer::Outcome PageComposer::addThumbnails(Pass& pass, int number) {
    // An overlay without thumbnails still gets one button.
    static const TextList placeholder{"force swich to th loop"};
    const TextList& given = itemsOf(request_.thumbs);
    const TextList& thumbsA = given.empty() && !isDrawn() ? placeholder : given;
    verboseLine("dvdMenuPicture       : thumbnails'n'captions = {} && {}", thumbsA.size(),
                itemsOf(request_.captions).size());
    const Thumbnails thumbnails{thumbsA, thumbnailLayout(request_.isMainMenu, thumbsA.size()),
                                number};
    Outcome outcome = Outcome::placed;
    for (std::size_t i = 0; i < thumbsA.size() && outcome == Outcome::placed; ++i) {
        outcome = addThumbnail(pass, thumbnails, i);
    }
    return outcome;
}

PageComposer::Outcome PageComposer::addThumbnail(Pass& pass, const Thumbnails& thumbnails,
                                                 std::size_t index) {
    const std::string& entry = thumbnails.thumbsA[index];
    // An overlay shows no picture, and looks for one only to log it.
    std::optional<std::string> currentThPathStr;
    if (isDrawn() || isVerbose()) {
        currentThPathStr = frames_.pictureOf(entry, index, thumbnails.pass);
    }
    verboseLine("dvdMenuPicture       : [thumbsA objectAtIndex:{}]='{}' -> currentThPathStr='{}'",
                index, entry, describe(currentThPathStr));
    if (isDrawn() && !fileExists(entry)) {
        logLine("dvdMenuPicture end  :-( no thumb available");
        return Outcome::noThumbnail;
    }
    const ThumbnailPlace& place = thumbnails.layout.place(index);
    if (isVerbose()) {
        if (thumbnails.layout.isBig) logLine("BIG th");
        logLine("th#{} : x={}, y={}", index, place.x, place.y);
        logLine("thumbImg ? {}", isDrawn() && isPicture(currentThPathStr) ? "img :-)" : "nil");
    }
    if (!isDrawn()) {
        addButton(pass, thumbnails, index);
        return Outcome::placed;
    }
    if (currentThPathStr) addPictures(pass.page, thumbnails, *currentThPathStr, index);
    return addCaption(pass.page, thumbnails, index);
}

/// The thumbnail, and below the first one its own enlarged copy when the page asks for that.
void PageComposer::addPictures(Page& page, const Thumbnails& thumbnails, const std::string& file,
                               std::size_t index) const {
    if (index == 0 && background_.isZoomed()) {
        page.layers.emplace_back(backgroundPicture(file, background_.zoom, page.canvas));
    }
    PictureLayer picture = thumbnails.layout.picture(file, index);
    picture.isNamed = file == thumbnails.thumbsA[index];  // The frames of a folder are not.
    page.layers.emplace_back(std::move(picture));
}

void PageComposer::addButton(Pass& pass, const Thumbnails& thumbnails, std::size_t index) const {
    if (isVerbose()) {
        pass.page.layers.emplace_back(
            FillLayer{thumbnailArea(thumbnails.layout, index, raster_), kOrange});
        if (!thumbnails.layout.isBig) {
            const ThumbnailPlace& place = thumbnails.layout.place(index);
            logLine(
                "x={}, y={}, w={:.0f}, h={:.0f}, overlayYFactor={:f}, cropPanscan={}, "
                "ratioPanscan={:f}",
                place.x, place.y, thumbnails.layout.source.width, thumbnails.layout.source.height,
                raster_.yFactor, kCropPanscan, kRatioPanscan);
        }
    }
    pass.buttons.add(fmt::format("BT_{}", index),
                     thumbnailButton(thumbnails.layout, index, raster_));
}

PageComposer::Outcome PageComposer::addCaption(Page& page, const Thumbnails& thumbnails,
                                               std::size_t index) const {
    const TextList& captionsA = itemsOf(request_.captions);
    // Unsigned, so that an empty caption list wraps around and never lacks one.
    if (index > std::uint64_t{captionsA.size()} - 1) {
        logLine("captionsA && i : out of range -> end (failure) …i={} && captionsA:{}", index,
                describe(captionsA));
        logLine("dvdMenuPicture      :-( end");
        return Outcome::noCaption;
    }
    std::optional<std::string> caption;
    if (!captionsA.empty()) caption = captionsA[index];
    const TextLayer layer = captionText(describe(caption), thumbnails.layout, index);
    if (isVerbose()) logCaption(layer, thumbnails.layout.place(index), index);
    if (caption) page.layers.emplace_back(layer);
    return Outcome::placed;
}

void PageComposer::addTitle(Page& page) const {
    verboseLine("dvdMenuPicture       : title '{}'", describe(request_.title));
    page.layers.emplace_back(titleText(request_.title));
    verboseLine("MP 4");
}

void PageComposer::addNavigation(Pass& pass) const {
    verboseLine("dvdMenuPicture       : nav - count: {}", kNavigationButtons.size());
    for (std::size_t j = 0; j < kNavigationButtons.size(); ++j) {
        const NavigationButton& button = kNavigationButtons[j];
        const std::string label = (request_.*button.label).value_or("");
        if (label.empty()) continue;
        verboseLine("dvdMenuPicture       : nav - #{}: {} x={} y={}", j, label, button.x, button.y);
        if (isDrawn()) {
            pass.page.layers.emplace_back(navigationText(button, label));
            continue;
        }
        pass.buttons.add(button.name, navigationButton(button.x, button.y, raster_));
        if (isVerbose()) {
            pass.page.layers.emplace_back(
                FillLayer{navigationArea(button.x, button.y, raster_), kOrange});
        }
    }
}

}  // namespace tkv
