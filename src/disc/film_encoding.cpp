#include "disc/film_encoding.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "disc/budget.h"
#include "disc/film_filters.h"
#include "disc/probe.h"

namespace tkv::disc {

namespace {

using Words = std::vector<std::string>;

constexpr int kSurroundRate = 448;  // kb/s
constexpr int kSampleRate = 48000;
constexpr int kSamplesOfAc3Frame = 1536;

void add(Words& words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
}

// Overwrites what is there, asks nothing, and tells how far it is on the standard output.
Words startedOn(const Film& film) {
    return {"ffmpeg", "-nostdin", "-v", "error", "-progress",
            "pipe:1", "-nostats", "-y", "-i",    inputName(film.sources)};
}

int rateOf(const AudioTrack& track) {
    return track.channels > 2 ? kSurroundRate : kStereoRate;
}

std::size_t trackCount(const Film& film) {
    return std::min(film.audio.size(), kMostTracks);
}

Words dvdOutput(const std::string& path) {
    Words words = {"-map_metadata", "-1", "-map_chapters", "-1", "-f", "dvd"};
    // A track may begin minutes after the picture.
    add(words, {"-max_muxing_queue_size", "16384"});
    add(words, {"-muxrate", "10080000", "-packetsize", "2048", "file:" + path});
    return words;
}

Words silentInput() {
    return {"-f", "lavfi", "-i", "anullsrc=channel_layout=stereo:sample_rate=48000"};
}

// The graph that makes the disc's frames, "film", and the excerpts' pictures of them, "excerpt0"
// and so on.
std::string graphOf(const Film& film, const FilmEncoding& encoding, Pass pass) {
    const std::string frames =
        fmt::format("[0:{}]{}", film.video.index, discFrames(film, encoding.standard));
    if (encoding.excerpts.empty() || pass == Pass::first) return frames + "[film]";

    std::string outputs = "[film]", excerpts;
    const bool isFields = motionOf(film.video, encoding.standard).isFields;
    for (std::size_t i = 0; i < encoding.excerpts.size(); ++i) {
        outputs += fmt::format("[frames{}]", i);
        excerpts += fmt::format(";[frames{0}]{1}[excerpt{0}]", i,
                                excerptOf(encoding.excerpts[i], isWide(film.video), isFields));
    }
    return fmt::format("{},split={}{}{}", frames, encoding.excerpts.size() + 1, outputs, excerpts);
}

// Pictures between two that later ones refer to.
constexpr int kBetween = 2;

// How many of the groups before a chapter are made equally long.
constexpr int kEvenGroups = 5;

// The frames that begin a group of pictures on the way from one chapter to the next. The author of
// the disc begins no unit of navigation less than 0.4 s after another, and what begins none can
// begin no chapter; so the last groups are as long as each other, none much shorter than `longest`.
std::vector<int> groupsBetween(int chapter, int next, int longest) {
    const int groups = (next - chapter + longest - 1) / longest;
    const int even = std::min(groups, kEvenGroups);
    const int first = chapter + (groups - even) * longest;
    std::vector<int> frames;
    for (int i = 1; i <= even; ++i)
        frames.push_back(first + (next - first) * i / even);
    return frames;
}

// The times of the keyframes that the encoder would not choose by itself, each that of a frame.
std::string keyframeTimes(const FilmEncoding& encoding) {
    const StandardFacts facts = factsOf(encoding.standard);
    const double rate = facts.frameRate.perSecond();
    // A closed group ends with a picture that others refer to.
    const int longest = (facts.keyframeInterval - 1) / (kBetween + 1) * (kBetween + 1) + 1;
    std::vector<std::string> times;
    int chapter = 0;
    for (const double seconds : encoding.keyframesAt) {
        const int next = static_cast<int>(std::lround(seconds * rate));
        for (const int frame : groupsBetween(chapter, next, longest))
            times.push_back(fmt::format("{:.6f}", frame / rate));
        chapter = next;
    }
    return fmt::format("{}", fmt::join(times, ","));
}

Words videoWords(const FilmEncoding& encoding, bool isFields) {
    const StandardFacts facts = factsOf(encoding.standard);
    // Of what the encoder offers, trellis quantisation gains most for its time.
    Words words = {
        "-map",     "[film]",
        "-c:v",     "mpeg2video",
        "-trellis", "1",
        "-bf",      std::to_string(kBetween),
        "-g",       fmt::format("{}", facts.keyframeInterval),
        "-r",       fmt::format("{}/{}", facts.frameRate.numerator, facts.frameRate.denominator),
        "-b:v",     fmt::format("{}k", encoding.videoRate),
        "-maxrate", fmt::format("{}k", encoding.topVideoRate),
        "-bufsize", "1835008"};  // what every player has
    // A closed group needs nothing of the one before, where a jump has not been. Keyframes stand
    // where they are planned, not where the scene changes.
    add(words, {"-flags", isFields ? "+cgop+ilme+ildct" : "+cgop", "-sc_threshold", "1000000000"});
    const std::string times = keyframeTimes(encoding);
    if (!times.empty()) add(words, {"-force_key_frames", times});
    return words;
}

// Whole AC-3 frames, no more than there is picture.
std::int64_t samplesOf(double seconds) {
    const auto frames = static_cast<std::int64_t>(seconds * kSampleRate / kSamplesOfAc3Frame);
    return std::max<std::int64_t>(frames, 1) * kSamplesOfAc3Frame;
}

std::int64_t samplesOf(const Film& film, Standard standard) {
    return samplesOf(discFrameCount(film, standard) / factsOf(standard).frameRate.perSecond());
}

// A track that begins and ends with the picture: late ones are filled from the start, short ones
// to the end.
std::string soundFilters(const Film& film, const AudioTrack& track, const FilmEncoding& encoding) {
    const double speed = motionOf(film.video, encoding.standard).speed;
    std::string filters;
    if (film.video.start > 0) filters = fmt::format("asetpts=PTS-{:.6f}/TB,", film.video.start);
    filters += fmt::format("aresample={}:async=1:first_pts=0", kSampleRate);
    if (speed != 1) filters += fmt::format(",atempo={:.9f}", speed);
    if (encoding.gain != 0) filters += fmt::format(",volume={:.2f}dB", encoding.gain);
    return fmt::format("{},aformat=sample_fmts=fltp:channel_layouts={},apad,atrim=end_sample={}",
                       filters, track.channels > 2 ? "5.1" : "stereo",
                       samplesOf(film, encoding.standard));
}

Words soundWords(const Film& film, const FilmEncoding& encoding) {
    Words words = {"-c:a", "ac3"};
    for (std::size_t i = 0; i < trackCount(film); ++i) {
        const AudioTrack& track = film.audio[i];
        add(words, {"-map", fmt::format("0:{}", track.index), fmt::format("-filter:a:{}", i),
                    soundFilters(film, track, encoding), fmt::format("-b:a:{}", i),
                    fmt::format("{}k", rateOf(track))});
    }
    if (film.audio.empty()) {
        add(words, {"-map", "1:a", "-af",
                    fmt::format("atrim=end_sample={}", samplesOf(film, encoding.standard)), "-b:a",
                    fmt::format("{}k", kStereoRate)});
    }
    return words;
}

// As many pictures as come, numbered from 0.
Words jpegWords(const std::string& pattern) {
    return {"-c:v", "mjpeg",  "-q:v",          "3", "-fps_mode", "passthrough",
            "-f",   "image2", "-start_number", "0", pattern};
}

}  // namespace

int discFrameCount(const Film& film, Standard standard) {
    const double seconds = film.seconds / motionOf(film.video, standard).speed;
    return std::max(
        1, static_cast<int>(std::lround(seconds * factsOf(standard).frameRate.perSecond())));
}

int soundRate(const Film& film) {
    if (film.audio.empty()) return kStereoRate;
    int sum = 0;
    for (std::size_t i = 0; i < trackCount(film); ++i)
        sum += rateOf(film.audio[i]);
    return sum;
}

std::vector<std::string> encodingCommand(const Film& film, const FilmEncoding& encoding, Pass pass,
                                         const std::string& passLog, const std::string& output) {
    Words words = startedOn(film);
    const bool hasSound = pass != Pass::first;
    if (hasSound && film.audio.empty()) add(words, silentInput());
    add(words, {"-filter_complex", graphOf(film, encoding, pass)});
    // The picture comes first: its number in the log's name is that of the whole command.
    add(words, videoWords(encoding, motionOf(film.video, encoding.standard).isFields));
    if (pass != Pass::only)
        add(words, {"-pass", pass == Pass::first ? "1" : "2", "-passlogfile", passLog});
    if (pass == Pass::first) {
        add(words, {"-f", "null", "/dev/null"});
        return words;
    }
    add(words, soundWords(film, encoding));
    add(words, dvdOutput(output));
    for (std::size_t i = 0; i < encoding.excerpts.size(); ++i) {
        add(words, {"-map", fmt::format("[excerpt{}]", i)});
        add(words, jpegWords(encoding.excerpts[i].pattern));
    }
    return words;
}

std::vector<std::string> remuxCommand(const Film& film, const std::string& output) {
    Words words = startedOn(film);
    if (film.audio.empty()) add(words, silentInput());
    add(words, {"-map", fmt::format("0:{}", film.video.index), "-c", "copy"});
    for (std::size_t i = 0; i < trackCount(film); ++i)
        add(words, {"-map", fmt::format("0:{}", film.audio[i].index)});
    if (film.audio.empty()) {
        add(words, {"-map", "1:a", "-c:a", "ac3", "-b:a", fmt::format("{}k", kStereoRate), "-af",
                    fmt::format("atrim=end_sample={}", samplesOf(film.seconds))});
    }
    add(words, dvdOutput(output));
    return words;
}

std::vector<std::string> interleaveCommand(const std::string& dvdFilm, const std::string& output) {
    Words words{"ffmpeg", "-nostdin", "-v", "error", "-progress", "pipe:1", "-nostats", "-y"};
    add(words, {"-i", "file:" + dvdFilm, "-map", "0:v:0", "-map", "0:a", "-c", "copy"});
    add(words, dvdOutput(output));
    return words;
}

std::vector<std::string> excerptCommand(const std::vector<std::string>& dvdFilm, bool isWide,
                                        Standard standard, double seconds, int frames,
                                        PixelSize size, const std::string& pattern) {
    // ffmpeg finds a place in a program stream by its times, not by its keyframes: it starts well
    // before, and half a frame before the wanted time is where the wanted frame is still to come.
    const double start = std::max(0.0, std::floor(seconds) - 2);
    const double half = 0.5 / factsOf(standard).frameRate.perSecond();
    Words words = {"ffmpeg",
                   "-nostdin",
                   "-v",
                   "error",
                   "-progress",
                   "pipe:1",
                   "-nostats",
                   "-y",
                   "-noaccurate_seek",
                   "-ss",
                   fmt::format("{:.6f}", start),
                   "-i",
                   inputName(dvdFilm),
                   "-map",
                   "0:v:0",
                   "-vf",
                   excerptFrom(std::max(0.0, seconds - start - half), size, isWide),
                   "-frames:v",
                   fmt::format("{}", frames)};
    add(words, jpegWords(pattern));
    return words;
}

std::vector<std::string> pictureCommand(const Film& film, double seconds, PixelSize size,
                                        const std::string& output) {
    // A stream without an index is entered anywhere, and one keyframe at least is to come from
    // there.
    const double tail = film.container.starts_with("mpeg") ? 12 : 1;
    const double start = std::clamp(seconds, 0.0, std::max(0.0, film.seconds - tail));
    Words words = {"ffmpeg", "-nostdin", "-v", "error", "-y", "-noaccurate_seek"};
    add(words, {"-skip_frame", "nokey"});
    // Raw streams have no times to look for.
    if (start > 0) add(words, {"-ss", fmt::format("{:.6f}", film.video.start + start)});
    add(words, {"-i", inputName(film.sources), "-map", fmt::format("0:{}", film.video.index)});
    add(words, {"-vf", stillOf(film.video, size), "-frames:v", "1"});
    // The keyframe's time is before 0 here, where pictures would otherwise be dropped.
    add(words, {"-fps_mode", "passthrough", "-c:v", "mjpeg", "-q:v", "3"});
    add(words, {"-f", "image2pipe", "file:" + output});
    return words;
}

}  // namespace tkv::disc
