#include "disc/make/button_map.h"

#include <fmt/format.h>

#include <string_view>

namespace tkv::disc {

namespace {

// Where a map names the pictures of its subpicture, and where a button begins.
constexpr std::string_view kSubpictureTag = "<spu ";
constexpr std::string_view kButtonTag = "<button ";

std::string arrowWords(const MenuPage& page, const Arrows& arrows) {
    const auto nameOf = [&](std::size_t button) { return page.buttons[button].name; };
    return fmt::format(R"(up="{}" down="{}" left="{}" right="{}" )", nameOf(arrows.up),
                       nameOf(arrows.down), nameOf(arrows.left), nameOf(arrows.right));
}

void removeAll(std::string& text, std::string_view part) {
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos;)
        text.erase(at, part.size());
}

}  // namespace

std::optional<std::string> finishedMap(const std::string& map, const MenuPage& page,
                                       const std::string& picture, const std::string& folder) {
    std::string text = map;
    removeAll(text, folder + "/");
    std::size_t at = text.find(kSubpictureTag);
    if (at == std::string::npos) return std::nullopt;
    text.insert(at + kSubpictureTag.size(), fmt::format("image=\"{}\" ", picture));
    for (const Button& button : page.buttons) {
        at = text.find(kButtonTag, at);
        if (at == std::string::npos) return std::nullopt;
        at += kButtonTag.size();
        if (text.compare(at, button.name.size() + 7, fmt::format("name=\"{}\"", button.name)) != 0)
            return std::nullopt;
        text.insert(at, arrowWords(page, button.arrows));
    }
    if (text.find(kButtonTag, at) != std::string::npos) return std::nullopt;
    return text;
}

}  // namespace tkv::disc
