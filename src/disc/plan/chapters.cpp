#include "disc/plan/chapters.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tkv::disc {

namespace {

constexpr double kLeastGap = 2;
constexpr double kSkipEvery = 300;

std::vector<Chapter> evenly(double seconds, double step) {
    std::vector<Chapter> chapters;
    // Counted, so that no rounding adds up.
    for (int i = 0; i * step < seconds; ++i)
        chapters.push_back({i * step, ""});
    return chapters;
}

double nearest(const std::vector<double>& sorted, double value) {
    const auto above = std::ranges::lower_bound(sorted, value);
    if (above == sorted.begin()) return *above;
    if (above == sorted.end() || *above - value > value - *(above - 1)) return *(above - 1);
    return *above;
}

// Where a moment of the film can begin a chapter on the disc.
double entryPoint(const Film& film, double seconds, const Conversion& conversion) {
    if (conversion.isCopied)
        return film.keyframes.empty() ? seconds : nearest(film.keyframes, seconds);
    return conversion.startOf(conversion.frameAt(seconds / conversion.speed));
}

// Sorted, the first at 0, none too near to another or the end. Counts those that are left out, but
// for such as would be the film's last moment or none of it, which nobody misses.
std::vector<Chapter> tidied(std::vector<Chapter> chapters, double end, std::size_t& leftOut) {
    std::ranges::stable_sort(chapters, {}, &Chapter::seconds);
    std::vector<Chapter> kept;
    if (chapters.empty() || chapters.front().seconds >= kLeastGap) kept.push_back({});
    for (Chapter& chapter : chapters) {
        if (kept.empty()) chapter.seconds = 0;
        if (!kept.empty() && end - chapter.seconds < kLeastGap) break;
        const bool isApart = kept.empty() || chapter.seconds - kept.back().seconds >= kLeastGap;
        if (isApart && kept.size() < kMostChapters) {
            kept.push_back(std::move(chapter));
        } else {
            ++leftOut;
        }
    }
    return kept;
}

}  // namespace

ChapterList chaptersOf(const FilmRequest& request, const Film& film, const ChapterRule& rule,
                       const Conversion& conversion) {
    ChapterList list;
    if (request.chapters) {
        list = {*request.chapters, true};
    } else if (rule.source == ChapterRule::Source::every) {
        list = {evenly(film.seconds, rule.seconds), true};
    } else {
        list = {film.marks, rule.source == ChapterRule::Source::marks};
    }
    if (list.chapters.empty()) list = {evenly(film.seconds, kSkipEvery), false};
    for (Chapter& chapter : list.chapters)
        chapter.seconds = entryPoint(film, chapter.seconds, conversion);
    list.chapters = tidied(std::move(list.chapters), conversion.seconds, list.leftOut);
    if (list.chapters.size() < 2) list.hasMenu = false;
    return list;
}

}  // namespace tkv::disc
