#pragma once

#include <future>
#include <string>
#include <vector>

#include "composer/menu_request.h"
#include "disc/film_maker.h"
#include "disc/menu_clip.h"
#include "disc/plan.h"
#include "disc/progress.h"
#include "disc/project.h"
#include "disc/workshop.h"
#include "system/descriptor.h"

namespace tkv::disc {

/// What all menus of a disc share: names in the workshop.
struct MenuSetting {
    Standard standard = Standard::pal;
    int rate = 0;            ///< kb/s of the picture
    std::string background;  ///< a picture of 16:9 in the page's pixels; may be empty
    MenuSound sound;
    std::string soundStamp;  ///< differs after the sound's file has changed
};

/// Seconds of work for a menu, as Progress counts it.
inline constexpr double kMenuWeight = 4;

/// Draws the menus of a disc and makes films with buttons of them. The composer draws one page at
/// a time: to be used in one thread. While it lives the composer's lines go to "composer.log".
class MenuMaker {
  public:
    /// The workshop and the progress must outlive it.
    MenuMaker(MenuSetting setting, Workshop& workshop, Progress& progress);
    ~MenuMaker();
    MenuMaker(MenuMaker&&) = delete;

    /// Draws the menu of a page whose excerpts are there, and answers what its film will be called
    /// in the workshop. The film itself is made while the caller goes on. The progress must expect
    /// kMenuWeight for it.
    std::string make(const PageWork& work);

    /// Returns when all menus are made. Throws, as make does, what has ended one.
    void finish();

    /// Draws the page once, its thumbnails from `thumbnails`: pictures, or folders of frames.
    void drawPreview(const PageWork& work, const std::vector<std::string>& thumbnails,
                     const std::string& output);

    /// Draws the picture for the disc's case. `background`: a picture; may be empty.
    void drawJacket(const std::string& title, const std::string& line,
                    const std::string& background, const std::string& output);

  private:
    MenuRequest requestOf(const PageWork& work, const std::vector<std::string>& thumbnails,
                          MenuMode mode, const std::string& output) const;
    void drawFrames(const PageWork& work, Descriptor encoder);
    void drawMaps(const PageWork& work, const std::string& folder);
    void encode(const PageWork& work, Descriptor frames, const std::string& clip);
    void addButtons(const PageWork& work, const std::string& maps, const std::string& clip,
                    const std::string& output);
    std::string dot();

    MenuSetting setting_;
    std::string faces_;  // that the texts are set in
    Workshop& workshop_;
    Progress& progress_;
    std::future<void> finishing_;  // the last menu that was drawn
};

}  // namespace tkv::disc
