#include "disc/subtitle/cues.h"

#include <algorithm>
#include <utility>

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

std::vector<Cue> cuesOf(SubtitleDrawing& drawing, const CueTimes& times) {
    // A player is told after how long a picture goes, in 16 bits: less than twelve minutes.
    constexpr int kMostFrames = 10 * 60 * 24;
    const std::vector<int> edges = edgesOf(drawing.lines(), times);
    std::vector<Cue> cues;
    for (std::size_t i = 1; i < edges.size(); ++i) {
        const double middle = (times.secondsOf(edges[i - 1]) + times.secondsOf(edges[i])) / 2;
        SubtitlePicture picture = drawing.at(middle);
        if (picture.isEmpty()) continue;
        for (int first = edges[i - 1]; first < edges[i];) {
            const int end = std::min(edges[i], first + kMostFrames);
            const bool goesOn = !cues.empty() && cues.back().end == first &&
                                end - cues.back().first <= kMostFrames &&
                                cues.back().picture == picture;
            if (goesOn) {
                cues.back().end = end;
            } else {
                cues.push_back({first, end, picture});
            }
            first = end;
        }
    }
    return cues;
}

}  // namespace tkv::disc
