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

// A menu begins anew at its end, wherever its loops are then. The length of one that has just
// ended, or nearly so, and uses most of the frames that there are.
int loopLength(int most, int menuFrames) {
    if (most >= menuFrames) return menuFrames;
    int best = most, leastHop = most;
    for (int length = most; length > most * 3 / 4; --length) {
        const int left = menuFrames % length;
        const int hop = std::min(left, length - left);
        if (hop < leastHop) {
            best = length;
            leastHop = hop;
        }
    }
    return best;
}

// The frames at which the parts of an excerpt begin, how many stand before each for the last ones
// to turn into, and how many are shown.
struct Loop {
    std::vector<int> firsts;
    int lead = 0;
    int count = 1;
};

// `begins`: the frames at which something is to be seen. `end`: of the excerpt.
Loop loopOf(const std::vector<int>& begins, int end, const StandardFacts& facts) {
    const int half = static_cast<int>(facts.frameRate.perSecond() / 2);
    Loop loop;
    const auto isLong = [&](int begin) { return end - std::max(begin, half) >= 4 * half; };
    if (std::ranges::all_of(begins, isLong)) loop.lead = half;
    int most = end;
    for (const int begin : begins) {
        loop.firsts.push_back(std::max(begin, loop.lead));
        most = std::min(most, end - loop.firsts.back());
    }
    loop.count = loopLength(std::max(most, 1), facts.menuFrames);
    return loop;
}

WantedExcerpt wantedExcerpt(const DiscFilm& film, const Excerpt& excerpt,
                            const std::vector<Scene>& scenes) {
    const Conversion& conversion = film.conversion;
    const StandardFacts facts = factsOf(conversion.standard);
    const auto frameAt = [&](double seconds) {
        const double frame = seconds / conversion.speed * facts.frameRate.perSecond();
        return static_cast<int>(std::round(std::min<double>(frame, conversion.shownFrames())));
    };
    std::vector<int> begins;
    begins.reserve(scenes.size());
    for (const Scene& scene : scenes)
        begins.push_back(std::clamp(frameAt(scene.seconds), 0, conversion.shownFrames() - 1));
    const Loop loop = loopOf(begins, frameAt(excerpt.end), facts);
    WantedExcerpt wanted;
    wanted.lead = loop.lead;
    wanted.shape = excerpt.shape;
    for (const int first : loop.firsts)
        wanted.parts.push_back({first - loop.lead, loop.lead + loop.count});
    return wanted;
}

std::string wordsOf(const FrameShape& shape) {
    const Placement& window = shape.window;
    return fmt::format("{} {} {} {} {} {} {}", shape.frame.width, shape.frame.height, window.x,
                       window.y, window.width, window.height, shape.pictures);
}

std::string nameOf(const WantedExcerpt& wanted, const std::string& film) {
    std::vector<std::string> inputs{film, wordsOf(wanted.shape), fmt::format("{}", wanted.lead)};
    for (const FrameRange& part : wanted.parts)
        inputs.push_back(fmt::format("{} {}", part.first, part.count));
    return Workshop::nameOf("excerpt", "", inputs);
}

}  // namespace

std::vector<WantedExcerpt> wantedExcerpts(const DiscFilm& film, const std::string& name,
                                          const std::vector<std::vector<Scene>>& scenes) {
    std::vector<WantedExcerpt> all;
    for (std::size_t i = 0; i < film.excerpts.size(); ++i) {
        all.push_back(wantedExcerpt(film, film.excerpts[i], scenes[i]));
        all.back().name = nameOf(all.back(), name);
    }
    return all;
}

ExcerptBatch::ExcerptBatch(std::vector<WantedExcerpt> wanted, const std::string& film,
                           Workshop& workshop)
    : wanted_(std::move(wanted)), workshop_(workshop) {
    for (const WantedExcerpt& excerpt : wanted_) {
        const PixelSize size = excerpt.shape.picture();
        auto frames = std::ranges::find(frames_, size, &Frames::size);
        if (frames == frames_.end()) {
            const std::string folder =
                workshop.newFolder(fmt::format("{}-{}x{}", film, size.width, size.height));
            frames = frames_.insert(frames_.end(), {size, {}, folder});
        }
        frames->ranges.insert(frames->ranges.end(), excerpt.parts.begin(), excerpt.parts.end());
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

Pictures ExcerptBatch::picturesOf(const FrameRange& range, const Frames& frames) const {
    return picturesIn(frames.folder, indexIn(frames.ranges, range.first), range.count, workshop_);
}

void ExcerptBatch::handOut() {
    for (const WantedExcerpt& excerpt : wanted_) {
        if (workshop_.has(excerpt.name)) continue;  // Another page shows the same.
        const Frames& frames = *std::ranges::find(frames_, excerpt.shape.picture(), &Frames::size);
        std::vector<Pictures> parts;
        for (const FrameRange& part : excerpt.parts)
            parts.push_back(picturesOf(part, frames));
        writeExcerpt(parts, excerpt.shape, excerpt.lead, workshop_.newFolder(excerpt.name),
                     workshop_);
        workshop_.finish(excerpt.name);
    }
    for (const Frames& frames : frames_)
        fs::remove_all(workshop_.path(frames.folder));
}

std::vector<std::string> stillExcerpts(const DiscFilm& film,
                                       const std::vector<std::vector<Scene>>& scenes,
                                       Workshop& workshop) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < film.excerpts.size(); ++i) {
        const FrameShape& shape = film.excerpts[i].shape;
        std::vector<Pictures> parts;
        std::vector<std::string> inputs{wordsOf(shape)};
        for (const Scene& scene : scenes[i]) {
            parts.push_back({scene.picture});
            inputs.push_back(scene.picture);
        }
        if (shape.isOnePicture()) {
            names.push_back(parts.front().front());
            continue;
        }
        names.push_back(
            workshop.result(Workshop::nameOf("still", "", inputs), [&](const std::string& made) {
                fs::create_directory(workshop.path(made));
                writeExcerpt(parts, shape, 0, made, workshop);
            }));
    }
    return names;
}

Pictures picturesIn(const std::string& folder, int first, int count, const Workshop& workshop) {
    Pictures pictures;
    for (int i = 0; i < count; ++i) {
        std::string picture = joinPath(folder, frameName(first + i));
        if (!fs::exists(workshop.path(picture))) break;
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

}  // namespace tkv::disc
