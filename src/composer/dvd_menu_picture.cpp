#include "composer/dvd_menu_picture.h"

#include "composer/background.h"
#include "composer/page_geometry.h"
#include "composer/passes.h"
#include "composer/thumbnail_frames.h"
#include "system/description.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"

namespace tkv {

namespace {

void logRequest(const MenuRequest& request) {
    logLine("args : {:d}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}, {:d}", request.isMainMenu,
            static_cast<std::int32_t>(request.mode), describe(request.bkg), describe(request.title),
            describe(request.dvdBt_readAll), describe(request.dvdBt_menuPrev),
            describe(request.dvdBt_menuMain), describe(request.dvdBt_menuNext),
            describe(request.thumbs), describe(request.captions), request.output, request.isPal);
}

// The request with its paths resolved.
MenuRequest begin(const MenuRequest& given) {
    logLine("dvdMenuPicture       : deb");
    if (isVerbose()) logRequest(given);
    MenuRequest request = given;
    // Expanded once, before any test, so that all of them mean the same file.
    request.output = expandTilde(given.output);
    if (request.thumbs && request.mode != MenuMode::overlay) {
        request.thumbs = resolveThumbnails(*request.thumbs);
    }
    return request;
}

}  // namespace

bool dvdMenuPicture(const MenuRequest& given) {
    const MenuRequest request = begin(given);
    switch (request.mode) {
        case MenuMode::preview:
            return writePreview(request, prepareBackground(request));
        case MenuMode::jacket:
            return writeJacket(request, prepareBackground(request));
        case MenuMode::definitive:
            // Every pass of a verbose run is drawn, so that its lines tell what was done.
            return writeFrames(request, prepareBackground(request),
                               isVerbose() ? EqualPages::drawnAgain : EqualPages::copied);
        case MenuMode::overlay:
            verboseLine("overlayYFactor={:f}", overlayYFactor(request.mode, request.isPal));
            return writeOverlay(request);
    }
    return false;
}

bool drawMenuFrames(const MenuRequest& given, const FrameTaker& take) {
    MenuRequest request = given;
    request.mode = MenuMode::definitive;
    request = begin(request);
    return drawFrames(request, prepareBackground(request), take);
}

}  // namespace tkv
