#include "composer/thumbnail_frames.h"

#include <algorithm>
#include <utility>

#include "system/log.h"
#include "system/paths.h"
#include "system/verbose.h"
#include "utils/existence.h"
#include "utils/file_operations.h"

namespace tkv {

std::vector<std::string> resolveThumbnails(const std::vector<std::string>& entries) {
    std::vector<std::string> resolved;
    std::string baseFolder;
    for (const std::string& entry : entries) {
        if (fileExists(entry)) {
            resolved.push_back(entry);
            baseFolder = parentFolder(entry);
        } else if (!baseFolder.empty()) {
            std::string joined = joinPath(baseFolder, entry);
            if (fileExists(joined)) resolved.push_back(std::move(joined));
        }
    }
    return resolved;
}

/// The listing is cached while the folder's stamp is the same; verbose runs list it in every pass,
/// for the lines.
const std::vector<std::string>& ThumbnailFrames::filesOf(const std::string& folder) {
    const FileStamp stamp = fileStamp(folder).value_or(FileStamp{});
    const auto [listing, isNew] = listings_.try_emplace(folder);
    if (isNew || isVerbose() || listing->second.stamp != stamp) {
        listing->second = {stamp, lsCocoa(folder).value_or(std::vector<std::string>{})};
    }
    return listing->second.files;
}

/// Advances the place's counter to its next frame. Place 0 wraps when it stands exactly on the last
/// frame, the others also beyond it.
int ThumbnailFrames::advance(std::size_t place, int pass, int frames) {
    int& counter = counters_[std::min(place, counters_.size() - 1)];
    const int next = counter + 1;
    if (place == 0 && isVerbose()) {
        logLine(
            "[imgA count]={} h={} bt0Int={},  (h>=[imgA count])?{:d} "
            "((bt0Int+1)>=[imgA count])?{:d}",
            frames, pass, next, pass >= frames, next >= frames);
    }
    const bool atEnd = place == 0 ? next == frames : next >= frames;
    counter = pass >= frames && atEnd ? 0 : next;
    verboseLine("btCurrent = {}", counter);
    return counter;
}

std::optional<std::string> ThumbnailFrames::pictureOf(const std::string& entry, std::size_t place,
                                                      int pass) {
    if (pathExtension(entry) == "jpg") return entry;
    if (!folderExists(entry)) return std::nullopt;
    const std::vector<std::string>& imgA = filesOf(entry);
    if (imgA.empty()) return std::nullopt;
    const auto btCurrent =
        static_cast<std::size_t>(advance(place, pass, static_cast<int>(imgA.size())));
    if (btCurrent >= imgA.size() || !fileExists(imgA[btCurrent])) return std::nullopt;
    return imgA[btCurrent];
}

}  // namespace tkv
