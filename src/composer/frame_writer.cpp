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
    bool isWritten = false;
    if (equalPages_ == EqualPages::drawnAgain) return draw_(page, path, &isWritten);
    const auto first = firstFrames_.find(page);
    if (first != firstFrames_.end() && first->second.isUnchanged() &&
        copyFile(first->second.path, path)) {
        if (const std::optional<FileStamp> copy = fileStamp(path)) forgetFilesOf(*copy);
        return true;
    }
    const bool isSuccess = draw_(page, path, &isWritten);
    const std::optional<FileStamp> drawn = fileStamp(path);
    if (isWritten && drawn) {
        forgetFilesOf(*drawn);
        firstFrames_.insert_or_assign(page, Frame{path, *drawn});
    }
    return isSuccess;
}

// Frames that are another name of a file that was just written: with coarse timestamps it may look
// unchanged.
void FrameWriter::forgetFilesOf(const FileStamp& written) {
    std::erase_if(firstFrames_, [&](const auto& entry) {
        const FileStamp& stamp = entry.second.stamp;
        return stamp.device == written.device && stamp.inode == written.inode;
    });
}

}  // namespace tkv
