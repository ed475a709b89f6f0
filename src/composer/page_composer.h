#pragma once

#include <optional>
#include <string>
#include <vector>

#include "composer/background.h"
#include "composer/button_layout.h"
#include "composer/menu_request.h"
#include "composer/page.h"
#include "composer/thumbnail_frames.h"
#include "composer/thumbnail_layout.h"

namespace tkv {

/// What one pass of a menu comes to.
struct Pass {
    Page page;
    ButtonMap buttons;  ///< Of an overlay; empty in the other modes.
};

/// Says what each pass of a menu shows: background, thumbnails with their captions, title and
/// navigation labels, or in an overlay their buttons. Writes the diagnostic lines of its steps;
/// draws nothing.
class PageComposer {
  public:
    /// `request`: its thumbnails resolved; not owned, must outlive the composer.
    PageComposer(const MenuRequest& request, Background background);

    /// Pass `number`; called once for each, from 0 on. None, and the composition has failed, when
    /// there is a caption list without a caption for some thumbnail. The page of an overlay shows
    /// nothing, or while verbose the areas of its buttons.
    std::optional<Pass> composePass(int number);

  private:
    /// The thumbnails of a pass.
    struct Thumbnails {
        const std::vector<std::string>& thumbsA;
        const ThumbnailLayout& layout;
        int pass;  ///< Its number.
    };
    enum class Outcome { placed, noThumbnail, noCaption };

    Outcome addThumbnails(Pass& pass, int number);
    Outcome addThumbnail(Pass& pass, const Thumbnails& thumbnails, std::size_t index);
    void addPictures(Page& page, const Thumbnails& thumbnails, const std::string& file,
                     std::size_t index) const;
    void addButton(Pass& pass, const Thumbnails& thumbnails, std::size_t index) const;
    Outcome addCaption(Page& page, const Thumbnails& thumbnails, std::size_t index) const;
    void addTitle(Page& page) const;
    void addNavigation(Pass& pass) const;

    /// An overlay is not drawn: it only knows where its buttons are.
    bool isDrawn() const { return request_.mode != MenuMode::overlay; }

    const MenuRequest& request_;
    Background background_;
    Raster raster_;
    ThumbnailFrames frames_;
};

}  // namespace tkv
