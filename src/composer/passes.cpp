#include "composer/passes.h"

#include <map>
#include <string>

#include "composer/jacket.h"
#include "composer/page_composer.h"
#include "composer/page_geometry.h"
#include "composer/page_renderer.h"
#include "imaging/rescale.h"
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

void startPass(int pass, int passes) {
    constexpr int kPassesPerLine = 30;
    if (pass % kPassesPerLine == 0) {
        writeProgress(static_cast<float>(pass) / static_cast<float>(passes) * 100.0F);
    }
    if (isVerbose()) logLine("pass                : {}/{}\n", pass, passes);
}

/// What a pass logs once its page is composed.
void endPass(const MenuRequest& request, const std::string& spuTxtStr) {
    if (!isVerbose()) return;
    logLine("spuTxtStr  post-nav : {}", spuTxtStr);
    logLine("dstPathStr post-nav : {}", request.output);
}

bool writePicture(PageRenderer& renderer, const Page& page, const std::string& path, PixelSize size,
                  float quality) {
    const std::optional<Bitmap> canvas = renderer.render(page);
    return canvas &&
           imgRescale(&*canvas, path, size.width, size.height, kDotsPerInch, kStretch, quality);
}

/// Writes the frames of a menu into its output folder.
class FrameWriter {
  public:
    FrameWriter(std::string folder, EqualPages equalPages)
        : folder_(std::move(folder)), copiesEqualPages_(equalPages == EqualPages::copied) {}

    /// Frame `pass`, from 0. A failure is only logged.
    void write(const Page& page, int pass) {
        const std::string name = fmt::format("{:03}.jpg", pass);
        const std::string path = joinPath(folder_, name);
        if (isVerbose()) logLine("dstPathStr : {} -> {}", folder_, path);
        const bool isSuccess =
            fileExists(folder_) && folderExists(folder_) && writeFile(page, path);
        if (isVerbose()) logLine("isSuccess           :-{} img {}", isSuccess ? ")" : "(", name);
    }

  private:
    bool writeFile(const Page& page, const std::string& path) {
        if (!copiesEqualPages_) return draw(page, path);
        const auto [first, isNew] = firstFrames_.try_emplace(page, path);
        return (!isNew && copyFile(first->second, path)) || draw(page, path);
    }

    bool draw(const Page& page, const std::string& path) {
        return writePicture(renderer_, page, path, {kPageWidth, kPageHeight}, kDefaultQuality);
    }

    std::string folder_;
    bool copiesEqualPages_;
    PageRenderer renderer_;
    std::map<Page, std::string> firstFrames_;
};

}  // namespace

bool writePreview(const MenuRequest& request, const Background& background) {
    PageComposer composer(request, background);
    startPass(0, passCount(request.isPal));
    const std::optional<Page> page = composer.composePass(0);
    if (!page) return false;
    endPass(request, "");
    PageRenderer renderer;
    const bool isSuccess =
        writePicture(renderer, *page, request.output, kPreviewSize, kDefaultQuality);
    writeProgress(100);
    return isSuccess;
}

bool writeFrames(const MenuRequest& request, const Background& background, EqualPages equalPages) {
    if (fileExists(request.output) && !folderExists(request.output)) rmCocoa(request.output);
    mkdirCocoa(request.output);
    PageComposer composer(request, background);
    FrameWriter writer(request.output, equalPages);
    const int passes = passCount(request.isPal);
    for (int pass = 0; pass < passes; ++pass) {
        startPass(pass, passes);
        const std::optional<Page> page = composer.composePass(pass);
        if (!page) return false;
        endPass(request, "");
        writer.write(*page, pass);
    }
    writeProgress(100);
    return true;
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
