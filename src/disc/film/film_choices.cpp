#include "disc/film/film_choices.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

#include "disc/project/names.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace {

// Seconds. What is shorter is no film.
constexpr double kShortest = 0.5;

// Pixels. What is smaller is no picture.
constexpr int kSmallest = 16;

class Chooser {
  public:
    Chooser(FilmRequest& request, Film& film)
        : request_(request), choices_(request.choices), film_(film) {}

    void choosePicture() {
        VideoTrack& video = film_.video;
        if (choices_.aspect > 0) video.aspect = choices_.aspect;
        if (choices_.deinterlace) {
            video.isToBeWhole = *choices_.deinterlace;
            if (!video.isToBeWhole) video.fields = Fields::progressive;
        }
        const Edges& edges = choices_.edges;
        if (video.shown.width - edges.left - edges.right < kSmallest ||
            video.shown.height - edges.top - edges.bottom < kSmallest) {
            refuse("crop leaves nothing of its {} x {} pixels", video.shown.width,
                   video.shown.height);
        }
        cutEdges(film_, edges);
        if (choices_.aspect > 0 || choices_.deinterlace) film_.isAltered = true;
    }

    void chooseSound() {
        if (choices_.audioDelay != 0) {
            film_.soundDelay = choices_.audioDelay;
            film_.isAltered = true;
            for (AudioTrack& track : film_.audio)
                track.late += choices_.audioDelay;
        }
        if (!choices_.audio) return;
        std::vector<AudioTrack> chosen;
        for (const std::string& which : *choices_.audio)
            std::ranges::copy(tracksCalled(which), std::back_inserter(chosen));
        film_.audio = std::move(chosen);
        film_.picksSound = true;
    }

    void chooseTime() {
        if (choices_.start == 0 && !choices_.end) return;
        const double start = choices_.start, end = choices_.end.value_or(film_.seconds);
        if (start > film_.seconds - kShortest)
            refuse("start {} is behind its end at {}", timeText(start), timeText(film_.seconds));
        if (end < start + kShortest)
            refuse("end {} is not behind its start at {}", timeText(end), timeText(start));
        if (start == 0 && end >= film_.seconds) return;
        film_.isAltered = true;
        film_.seconds = std::min(end, film_.seconds) - start;
        film_.endsEarly = choices_.end.has_value();
        if (film_.frames > 0)
            film_.frames =
                static_cast<int>(std::lround(film_.seconds * film_.video.frameRate.perSecond()));
        if (start == 0) return;
        film_.skipped = start;
        for (AudioTrack& track : film_.audio)
            track.late -= start;
        // Those before its start remain: a decoder begins with one.
        for (double& keyframe : film_.keyframes)
            keyframe -= start;
        skip(film_.marks, start);
        beginAt(film_, film_.video.start + start);
        for (double& excerpt : request_.excerpts)
            excerpt = std::max(0.0, excerpt - start);
        if (!request_.chapters) return;
        skip(*request_.chapters, start);
        for (Chapter& chapter : *request_.chapters)
            chapter.seconds = std::max(0.0, chapter.seconds - start);
    }

  private:
    template <typename... Args>
    [[noreturn]] void refuse(fmt::format_string<Args...> format, Args&&... args) const {
        throw DiscError(fmt::format("{}: {}: {}.", choices_.place, shortName(request_),
                                    fmt::format(format, std::forward<Args>(args)...)),
                        request_.path);
    }

    std::vector<AudioTrack> tracksCalled(const std::string& which) const {
        const auto& tracks = film_.audio;
        std::size_t number = 0;
        std::from_chars(which.data(), which.data() + which.size(), number);
        if (number > 0 && number <= tracks.size()) return {tracks[number - 1]};
        std::vector<AudioTrack> called;
        std::ranges::copy_if(tracks, std::back_inserter(called),
                             [&](const AudioTrack& track) { return track.language == which; });
        if (!called.empty()) return called;
        std::vector<std::string> languages;
        languages.reserve(tracks.size());
        for (const AudioTrack& track : tracks)
            languages.push_back(track.language == "xx" ? "unknown" : track.language);
        refuse("it has no sound track '{}', but {}{}{}", which, tracks.size(),
               tracks.empty() ? "" : ": ", fmt::join(languages, ", "));
    }

    // Leaves out chapters that end before the film begins.
    static void skip(std::vector<Chapter>& chapters, double start) {
        const auto first = std::ranges::find_if(
            chapters, [&](const Chapter& chapter) { return chapter.seconds > start; });
        if (first - chapters.begin() > 1) chapters.erase(chapters.begin(), first - 1);
    }

    FilmRequest& request_;
    const FilmChoices& choices_;
    Film& film_;
};

// A row of colour may stand for two rows, and each field has its own.
int whole(int pixels, int step) {
    return std::max(0, pixels) / step * step;
}

}  // namespace

void applyChoices(FilmRequest& request, Film& film) {
    Chooser chooser(request, film);
    chooser.choosePicture();
    chooser.chooseSound();
    chooser.chooseTime();
}

void cutEdges(Film& film, const Edges& edges) {
    VideoTrack& video = film.video;
    const int rows = video.fields == Fields::progressive ? 2 : 4;
    const Edges cut{whole(edges.left, 2), whole(edges.top, rows), whole(edges.right, 2),
                    whole(edges.bottom, rows)};
    if (cut == Edges{}) return;
    const PixelSize left{video.shown.width - cut.left - cut.right,
                         video.shown.height - cut.top - cut.bottom};
    video.aspect *=
        (1.0 * left.width / video.shown.width) / (1.0 * left.height / video.shown.height);
    video.shown = left;
    video.cut = cut;
    film.isAltered = true;
}

}  // namespace tkv::disc
