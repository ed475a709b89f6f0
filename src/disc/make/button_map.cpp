#include "disc/make/button_map.h"

#include <pugixml.hpp>

#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>

namespace tkv::disc {

namespace {

/// A map as XML, which it is only without the folder in its names of files.
class ParsedMap {
  public:
    ParsedMap(std::string map, const std::string& folder) {
        const std::string part = folder + "/";
        for (std::size_t at = 0; (at = map.find(part, at)) != std::string::npos;)
            map.erase(at, part.size());
        document_.load_string(map.c_str());
        subpicture = document_.child("subpictures").child("stream").child("spu");
        const auto children = subpicture.children();
        buttons.assign(children.begin(), children.end());
    }

    bool holds(const MenuPage& page) const {
        return std::ranges::equal(buttons, page.buttons,
                                  [](const pugi::xml_node& node, const Button& button) {
                                      return std::string_view(node.name()) == "button" &&
                                             node.attribute("name").value() == button.name;
                                  });
    }

    std::vector<ButtonRect> rects() const {
        std::vector<ButtonRect> rects;
        rects.reserve(buttons.size());
        for (const pugi::xml_node& button : buttons) {
            const auto at = [&](const char* name) { return button.attribute(name).as_int(); };
            rects.push_back({at("x0"), at("y0"), at("x1"), at("y1")});
        }
        return rects;
    }

    std::string text() const {
        std::ostringstream text;
        document_.save(text, "");
        return text.str();
    }

    pugi::xml_node subpicture;
    std::vector<pugi::xml_node> buttons;

  private:
    pugi::xml_document document_;
};

}  // namespace

std::optional<PageButtons> pageButtons(const std::string& wideMap, const std::string& panScanMap,
                                       const MenuPage& page, const std::string& folder) {
    const ParsedMap wide(wideMap, folder);
    const ParsedMap panScan(panScanMap, folder);
    if (!wide.holds(page) || !panScan.holds(page)) return std::nullopt;
    PageButtons found{wide.rects(), panScan.rects()};
    const std::size_t thumbnails = page.thumbnails.size();
    if (thumbnailLayout(page.isMain, thumbnails).button.strip > 0) {
        for (std::size_t i = 0; i < thumbnails; ++i)
            found.wide[i].y1 = found.panScan[i].y1;
    }
    return found;
}

std::optional<std::string> finishedMap(const std::string& map, const MenuPage& page,
                                       const std::vector<ButtonRect>& buttons,
                                       const SubpictureNames& pictures, const std::string& folder) {
    ParsedMap finished(map, folder);
    if (!finished.holds(page)) return std::nullopt;
    finished.subpicture.append_attribute("image") = pictures.image.c_str();
    finished.subpicture.attribute("highlight") = pictures.highlight.c_str();
    finished.subpicture.attribute("select") = pictures.select.c_str();
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        pugi::xml_node button = finished.buttons[i];
        const auto& [x0, y0, x1, y1] = buttons[i];
        for (const auto& [name, at] : {std::pair("x0", x0), {"y0", y0}, {"x1", x1}, {"y1", y1}})
            button.attribute(name) = at;
        const auto& [up, down, left, right] = page.buttons[i].arrows;
        for (const auto& [key, to] :
             {std::pair("up", up), {"down", down}, {"left", left}, {"right", right}})
            button.append_attribute(key) = page.buttons[to].name.c_str();
    }
    return finished.text();
}

}  // namespace tkv::disc
