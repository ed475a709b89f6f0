#include "disc/make/film_encoding.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "disc/plan/budget.h"

namespace tkv::disc {

namespace {

constexpr int kSampleRate = 48000;
constexpr int kSamplesOfAc3Frame = 1536;

Words startedOn(const Film& film) {
    Words words = ffmpegStart();
    append(words, {"-i", inputName(film.source.files)});
    return words;
}

Words dvdOutput(const std::string& path) {
    Words words = {"-map_metadata", "-1", "-map_chapters", "-1", "-f", "dvd"};
    // A track may begin minutes after the picture.
    append(words, {"-max_muxing_queue_size", "16384"});
    append(words, {"-muxrate", "10080000", "-packetsize", "2048", "file:" + path});
    return words;
}

Words silentInput() {
    return {"-f", "lavfi", "-i", "anullsrc=channel_layout=stereo:sample_rate=48000"};
}

// The graph that makes the disc's frames, "film", and the excerpts' pictures of them, "excerpt0"
// and so on.
std::string graphOf(const Film& film, const Conversion& conversion, const EncoderRun& run) {
    const std::string frames = fmt::format("[0:{}]{}", film.video.index, discFrames(conversion));
    if (run.excerpts.empty() || run.pass == Pass::first) return frames + "[film]";

    std::string outputs = "[film]", excerpts;
    for (std::size_t i = 0; i < run.excerpts.size(); ++i) {
        outputs += fmt::format("[frames{}]", i);
        const ExcerptOutput& excerpt = run.excerpts[i];
        excerpts += fmt::format(";[frames{0}]{1}[excerpt{0}]", i,
                                excerptFilters(excerpt.ranges, excerpt.size, conversion));
    }
    return fmt::format("{},split={}{}{}", frames, run.excerpts.size() + 1, outputs, excerpts);
}

// Between two frames that others refer to.
constexpr int kBFrames = 2;

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
std::string keyframeTimes(const Conversion& conversion) {
    const StandardFacts facts = factsOf(conversion.standard);
    const double rate = facts.frameRate.perSecond();
    // A closed group ends with a frame that others refer to.
    const int longest = (facts.keyframeInterval - 1) / (kBFrames + 1) * (kBFrames + 1) + 1;
    std::vector<std::string> times;
    int frame = 0;
    for (const Chapter& chapter : conversion.chapters) {
        const int next = static_cast<int>(std::lround(chapter.seconds * rate));
        for (const int keyframe : groupsBetween(frame, next, longest))
            times.push_back(fmt::format("{:.6f}", keyframe / rate));
        frame = next;
    }
    return fmt::format("{}", fmt::join(times, ","));
}

Words videoWords(const Conversion& conversion, int videoRate) {
    const StandardFacts facts = factsOf(conversion.standard);
    // Of what the encoder offers, trellis quantisation gains most for its time.
    Words words = {
        "-map",     "[film]",
        "-c:v",     "mpeg2video",
        "-trellis", "1",
        "-bf",      std::to_string(kBFrames),
        "-g",       fmt::format("{}", facts.keyframeInterval),
        "-r",       fmt::format("{}/{}", facts.frameRate.numerator, facts.frameRate.denominator),
        "-b:v",     fmt::format("{}k", videoRate),
        "-maxrate", fmt::format("{}k", conversion.topVideoRate),
        "-bufsize", "1835008"};  // what every player has
    // A closed group needs nothing of the one before, where a jump has not been. Keyframes stand
    // where they are planned, not where the scene changes.
    append(words, {"-flags", conversion.hasFields() ? "+cgop+ilme+ildct" : "+cgop", "-sc_threshold",
                   "1000000000"});
    const std::string times = keyframeTimes(conversion);
    if (!times.empty()) append(words, {"-force_key_frames", times});
    return words;
}

// Whole AC-3 frames, no more than there is picture.
std::int64_t samplesOf(double seconds) {
    const auto frames = static_cast<std::int64_t>(seconds * kSampleRate / kSamplesOfAc3Frame);
    return std::max<std::int64_t>(frames, 1) * kSamplesOfAc3Frame;
}

std::int64_t samplesOf(const Conversion& conversion) {
    return samplesOf(conversion.frames / factsOf(conversion.standard).frameRate.perSecond());
}

// A track that begins and ends with the picture: late ones are filled from the start, short ones
// to the end.
std::string soundFilters(const Film& film, const Conversion& conversion, const DiscTrack& track,
                         double gain) {
    std::string filters;
    if (film.video.start > 0) filters = fmt::format("asetpts=PTS-{:.6f}/TB,", film.video.start);
    filters += fmt::format("aresample={}:async=1:first_pts=0", kSampleRate);
    if (conversion.speed != 1) filters += fmt::format(",atempo={:.9f}", conversion.speed);
    if (gain != 0) filters += fmt::format(",volume={:.2f}dB", gain);
    return fmt::format("{},aformat=sample_fmts=fltp:channel_layouts={},apad,atrim=end_sample={}",
                       filters, track.isSurround ? "5.1" : "stereo", samplesOf(conversion));
}

Words soundWords(const Film& film, const Conversion& conversion, double gain) {
    Words words = {"-c:a", "ac3"};
    for (std::size_t i = 0; i < conversion.tracks.size(); ++i) {
        const DiscTrack& track = conversion.tracks[i];
        append(words, {"-map", fmt::format("0:{}", track.index), fmt::format("-filter:a:{}", i),
                       soundFilters(film, conversion, track, gain), fmt::format("-b:a:{}", i),
                       fmt::format("{}k", track.rate)});
    }
    if (conversion.tracks.empty()) {
        append(words,
               {"-map", "1:a", "-af", fmt::format("atrim=end_sample={}", samplesOf(conversion)),
                "-b:a", fmt::format("{}k", kStereoRate)});
    }
    return words;
}

// As many pictures as come, numbered from 0.
Words jpegWords(const std::string& pattern) {
    return {"-c:v", "mjpeg",  "-q:v",          "3", "-fps_mode", "passthrough",
            "-f",   "image2", "-start_number", "0", pattern};
}

}  // namespace

Words encodingCommand(const Film& film, const Conversion& conversion, const EncoderRun& run,
                      const std::string& output) {
    Words words = startedOn(film);
    const bool hasSound = run.pass != Pass::first;
    if (hasSound && conversion.tracks.empty()) append(words, silentInput());
    append(words, {"-filter_complex", graphOf(film, conversion, run)});
    // The picture comes first: its number in the log's name is that of the whole command.
    append(words, videoWords(conversion, run.videoRate));
    if (run.pass != Pass::only)
        append(words, {"-pass", run.pass == Pass::first ? "1" : "2", "-passlogfile", run.passLog});
    if (run.pass == Pass::first) {
        append(words, {"-f", "null", "/dev/null"});
        return words;
    }
    append(words, soundWords(film, conversion, run.gain));
    append(words, dvdOutput(output));
    for (std::size_t i = 0; i < run.excerpts.size(); ++i) {
        append(words, {"-map", fmt::format("[excerpt{}]", i)});
        append(words, jpegWords(run.excerpts[i].pattern));
    }
    return words;
}

Words remuxCommand(const Film& film, const Conversion& conversion, const std::string& output) {
    Words words = startedOn(film);
    if (conversion.tracks.empty()) append(words, silentInput());
    append(words, {"-map", fmt::format("0:{}", film.video.index), "-c", "copy"});
    for (const DiscTrack& track : conversion.tracks)
        append(words, {"-map", fmt::format("0:{}", track.index)});
    if (conversion.tracks.empty()) {
        append(words, {"-map", "1:a", "-c:a", "ac3", "-b:a", fmt::format("{}k", kStereoRate), "-af",
                       fmt::format("atrim=end_sample={}", samplesOf(film.seconds))});
    }
    append(words, dvdOutput(output));
    return words;
}

Words interleaveCommand(const std::string& dvdFilm, const std::string& output) {
    Words words = ffmpegStart();
    append(words, {"-i", "file:" + dvdFilm, "-map", "0:v:0", "-map", "0:a", "-c", "copy"});
    append(words, dvdOutput(output));
    return words;
}

Words excerptCommand(const std::string& dvdFilm, const Conversion& conversion,
                     const FrameRange& range, PixelSize size, const std::string& pattern) {
    const double rate = factsOf(conversion.standard).frameRate.perSecond();
    const double seconds = range.first / rate;
    // ffmpeg finds a place in a program stream by its times, not by its keyframes: it starts well
    // before, and half a frame before the wanted time is where the wanted frame is still to come.
    const double start = std::max(0.0, std::floor(seconds) - 2);
    const double from = std::max(0.0, seconds - start - 0.5 / rate);
    Words words = ffmpegStart();
    append(words, {"-noaccurate_seek", "-ss", fmt::format("{:.6f}", start)});
    append(words, {"-i", "file:" + dvdFilm, "-map", "0:v:0"});
    append(words, {"-vf", excerptFiltersFrom(from, size, conversion.isWide)});
    append(words, {"-frames:v", fmt::format("{}", range.count)});
    append(words, jpegWords(pattern));
    return words;
}

Words pictureCommand(const Film& film, const SourceColors& colors, double seconds, PixelSize size,
                     const std::string& output) {
    // A stream without an index is entered anywhere, and one keyframe at least is to come from
    // there.
    const double tail = film.container.starts_with("mpeg") ? 12 : 1;
    const double start = std::clamp(seconds, 0.0, std::max(0.0, film.seconds - tail));
    Words words = ffmpegStart();
    append(words, {"-noaccurate_seek", "-skip_frame", "nokey"});
    // Raw streams have no times to look for.
    if (start > 0) append(words, {"-ss", fmt::format("{:.6f}", film.video.start + start)});
    append(words,
           {"-i", inputName(film.source.files), "-map", fmt::format("0:{}", film.video.index)});
    append(words, {"-vf", stillFilters(film.video, colors, size), "-frames:v", "1"});
    // The keyframe's time is before 0 here, where pictures would otherwise be dropped.
    append(words, {"-fps_mode", "passthrough", "-c:v", "mjpeg", "-q:v", "3"});
    append(words, {"-f", "image2pipe", "file:" + output});
    return words;
}

}  // namespace tkv::disc
