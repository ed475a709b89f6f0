#include "disc/subtitle/cues.h"

#include <algorithm>
#include <utility>

#include "disc/run/fault.h"

namespace tkv::disc {

namespace {

// Frames between which something may change.
std::vector<int> edgesOf(const std::vector<SubtitleDrawing::Span>& lines, const CueTimes& times) {
    std::vector<int> edges;
    edges.reserve(2 * lines.size());
    for (const SubtitleDrawing::Span& line : lines) {
        for (const double seconds : {line.begin, line.end})
            edges.push_back(std::clamp(times.frameAt(seconds), 0, times.frames));
    }
    std::ranges::sort(edges);
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

}  // namespace

void cuesOf(SubtitleDrawing& drawing, const CueTimes& times, const ProgramStop& stop,
            const std::function<void(const Cue& cue)>& take) {
    // A player is told after how long a picture goes, in 16 bits: less than twelve minutes.
    constexpr int kMostFrames = 10 * 60 * 24;
    const std::vector<int> edges = edgesOf(drawing.lines(), times);
    Cue cue;
    const auto finish = [&] {
        if (!cue.picture.isEmpty()) take(cue);
    };
    for (std::size_t i = 1; i < edges.size(); ++i) {
        if (stop.isStopped()) throw Interrupted();
        const double middle = (times.secondsOf(edges[i - 1]) + times.secondsOf(edges[i])) / 2;
        const SubtitlePicture picture = drawing.at(middle);
        for (int first = edges[i - 1]; first < edges[i];) {
            const int end = std::min(edges[i], first + kMostFrames);
            if (end - cue.first > kMostFrames || cue.picture != picture) {
                finish();
                cue = {first, end, picture};
            }
            cue.end = first = end;
        }
    }
    finish();
}

}  // namespace tkv::disc
