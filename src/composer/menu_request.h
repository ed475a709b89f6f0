#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tkv {

enum class MenuMode : std::int32_t {
    preview = -1,    ///< one picture of the page, 640 x 360
    definitive = 0,  ///< the animated page: a folder of 720 x 540 pictures, one per frame
    jacket = 1,      ///< one cover picture, 720 x 540
    overlay = 2,     ///< the button map and the highlight and select pictures of the subpicture
};

/// All that one menu picture is made from. Paths and texts are the bytes of the command line;
/// nothing in them has been validated unless said otherwise.
struct MenuRequest {
    bool isMainMenu = false;  ///< the main menu, or else a submenu
    MenuMode mode = MenuMode::definitive;
    std::optional<std::string> bkg;   ///< absolute path of the background picture
    std::optional<std::string> icon;  ///< path of the icon picture; jacket only
    std::optional<std::string> title;
    std::optional<std::string> dvdBt_readAll;          ///< label of the button that plays all; on a
                                                       ///< jacket a line of text
    std::optional<std::string> dvdBt_menuPrev;         ///< label of the button to the previous menu
    std::optional<std::string> dvdBt_menuMain;         ///< label of the button to the main menu
    std::optional<std::string> dvdBt_menuNext;         ///< label of the button to the next menu
    std::optional<std::vector<std::string>> thumbs;    ///< one per button: a picture or a folder of
                                                       ///< frame pictures
    std::optional<std::vector<std::string>> captions;  ///< one per thumbnail, in the same order
    std::string output;  ///< a picture file, or a folder in definitive mode
    bool isPal = true;   ///< the PAL raster, or else the NTSC one
};

}  // namespace tkv
