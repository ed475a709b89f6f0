#include "disc/film/frame_counter.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace tkv::disc {

namespace {

// Frames are stored in another order than they are shown in, but never this far from their place.
constexpr double kBackwardJump = 2;
// ffmpeg takes a longer gap of a transport or program stream for a join, a shorter for a pause.
constexpr double kForwardJump = 10;

// Frames that are stored behind a keyframe and shown before it.
constexpr std::size_t kReordered = 16;

// The first keyframe is looked for among so many packets.
constexpr std::size_t kMostBeginning = 1500;

// Files tell times in milliseconds, and round them.
constexpr double kLeastBreak = 0.005;

// The longest pause within a sound track, and what may be missing at its end, in seconds.
constexpr double kLongestPause = 1;

template <typename Number>
std::optional<Number> numberOf(std::string_view text) {
    Number number{};
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::string_view takeField(std::string_view& line) {
    const std::size_t end = std::min(line.find(','), line.size());
    const std::string_view field = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return field;
}

}  // namespace

FrameCounter::FrameCounter(const Film& film)
    : videoStream_(film.video.index),
      frameSeconds_(1 / film.video.frameRate.perSecond()),
      mayJump_(film.container.starts_with("mpeg")) {}

void FrameCounter::take(std::string_view line) {
    Packet packet;
    packet.kind = takeField(line);
    packet.stream = numberOf<int>(takeField(line)).value_or(-1);
    packet.time = numberOf<double>(takeField(line));
    packet.duration = numberOf<double>(takeField(line));
    packet.flags = takeField(line);

    if (packet.stream < 0) return;
    const auto stream = static_cast<std::size_t>(packet.stream);
    if (streams_.size() <= stream) streams_.resize(stream + 1);
    takeTime(streams_[stream], packet);
    // A packet of data may last as long as the film.
    if (packet.time && packet.kind != "data")
        lastEnd_ = std::max(lastEnd_, *packet.time + packet.duration.value_or(0));
    // Packets before an edit list's start are read, but not shown.
    const bool isShown = packet.flags.find('D') == std::string_view::npos;
    if (packet.stream == videoStream_ && isShown) {
        noteBeginning(packet);
        takeFrame(packet);
    }
}

void FrameCounter::noteBeginning(const Packet& packet) {
    const std::size_t end = keyframe_ ? *keyframe_ + kReordered : kMostBeginning;
    if (!packet.time || beginning_.size() >= end) return;
    if (!keyframe_ && packet.flags.starts_with('K')) keyframe_ = beginning_.size();
    beginning_.push_back(*packet.time);
}

int FrameCounter::packetsToFirstFrame() const {
    if (!keyframe_) return 0;
    const bool isFirst = *keyframe_ == 0 && std::ranges::min(beginning_) == beginning_.front();
    return isFirst ? 0 : static_cast<int>(*keyframe_ + kReordered);
}

double FrameCounter::firstKeyframe() const {
    return keyframe_ ? beginning_[*keyframe_] : 0;
}

void FrameCounter::takeTime(Stream& stream, const Packet& packet) {
    const std::optional<double> time = packet.time;
    stream.isSeen = true;
    if (!time) return;
    if (stream.end && std::abs(*time - *stream.end) > kLeastBreak) stream.isBroken = true;
    stream.end.reset();
    if (packet.duration) stream.end = *time + *packet.duration;
    const double step = *time - stream.time.value_or(*time);
    // A longer step is a pause or, as one back is, a join of recordings.
    if (step > 0 && step <= kLongestPause) stream.seconds += step;
    stream.time = time;
    if (!stream.first) stream.first = time;
}

void FrameCounter::takeFrame(const Packet& packet) {
    if (packet.time) {
        ++timedFrames_;
        untimed_ = 0;
        const double time = *packet.time, end = time + packet.duration.value_or(frameSeconds_);
        if (run_ &&
            (time < run_->end - kBackwardJump || (mayJump_ && time > run_->end + kForwardJump)))
            closeRun();
        if (!run_) run_ = Run{time, end, {}};
        run_->start = std::min(run_->start, time);
        run_->end = std::max(run_->end, end);
    } else {
        ++untimed_;
    }
    if (packet.flags.starts_with('K')) {
        interval_ = std::max(interval_, frames_ - lastKeyframe_);
        lastKeyframe_ = frames_;
        keyframeNumbers_.push_back(frames_);
        // Of the small frames that share a packet of a program stream, only the first tells.
        if (run_)
            run_->keyframes.push_back(packet.time.value_or(run_->end + untimed_ * frameSeconds_));
    }
    ++frames_;
}

void FrameCounter::closeRun() {
    for (const double time : run_->keyframes)
        keyframes_.push_back(seconds_ + time - run_->start);
    seconds_ += run_->end - run_->start;
    run_.reset();
}

void FrameCounter::leaveOutBefore(double firstFrame, Film& film) {
    const double half = frameSeconds_ / 2;
    const auto lost =
        std::ranges::count_if(beginning_, [&](double time) { return time < firstFrame - half; });
    const double shift = firstFrame - std::ranges::min(beginning_);
    if (lost == 0 || shift <= 0) return;
    frames_ -= static_cast<int>(lost);
    timedFrames_ -= static_cast<int>(lost);
    seconds_ -= shift;
    for (double& keyframe : keyframes_)
        keyframe = std::max(0.0, keyframe - shift);
    film.lost = shift;
    beginAt(film, std::max(0.0, firstFrame - film.start));
}

void FrameCounter::finish(Film& film, std::optional<double> firstFrame) {
    if (run_) closeRun();
    if (firstFrame) leaveOutBefore(*firstFrame, film);
    // Raw streams tell no times, and old files few.
    if (2 * timedFrames_ <= frames_) {
        seconds_ = frames_ * frameSeconds_;
        keyframes_.clear();
        for (const int number : keyframeNumbers_)
            keyframes_.push_back(number * frameSeconds_);
    }
    film.frames = frames_;
    // Where they differ by a frame or two, some at the ends have lost their times.
    const double counted = frames_ * frameSeconds_;
    const bool isCounted = std::abs(seconds_ - counted) < 2 * frameSeconds_;
    film.seconds = std::min(isCounted ? counted : seconds_, kLongestFilm);
    film.keyframeInterval = std::max(interval_, frames_ - lastKeyframe_);
    film.keyframes = std::move(keyframes_);
    const auto streamOf = [&](const AudioTrack& track) {
        const auto number = static_cast<std::size_t>(track.index);
        return number < streams_.size() ? streams_[number] : Stream();
    };
    const double firstTime = film.start + film.video.start;
    std::erase_if(film.audio, [&](const AudioTrack& track) { return !streamOf(track).isSeen; });
    for (AudioTrack& track : film.audio) {
        const Stream stream = streamOf(track);
        track.isWhole = stream.seconds > film.seconds - kLongestPause;
        track.isUnbroken = !stream.isBroken;
        track.late = stream.first.value_or(firstTime) - firstTime;
    }
}

}  // namespace tkv::disc
