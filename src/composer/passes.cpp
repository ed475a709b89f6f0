#include "composer/passes.h"

#include <fmt/format.h>

#include <ctime>
#include <functional>
#include <optional>
#include <string>

#include "composer/jacket.h"
#include "composer/overlay.h"
#include "composer/page_composer.h"
#include "composer/page_geometry.h"
#include "composer/page_renderer.h"
#include "composer/reasons.h"
#include "imaging/rescale.h"
#include "system/log.h"
#include "system/module.h"
#include "system/verbose.h"
#include "utils/existence.h"
#include "utils/file_operations.h"
#include "utils/guarded_removal.h"

namespace tkv {

namespace {

constexpr float kDefaultQuality = -1.0F;

void writeProgress(float percent) {
    writeStandardError(fmt::format("pourcentage    : {:.1f}\n", percent));
}

void startPass(int number, int passes) {
    constexpr int kPassesPerLine = 30;
    if (number % kPassesPerLine == 0) {
        writeProgress(static_cast<float>(number) / static_cast<float>(passes) * 100.0F);
    }
    verboseLine("pass                : {}/{}\n", number, passes);
}

/// What a pass logs once its page is composed.
void endPass(const MenuRequest& request, const Pass& pass) {
    if (!isVerbose()) return;
    logLine("spuTxtStr  post-nav : {}", pass.buttons.wide);
    logLine("dstPathStr post-nav : {}", request.output);
}

// Composes the page of each pass of an animated menu, until `take` returns false.
bool composeFrames(const MenuRequest& request, const Background& background,
                   const std::function<bool(const Page& page, int number)>& take) {
    PageComposer composer(request, background);
    const int passes = passCount(request.isPal);
    for (int number = 0; number < passes; ++number) {
        startPass(number, passes);
        const std::optional<Pass> pass = composer.composePass(number);
        if (!pass) return false;
        endPass(request, *pass);
        if (!take(pass->page, number)) return false;
    }
    writeProgress(100);
    return true;
}

bool writePicture(PageRenderer& renderer, const Page& page, const std::string& path, PixelSize size,
                  float quality, bool* isWritten = nullptr) {
    // Drawn at its final size, so that pictures are scaled once.
    std::optional<Bitmap> canvas = renderer.render(scaledTo(page, size));
    if (!canvas) return false;
    canvas->setNominalSize(
        {static_cast<double>(page.canvas.width), static_cast<double>(page.canvas.height)});
    return imgRescale(&*canvas, path, size.width, size.height, kUnitsPerInch, kStretch, quality,
                      isWritten);
}

// The single picture of a run; a line says why it is not there.
bool writeOutput(const Page& page, const std::string& path, PixelSize size, float quality) {
    PageRenderer renderer;
    bool isWritten = false;
    // What was there before and could not be replaced counts as there.
    const bool isThere = writePicture(renderer, page, path, size, quality, &isWritten);
    // Without the module nothing was drawn; another line says so.
    if (!isWritten && !wasModuleMissed()) tellWhy(path, whyNotWritten(path));
    return isThere;
}

}  // namespace

bool writePreview(const MenuRequest& request, const Background& background) {
    PageComposer composer(request, background);
    startPass(0, passCount(request.isPal));
    const std::optional<Pass> pass = composer.composePass(0);
    if (!pass) return false;
    endPass(request, *pass);
    const bool isSuccess = writeOutput(pass->page, request.output, kPreviewSize, kDefaultQuality);
    writeProgress(100);
    return isSuccess;
}

bool writeFrames(const MenuRequest& request, const Background& background, EqualPages equalPages) {
    // Another user may put a folder in the file's place until it is removed.
    if (fileExists(request.output) && !folderExists(request.output))
        rmCocoa(request.output, Removable::oneFile);
    mkdirCocoa(request.output);
    PageRenderer renderer;
    FrameWriter writer(request.output, equalPages,
                       [&](const Page& page, const std::string& path, bool* isWritten) {
                           return writePicture(renderer, page, path, {kPageWidth, kPageHeight},
                                               kDefaultQuality, isWritten);
                       });
    return composeFrames(request, background, [&](const Page& page, int number) {
        writer.write(page, number);
        return true;
    });
}

bool drawFrames(const MenuRequest& request, const Background& background, const FrameTaker& take) {
    PageRenderer renderer;
    return composeFrames(request, background, [&](const Page& page, int) {
        const std::optional<Bitmap> canvas = renderer.render(page);
        return canvas && take(*canvas);
    });
}

bool writeOverlay(const MenuRequest& request) {
    PageComposer composer(request, {});
    startPass(0, passCount(request.isPal));
    const std::optional<Pass> pass = composer.composePass(0);
    if (!pass) return false;
    endPass(request, *pass);
    writeOverlayFiles(request.output, pass->buttons, request.isPal);
    bool isSuccess = true;
    if (isVerbose()) {
        PageRenderer renderer;
        isSuccess =
            writePicture(renderer, pass->page, request.output, pass->page.canvas, kDefaultQuality);
    }
    writeProgress(100);
    return isSuccess;
}

bool writeJacket(const MenuRequest& request, const Background& background) {
    const Page page = composeJacket(request, background, std::time(nullptr));
    verboseLine("dstPathStr : {}", request.output);
    const bool isSuccess = writeOutput(page, request.output, {kPageWidth, kPageHeight}, 1.0F);
    writeProgress(100);
    return isSuccess;
}

}  // namespace tkv
