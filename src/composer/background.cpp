#include "composer/background.h"

#include <cmath>

#include "composer/page_geometry.h"
#include "composer/reasons.h"
#include "graphics/formats.h"
#include "imaging/rescale.h"
#include "system/description.h"
#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/existence.h"

namespace tkv {

namespace {

constexpr double kFirstThumbnailZoom = 1.8;
constexpr PixelSize kFirstThumbnailBox{960, 540};
constexpr float kOpacity = 0.6F;

void tellWhyNotCut(const std::string& file, const std::string& cut) {
    std::optional<PixelSize> size;
    const bool isPicture = decodePicture(file, [&](PixelSize full) {
                               size = full;
                               return PixelSize{1, 1};
                           }).has_value();
    if (isPicture) {
        tellWhyOnce(cut, whyNotWritten(cut));
    } else {
        tellWhyNoPicture(file, size);
    }
}

}  // namespace

bool Background::isZoomed() const {
    return std::abs(zoom - 1.0) > 0.1;
}

Background prepareBackground(const MenuRequest& request) {
    verboseLine("bkgImgPathStr       : {}", describe(request.bkg));
    if (!request.bkg || !fileExists(*request.bkg)) return {};

    std::optional<std::string> firstThumbnail;
    if (request.thumbs && !request.thumbs->empty()) firstThumbnail = request.thumbs->front();
    verboseLine("dvdMenuPicture      : background '{}' <- '{}'", *request.bkg,
                describe(firstThumbnail));
    if (request.bkg != firstThumbnail) return {request.bkg};

    const std::string cut = joinPath(parentFolder(request.output), "bkgV.jpg");
    Background background{std::nullopt, kFirstThumbnailZoom};
    const std::string file = expandTilde(*request.bkg);
    bool isWritten = false;
    if (imgRescale(file, cut, kFirstThumbnailBox.width, kFirstThumbnailBox.height, kUnitsPerInch,
                   kFillAndCrop, 1.0F, &isWritten)) {
        background.path = cut;
    }
    // On a menu a folder's frames are shown enlarged instead.
    if (!isWritten && (request.mode == MenuMode::jacket || !folderExists(file)))
        tellWhyNotCut(file, cut);
    return background;
}

PictureLayer backgroundPicture(const std::string& path, double zoom, PixelSize canvas) {
    const double width = canvas.width * zoom;
    const double height = canvas.height * zoom;
    return wholePicture(
        path, {(canvas.width - width) * 0.5, (canvas.height - height) * 0.5, width, height},
        kOpacity);
}

}  // namespace tkv
