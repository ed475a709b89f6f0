#include "disc/make/text_fit.h"

#include <algorithm>
#include <string_view>

#include "composer/navigation.h"
#include "composer/page_geometry.h"
#include "composer/page_texts.h"
#include "composer/thumbnail_layout.h"
#include "graphics/text.h"
#include "system/unicode.h"

namespace tkv::disc {

namespace {

// Columns of the page: where a title ends at the latest, and its distance from a label.
constexpr double kTitleEnd = 640;
constexpr double kGap = 12;

// How wide the letters of a text come out, in pixels of the page.
double widthOf(TextLayer layer) {
    constexpr double kMargin = 64;
    constexpr PixelSize kCanvas{16384, 64};
    layer.attributes.shadow = {};
    layer.attributes.alignment = Alignment::left;
    const auto drawn = rasterizeText(inCase(layer.text, layer.letterCase), layer.attributes,
                                     Point{kMargin, 20}, kCanvas);
    return drawn ? drawn->left + drawn->pixels.width() - kMargin : 0;
}

// As much of the text's beginning as fits.
std::string fitted(TextLayer layer, double width) {
    std::string text = validUtf8(layer.text);
    const auto fits = [&](const std::string& part) {
        layer.text = part;
        return widthOf(layer) <= width;
    };
    std::size_t most = characterCount(text);
    if (most <= kMostCharacters && fits(text)) return text;
    const auto cut = [&](std::size_t characters) {
        std::string_view part = firstCharacters(text, characters);
        while (part.ends_with(' '))
            part.remove_suffix(1);
        return std::string(part) + "…";
    };
    std::size_t least = 0;
    most = std::min(most, kMostCharacters);
    while (most - least > 1) {
        const std::size_t middle = (least + most) / 2;
        (fits(cut(middle)) ? least : most) = middle;
    }
    return cut(least);
}

// From where the caption begins, or may begin, to the other edge of its thumbnail.
double captionWidth(const ThumbnailLayout& layout, std::size_t index) {
    constexpr int kIndent = 20;
    const ThumbnailPlace& place = layout.place(index);
    const double left = place.x + layout.shiftX, width = layout.source.width;
    if (place.alignment == 'l') return left + width - (place.x + kIndent);
    if (place.alignment == 'r') return place.x - kIndent + layout.rightCaptionWidth - left;
    return width;
}

double titleWidth(const MenuRequest& request) {
    constexpr double kStart = 130;
    if (!request.dvdBt_readAll) return kTitleEnd - kStart;
    const NavigationButton& button = kNavigationButtons.front();
    const double label =
        std::min<double>(widthOf(navigationText(button, *request.dvdBt_readAll)), kNavigationWidth);
    return button.x + (kNavigationWidth - label) / 2 - kGap - kStart;
}

const ThumbnailLayout& layoutOf(const MenuRequest& request) {
    return thumbnailLayout(request.isMainMenu, request.thumbs ? request.thumbs->size() : 0);
}

}  // namespace

void fitTexts(MenuRequest& request) {
    if (request.title) request.title = fitted(titleText(request.title), titleWidth(request));
    if (!request.captions) return;
    const ThumbnailLayout& layout = layoutOf(request);
    for (std::size_t i = 0; i < request.captions->size(); ++i) {
        std::string& caption = (*request.captions)[i];
        caption = fitted(captionText(caption, layout, i), captionWidth(layout, i));
    }
}

std::vector<TextLayer> textsOf(const MenuRequest& request) {
    std::vector<TextLayer> texts{titleText(request.title)};
    const std::size_t captions = request.captions ? request.captions->size() : 0;
    for (std::size_t i = 0; i < captions; ++i)
        texts.push_back(captionText(request.captions->at(i), layoutOf(request), i));
    for (const NavigationButton& button : kNavigationButtons) {
        if (const auto& label = request.*button.label)
            texts.push_back(navigationText(button, *label));
    }
    return texts;
}

std::optional<PlacedBitmap> lettersOf(TextLayer text) {
    text.attributes.shadow = {};
    return rasterizeText(inCase(text.text, text.letterCase), text.attributes, text.place,
                         {kPageWidth, kPageHeight});
}

}  // namespace tkv::disc
