#include "disc/film/joined_film.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "disc/film/captions.h"
#include "disc/project/names.h"
#include "disc/run/fault.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// Seconds between the end that a stream tells and the beginning of the next one.
constexpr double kLeastGap = 0.5;

std::string soundWords(const Film& film) {
    if (film.audio.empty()) return "silent";
    std::string words;
    for (const AudioTrack& track : film.audio)
        words += fmt::format("{}{} {} Hz, {} channels", words.empty() ? "" : " and ", track.codec,
                             track.sampleRate, track.channels);
    return words;
}

// In what a clip is another film than the first; empty where a decoder can go on with it.
std::string whyOther(const Film& first, const Film& clip) {
    const VideoTrack &a = first.video, &b = clip.video;
    const auto sizes = [](const VideoTrack& video) {
        return fmt::format("{} x {}", video.shown.width, video.shown.height);
    };
    const auto differ = [](const std::string& is, const std::string& not_) {
        return fmt::format("it is {}, not {}", is, not_);
    };
    if (a.shown != b.shown || a.size != b.size) return differ(sizes(b), sizes(a));
    if (a.codec != b.codec) return differ(b.codec, a.codec);
    if (a.pixelFormat != b.pixelFormat) return differ(b.pixelFormat, a.pixelFormat);
    if (std::abs(a.frameRate.perSecond() / b.frameRate.perSecond() - 1) > 0.02)
        return fmt::format("it has {:.4g} frames a second, not {:.4g}", b.frameRate.perSecond(),
                           a.frameRate.perSecond());
    if (a.fields != b.fields || a.transfer != b.transfer || a.matrix != b.matrix)
        return "its pictures are stored in another way";
    const std::string heard = soundWords(first), other = soundWords(clip);
    if (heard != other) return fmt::format("its sound is {}, not {}", other, heard);
    const bool areInOrder =
        a.index == b.index &&
        std::ranges::equal(first.audio, clip.audio, {}, &AudioTrack::index, &AudioTrack::index);
    return areInOrder ? "" : "its tracks stand in another order";
}

void requireAlike(const Film& first, const Film& clip) {
    const std::string why = whyOther(first, clip);
    if (why.empty()) return;
    throw DiscError(fmt::format("{} cannot go on with {}: {}. Give it as a film of its own.",
                                first.source.path, lastComponent(clip.source.path), why),
                    first.source.path);
}

void addClip(Film& film, const Film& clip) {
    for (const double keyframe : clip.keyframes)
        film.keyframes.push_back(film.seconds + keyframe);
    film.source.clips.push_back({clip.source.files.front(), clip.video.start, clip.seconds});
    film.seconds += clip.seconds;
    film.frames += clip.frames;
    film.keyframeInterval = std::max(film.keyframeInterval, clip.keyframeInterval);
    for (std::size_t i = 0; i < film.audio.size(); ++i)
        film.audio[i].isWhole = film.audio[i].isWhole && clip.audio[i].isWhole;
}

}  // namespace

bool canGoOn(const Film& film, const Film& clip) {
    return whyOther(film, clip).empty();
}

bool areOneStream(const std::vector<Film>& clips) {
    for (std::size_t i = 1; i < clips.size(); ++i) {
        const Film &before = clips[i - 1], &clip = clips[i];
        const double gap = clip.start - (before.start + before.seconds);
        if (!clip.container.starts_with("mpeg") || clip.container != before.container ||
            clip.start < before.start || std::abs(gap) > kLeastGap)
            return false;
    }
    return true;
}

Film joinedFilm(FilmSource source, const std::vector<Film>& clips) {
    Film film = clips.front();
    film.source = std::move(source);
    film.source.clips.clear();
    film.seconds = 0;
    film.frames = 0;
    film.keyframes.clear();
    // Whether one begins where the one before ends is not looked for.
    for (AudioTrack& track : film.audio)
        track.isUnbroken = false;
    if (!film.subtitles.empty()) {
        film.notes.emplace_back("the subtitles in its parts are left out");
        film.subtitles.clear();
    }
    for (const Film& clip : clips) {
        requireAlike(clips.front(), clip);
        addClip(film, clip);
    }
    if (std::ranges::any_of(clips, [](const Film& clip) { return clip.frames == 0; }))
        film.frames = 0;
    film.marks = clipMarks(clips);
    return film;
}

std::vector<Chapter> clipMarks(const std::vector<Film>& clips) {
    std::vector<Chapter> marks;
    double seconds = 0;
    for (const Film& clip : clips) {
        const std::string& path = clip.source.path;
        const bool isNumbered = isCameraName(withoutExtension(lastComponent(path)));
        marks.push_back({seconds, isNumbered ? "" : readableName(path)});
        seconds += clip.seconds;
    }
    return marks;
}

}  // namespace tkv::disc
