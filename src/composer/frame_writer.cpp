#include "composer/frame_writer.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "system/log.h"
#include "system/paths.h"
#include "utils/existence.h"

namespace tkv {

FrameWriter::FrameWriter(std::string folder, EqualPages equalPages, PageWriter draw)
    : folder_(std::move(folder)), equalPages_(equalPages), draw_(std::move(draw)) {}

void FrameWriter::write(const Page& page, int number) {
    const std::string name = fmt::format("{:03}.jpg", number);
    const std::string path = joinPath(folder_, name);
    verboseLine("dstPathStr : {} -> {}", folder_, path);
    const bool isSuccess = fileExists(folder_) && folderExists(folder_) && writeFile(page, path);
    verboseLine("isSuccess           :-{} img {}", isSuccess ? ")" : "(", name);
}

bool FrameWriter::writeFile(const Page& page, const std::string& path) {
    if (equalPages_ == EqualPages::drawnAgain) return draw_(page, path);
    const auto first = firstFrames_.find(page);
    if (first != firstFrames_.end() && first->second.isUnchanged() &&
        copyFile(first->second.path, path)) {
        return true;
    }
    // Only a file that this drawing has written may stand for the page: one that could not be
    // overwritten still holds something else.
    const std::optional<FileStamp> before = fileStamp(path);
    const bool isSuccess = draw_(page, path);
    const std::optional<FileStamp> after = fileStamp(path);
    if (isSuccess && after && after != before) {
        firstFrames_.insert_or_assign(page, Frame{path, *after});
    }
    return isSuccess;
}

}  // namespace tkv
