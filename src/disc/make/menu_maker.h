#pragma once

#include <future>
#include <string>
#include <vector>

#include "composer/button_layout.h"
#include "composer/menu_request.h"
#include "disc/make/menu_setting.h"
#include "disc/plan/plan.h"
#include "disc/run/composer_log.h"
#include "disc/run/progress.h"
#include "disc/run/workshop.h"
#include "system/descriptor.h"

namespace tkv::disc {

/// Seconds of work for a menu, as Progress counts it.
inline constexpr double kMenuWeight = 4;

/// Draws the menus of a disc and makes films with buttons of them. The composer draws one page at
/// a time: to be used in one thread. While it lives the composer's lines go to "composer.log" in
/// the workshop.
class MenuMaker {
  public:
    /// `background`: a name in the workshop, as makeBackground returns it. The workshop and the
    /// progress must outlive it.
    MenuMaker(MenuSetting setting, std::string background, Workshop& workshop, Progress& progress);
    ~MenuMaker();
    MenuMaker(MenuMaker&&) = delete;

    /// Draws the menu of a page, which must outlive this, and returns the name of its film in the
    /// workshop. The film itself is made while the caller goes on. `excerpts`: those of the page's
    /// thumbnails, by name. The progress must expect kMenuWeight for it.
    std::string make(const MenuPage& page, const std::vector<std::string>& excerpts);

    /// Returns when all menus are made. Throws, as make does, what has ended one.
    void finish();

    /// Draws the page once. `thumbnails`: names of pictures, or of folders of frames. `output`: a
    /// name in the workshop.
    void drawPreview(const MenuPage& page, const std::vector<std::string>& thumbnails,
                     const std::string& output);

    /// Draws the picture for the disc's case. `background`, `output`: names in the workshop; the
    /// first may be empty, for none.
    void drawJacket(const std::string& title, const std::string& line,
                    const std::string& background, const std::string& output);

  private:
    MenuRequest requestOf(const MenuPage& page, const std::vector<std::string>& thumbnails,
                          MenuMode mode, const std::string& output) const;
    std::string nameOf(const MenuPage& page, const std::vector<std::string>& excerpts) const;
    void drawFrames(const MenuPage& page, const std::vector<std::string>& excerpts,
                    Descriptor encoder);
    void drawMaps(const MenuPage& page, const std::vector<std::string>& excerpts,
                  const std::string& folder);
    void finishMap(const MenuPage& page, const std::string& map,
                   const std::vector<ButtonRect>& buttons, const std::string& output);
    void encode(const MenuPage& page, Descriptor frames, const std::string& clip);
    void addButtons(const MenuPage& page, const std::string& maps, const std::string& clip,
                    const std::string& output);
    void expectDrawn(bool isDrawn, const MenuPage& page) const;
    std::string dot();

    MenuSetting setting_;
    std::string background_;
    std::string faces_;  // that the texts are set in
    Workshop& workshop_;
    Progress& progress_;
    ComposerLog log_;
    std::future<void> finishing_;  // the last menu that was drawn
    std::string finishingName_;    // of that
};

}  // namespace tkv::disc
