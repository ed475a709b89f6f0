#include "disc/make/excerpts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
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

std::vector<WantedExcerpt> wantedExcerpts(const DiscFilm& film, const std::string& name,
                                          const std::vector<Scene>& scenes) {
    const Conversion& conversion = film.conversion;
    const StandardFacts facts = factsOf(conversion.standard);
    std::vector<WantedExcerpt> all;
    for (std::size_t i = 0; i < film.excerpts.size(); ++i) {
        const auto frameAt = [&](double seconds) {
            const double frame = seconds / conversion.speed * facts.frameRate.perSecond();
            return static_cast<int>(std::round(std::min<double>(frame, conversion.frames)));
        };
        const Excerpt& excerpt = film.excerpts[i];
        WantedExcerpt wanted;
        wanted.size = excerpt.size;
        wanted.range.first = std::clamp(frameAt(scenes[i].seconds), 0, conversion.frames - 1);
        const int end = std::max(frameAt(excerpt.end), wanted.range.first + 1);
        wanted.range.count = std::min(facts.menuFrames, end - wanted.range.first);
        wanted.name = Workshop::nameOf(
            "excerpt", "",
            {name, fmt::format("{} {} {} {}", wanted.range.first, wanted.range.count,
                               wanted.size.width, wanted.size.height)});
        all.push_back(std::move(wanted));
    }
    return all;
}

ExcerptBatch::ExcerptBatch(std::vector<WantedExcerpt> wanted, const std::string& film,
                           Workshop& workshop)
    : wanted_(std::move(wanted)), workshop_(workshop) {
    for (const WantedExcerpt& excerpt : wanted_) {
        auto frames = std::ranges::find(frames_, excerpt.size, &Frames::size);
        if (frames == frames_.end()) {
            const std::string folder = workshop.newFolder(
                fmt::format("{}-{}x{}", film, excerpt.size.width, excerpt.size.height));
            frames = frames_.insert(frames_.end(), {excerpt.size, {}, folder});
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
        outputs.push_back({frames.size, frames.ranges, joinPath(frames.folder, kFramePattern)});
    return outputs;
}

void ExcerptBatch::handOut() {
    for (const WantedExcerpt& excerpt : wanted_) {
        if (workshop_.has(excerpt.name)) continue;  // Another page shows the same.
        const Frames& frames = *std::ranges::find(frames_, excerpt.size, &Frames::size);
        const std::string from = workshop_.path(frames.folder);
        const std::string to = workshop_.path(workshop_.newFolder(excerpt.name));
        const int first = indexIn(frames.ranges, excerpt.range.first);
        for (int i = 0; i < excerpt.range.count; ++i) {
            const std::string frame = joinPath(from, frameName(first + i));
            // The last frames of a film may be missing: its length is known to a frame or two.
            if (fs::exists(frame)) linkOrCopy(frame, joinPath(to, frameName(i)));
        }
        workshop_.finish(excerpt.name);
    }
    for (const Frames& frames : frames_)
        fs::remove_all(workshop_.path(frames.folder));
}

}  // namespace tkv::disc
