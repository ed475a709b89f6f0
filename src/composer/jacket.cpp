#include "composer/jacket.h"

#include "composer/page_geometry.h"
#include "composer/page_texts.h"
#include "system/unicode.h"
#include "utils/existence.h"

namespace tkv {

namespace {

constexpr Color kJacketColor = withAlpha(kWhite, 0.8F);

TextLayer jacketLine(const std::string& text, LetterCase letterCase, const Point& point) {
    return {text, letterCase, captionTextAttributes(kJacketColor, 'l', 14.0F), point};
}

}  // namespace

Page composeJacket(const MenuRequest& request, const Background& background, std::time_t today) {
    const PixelSize canvas = canvasSize(MenuMode::jacket, request.isPal);
    Page page{canvas, {FillLayer{{0, 0, kPageWidth, kPageHeight}, kBlack}}};
    if (background.path) {
        page.layers.emplace_back(
            named(backgroundPicture(*background.path, background.zoom, canvas)));
    }
    if (request.title) {
        page.layers.emplace_back(TextLayer{*request.title, LetterCase::upper,
                                           captionTextAttributes(kJacketColor, 'r', 22.0F),
                                           Rect{0, 320, 500, 30}});
    }
    page.layers.emplace_back(jacketLine(upperCasedLongDate(today), LetterCase::asItIs, {320, 200}));
    if (request.icon && fileExists(*request.icon)) {
        page.layers.emplace_back(named(wholePicture(*request.icon, {505, 255, 100, 100}, 1.0F)));
    }
    page.layers.emplace_back(
        jacketLine(request.dvdBt_readAll.value_or(""), LetterCase::asItIs, {320, 170}));
    return page;
}

}  // namespace tkv
