#include "composer/page_texts.h"

#include "system/unicode.h"

namespace tkv {

namespace {

constexpr float kCaptionSize = 11.0F;
constexpr double kLineHeight = 14.0;
constexpr Shadow kTextShadow{kBlack, 0, -1.5, 5.0};

Alignment alignmentOf(std::optional<char> letter) {
    switch (letter.value_or('l')) {
        case 'r':
            return Alignment::right;
        case 'c':
            return Alignment::center;
        case 'j':
            return Alignment::justified;
        default:
            return Alignment::left;
    }
}

}  // namespace

std::string inCase(const std::string& text, LetterCase letterCase) {
    switch (letterCase) {
        case LetterCase::capitalized:
            return capitalized(text);
        case LetterCase::upper:
            return upperCased(text);
        case LetterCase::asItIs:
            break;
    }
    return text;
}

TextAttributes captionTextAttributes(const std::optional<Color>& colour,
                                     std::optional<char> alignment, float size) {
    return {size < 0 ? kCaptionSize : size, alignmentOf(alignment), kTextShadow,
            colour.value_or(kWhite)};
}

TextLayer captionText(const std::string& caption, const ThumbnailLayout& layout,
                      std::size_t index) {
    const ThumbnailPlace& place = layout.place(index);
    const double x = place.x;
    const double y = place.y - 13;
    TextPlace where;
    switch (place.alignment) {
        case 'l':
            where = Point{x + 20, y};
            break;
        case 'r':
            where = Rect{x - 20, y, static_cast<double>(layout.rightCaptionWidth), kLineHeight};
            break;
        default:
            where = Rect{x - 10, y, 180, kLineHeight};
            break;
    }
    return {caption, LetterCase::capitalized,
            captionTextAttributes(kWhite, place.alignment, kCaptionSize), where};
}

TextLayer titleText(const std::optional<std::string>& title) {
    return {title.value_or(""), LetterCase::upper, captionTextAttributes(kWhite, 'l', 16.0F),
            Point{130, 479}};
}

TextLayer navigationText(const NavigationButton& button, const std::string& label) {
    return {label, LetterCase::upper, captionTextAttributes(kOrange, 'c', 10.6F),
            Rect{static_cast<double>(button.x), static_cast<double>(button.y), kNavigationWidth,
                 kLineHeight}};
}

}  // namespace tkv
