#include "disc/excerpts.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "system/paths.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

std::string frameName(int number) {
    return fmt::format("{:06}.jpg", number);
}

// The runs joined where they touch or overlap.
std::vector<FrameRange> joined(std::vector<FrameRange> ranges) {
    std::ranges::sort(ranges, {}, &FrameRange::first);
    std::vector<FrameRange> all;
    for (const FrameRange& range : ranges) {
        if (all.empty() || range.first > all.back().first + all.back().count) {
            all.push_back(range);
        } else {
            const int end =
                std::max(all.back().first + all.back().count, range.first + range.count);
            all.back().count = end - all.back().first;
        }
    }
    return all;
}

// The frame's number among those of the runs, one of which holds it.
int indexIn(const std::vector<FrameRange>& ranges, int frame) {
    int index = 0;
    for (const FrameRange& range : ranges) {
        if (frame < range.first + range.count) return index + frame - range.first;
        index += range.count;
    }
    return index;
}

// A second name for a file's bytes; a copy where the file system has no such names.
void linkOrCopy(const std::string& from, const std::string& to) {
    std::error_code error;
    fs::create_hard_link(from, to, error);
    if (error) fs::copy_file(from, to);
}

}  // namespace

ExcerptBatch::ExcerptBatch(std::vector<WantedExcerpt> wanted, const std::string& film)
    : wanted_(std::move(wanted)) {
    for (const WantedExcerpt& excerpt : wanted_) {
        auto frames = std::ranges::find(frames_, excerpt.size, &Frames::size);
        if (frames == frames_.end()) {
            const std::string name =
                fmt::format("{}-{}x{}", film, excerpt.size.width, excerpt.size.height);
            frames = frames_.insert(frames_.end(), {excerpt.size, {}, Workshop::unfinished(name)});
            fs::create_directory(frames->folder);
        }
        frames->ranges.push_back(excerpt.range);
    }
    for (Frames& frames : frames_)
        frames.ranges = joined(std::move(frames.ranges));
}

std::vector<ExcerptOutput> ExcerptBatch::outputs() const {
    std::vector<ExcerptOutput> outputs;
    outputs.reserve(frames_.size());
    for (const Frames& frames : frames_)
        outputs.push_back({frames.size, frames.ranges, joinPath(frames.folder, "%06d.jpg")});
    return outputs;
}

void ExcerptBatch::handOut(Workshop& workshop) {
    for (const WantedExcerpt& excerpt : wanted_) {
        if (workshop.has(excerpt.name)) continue;  // Another page shows the same.
        const Frames& frames = *std::ranges::find(frames_, excerpt.size, &Frames::size);
        const std::string folder = Workshop::unfinished(excerpt.name);
        fs::create_directory(folder);
        const int first = indexIn(frames.ranges, excerpt.range.first);
        for (int i = 0; i < excerpt.range.count; ++i) {
            const std::string frame = joinPath(frames.folder, frameName(first + i));
            // The last frames of a film may be missing: its length is known to a frame or two.
            if (fs::exists(frame)) linkOrCopy(frame, joinPath(folder, frameName(i)));
        }
        workshop.finish(excerpt.name);
    }
    for (const Frames& frames : frames_)
        fs::remove_all(frames.folder);
}

}  // namespace tkv::disc
