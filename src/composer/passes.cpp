#include "composer/passes.h"

#include <fmt/format.h>

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "composer/jacket.h"
#include "composer/overlay.h"
#include "composer/page_composer.h"
#include "composer/page_geometry.h"
#include "composer/page_renderer.h"
#include "imaging/rescale.h"
#include "platform/files.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/verbose.h"
#include "utils/existence.h"
#include "utils/file_operations.h"
#include "utils/guarded_removal.h"

namespace tkv {

namespace {

constexpr int kStretch = 0;
constexpr float kDefaultQuality = -1.0F;

void writeProgress(float percent) {
    writeStandardError(fmt::format("pourcentage    : {:.1f}\n", percent));
}

void startPass(int number, int passes) {
    constexpr int kPassesPerLine = 30;
    if (number % kPassesPerLine == 0) {
        writeProgress(static_cast<float>(number) / static_cast<float>(passes) * 100.0F);
    }
    if (isVerbose()) logLine("pass                : {}/{}\n", number, passes);
}

/// What a pass logs once its page is composed.
void endPass(const MenuRequest& request, const Pass& pass) {
    if (!isVerbose()) return;
    logLine("spuTxtStr  post-nav : {}", pass.buttons.wide);
    logLine("dstPathStr post-nav : {}", request.output);
}

bool writePicture(PageRenderer& renderer, const Page& page, const std::string& path, PixelSize size,
                  float quality) {
    const std::optional<Bitmap> canvas = renderer.render(page);
    return canvas &&
           imgRescale(&*canvas, path, size.width, size.height, kUnitsPerInch, kStretch, quality);
}

/// Writes the frames of a menu into its output folder.
class FrameWriter {
  public:
    FrameWriter(std::string folder, EqualPages equalPages)
        : folder_(std::move(folder)), copiesEqualPages_(equalPages == EqualPages::copied) {}

    /// Frame `number`, from 0. A failure is only logged.
    void write(const Page& page, int number) {
        const std::string name = fmt::format("{:03}.jpg", number);
        const std::string path = joinPath(folder_, name);
        if (isVerbose()) logLine("dstPathStr : {} -> {}", folder_, path);
        const bool isSuccess =
            fileExists(folder_) && folderExists(folder_) && writeFile(page, path);
        if (isVerbose()) logLine("isSuccess           :-{} img {}", isSuccess ? ")" : "(", name);
    }

  private:
    bool writeFile(const Page& page, const std::string& path) {
        if (!copiesEqualPages_) return draw(page, path);
        const auto first = firstFrames_.find(page);
        if (first != firstFrames_.end() && first->second.isUnchanged() &&
            copyFile(first->second.path, path)) {
            return true;
        }
        // Only a file that this drawing has written may stand for the page: one that could not be
        // overwritten still holds something else.
        const std::optional<FileStamp> before = fileStamp(path);
        const bool isSuccess = draw(page, path);
        const std::optional<FileStamp> after = fileStamp(path);
        if (isSuccess && after && after != before) {
            firstFrames_.insert_or_assign(page, Frame{path, *after});
        }
        return isSuccess;
    }

    bool draw(const Page& page, const std::string& path) {
        return writePicture(renderer_, page, path, {kPageWidth, kPageHeight}, kDefaultQuality);
    }

    // A frame's file as it was written; a later frame may have the same file by another name.
    struct Frame {
        std::string path;
        FileStamp stamp;
        bool isUnchanged() const { return fileStamp(path) == stamp; }
    };

    std::string folder_;
    bool copiesEqualPages_;
    PageRenderer renderer_;
    std::map<Page, Frame> firstFrames_;
};

}  // namespace

bool writePreview(const MenuRequest& request, const Background& background) {
    PageComposer composer(request, background);
    startPass(0, passCount(request.isPal));
    const std::optional<Pass> pass = composer.composePass(0);
    if (!pass) return false;
    endPass(request, *pass);
    PageRenderer renderer;
    const bool isSuccess =
        writePicture(renderer, pass->page, request.output, kPreviewSize, kDefaultQuality);
    writeProgress(100);
    return isSuccess;
}

bool writeFrames(const MenuRequest& request, const Background& background, EqualPages equalPages) {
    if (fileExists(request.output) && !folderExists(request.output)) rmCocoa(request.output);
    mkdirCocoa(request.output);
    PageComposer composer(request, background);
    FrameWriter writer(request.output, equalPages);
    const int passes = passCount(request.isPal);
    for (int number = 0; number < passes; ++number) {
        startPass(number, passes);
        const std::optional<Pass> pass = composer.composePass(number);
        if (!pass) return false;
        endPass(request, *pass);
        writer.write(pass->page, number);
    }
    writeProgress(100);
    return true;
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
    const Page page = composeJacket(request, background);
    if (isVerbose()) logLine("dstPathStr : {}", request.output);
    PageRenderer renderer;
    const bool isSuccess =
        writePicture(renderer, page, request.output, {kPageWidth, kPageHeight}, 1.0F);
    writeProgress(100);
    return isSuccess;
}

}  // namespace tkv
