#include "disc/make/page_request.h"

#include <algorithm>

#include "composer/navigation.h"
#include "disc/make/text_fit.h"

namespace tkv::disc {

MenuRequest pageRequest(const MenuPage& page, Standard standard, const std::string& background,
                        const std::vector<std::string>& thumbnails, MenuMode mode,
                        const std::string& output) {
    MenuRequest request;
    request.mode = mode;
    request.isMainMenu = page.isMain;
    request.isPal = standard == Standard::pal;
    if (!background.empty()) request.bkg = background;
    request.title = page.title;
    request.thumbs = thumbnails;
    request.captions.emplace();
    request.output = output;
    for (const Button& button : page.buttons) {
        if (request.captions->size() < thumbnails.size()) {
            request.captions->push_back(button.text);
            continue;
        }
        const auto* const label =
            std::ranges::find(kNavigationButtons, button.name, &NavigationButton::name);
        if (label != kNavigationButtons.end()) request.*label->label = button.text;
    }
    fitTexts(request);
    return request;
}

MenuRequest jacketRequest(const std::string& title, const std::string& line,
                          const std::string& background, const std::string& output) {
    MenuRequest request;
    request.mode = MenuMode::jacket;
    if (!background.empty()) request.bkg = background;
    request.title = title;
    request.dvdBt_readAll = line;
    request.output = output;
    return request;
}

}  // namespace tkv::disc
