#include "disc/make/film_encoding.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "disc/make/slide_feed.h"
#include "disc/plan/budget.h"

namespace tkv::disc {

namespace {

constexpr int kMuxRate = 10'080'000;  // bit/s
constexpr int kSampleRate = 48000;
constexpr int kSamplesOfAc3Frame = 1536;

// Where a film is entered whose beginning nobody wants, in seconds after its earliest track begins:
// before a keyframe, also where a stream without an index is entered a little late. One whose clock
// begins anew is read from its start.
double entryOf(const Film& film) {
    constexpr double kLead = 10, kBefore = 2;
    const bool hasOneClock = !film.source.title || film.source.title->runs.size() < 2;
    if (film.skipped == 0 || !hasOneClock) return 0;
    const auto next = std::ranges::upper_bound(film.keyframes, 0.0);
    const double keyframe = next == film.keyframes.begin() ? 0 : *(next - 1);
    return std::max(0.0, std::floor(film.video.start + std::min(-kLead, keyframe - kBefore)));
}

// The time of the first wanted frame behind that.
double startOf(const Film& film) {
    return film.video.start - entryOf(film);
}

// The film is input 0; of one that we draw, its sound is input 1.
Arguments startedOn(const Film& film, const Conversion& conversion) {
    Arguments arguments = ffmpegStart();
    // Told often enough to say where a decoder complains.
    append(arguments, {"-stats_period", "0.1"});
    if (entryOf(film) > 0) append(arguments, {"-ss", fmt::format("{:.6f}", entryOf(film))});
    if (film.endsEarly) {
        constexpr double kTail = 5;
        append(arguments, {"-t", fmt::format("{:.6f}", startOf(film) + film.seconds + kTail)});
    }
    if (conversion.isDrawn) append(arguments, drawnInput(conversion));
    if (!conversion.isDrawn || !film.audio.empty()) append(arguments, inputWords(film.source));
    return arguments;
}

// Of the film's own sound.
int soundInput(const Conversion& conversion) {
    return conversion.isDrawn ? 1 : 0;
}

// Of subtitles: behind the film and its sound, which may be silence.
int subtitleInput(const Conversion& conversion) {
    return conversion.isDrawn || conversion.tracks.empty() ? 2 : 1;
}

Arguments dvdOutput(const std::string& path) {
    Arguments arguments = {"-map_metadata", "-1", "-map_chapters", "-1", "-f", "dvd"};
    // A track may begin minutes after the picture.
    append(arguments, {"-max_muxing_queue_size", "16384"});
    append(arguments,
           {"-muxrate", fmt::format("{}", kMuxRate), "-packetsize", "2048", "file:" + path});
    return arguments;
}

Arguments silentInput() {
    return {"-f", "lavfi", "-i", "anullsrc=channel_layout=stereo:sample_rate=48000"};
}

// `subtitles`: an index, or empty.
void appendSubtitleInput(Arguments& arguments, const std::string& subtitles) {
    // Without the format's name ffmpeg would have to guess, and might read something else.
    if (!subtitles.empty()) append(arguments, {"-f", "vobsub", "-i", subtitles});
}

// `input`: the number of that input.
void appendSubtitles(Arguments& arguments, const std::string& subtitles, int input) {
    if (!subtitles.empty()) append(arguments, {"-map", fmt::format("{}:s", input), "-c:s", "copy"});
}

// The graph that makes the disc's frames, "film", and the excerpts' pictures of them, "excerpt0"
// and so on.
std::string graphOf(const Film& film, const Conversion& conversion, const EncoderRun& run) {
    std::string wanted;
    // Half a frame before its time, the first frame is still to come.
    if (film.skipped > 0)
        wanted = fmt::format("trim=start={:.6f},",
                             startOf(film) - 0.5 / film.video.frameRate.perSecond());
    const std::string frames =
        fmt::format("[0:{}]{}{}", film.video.index, wanted, discFrames(conversion));
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

// The frames that begin a GOP on the way from one chapter to the next. dvdauthor begins no VOBU
// less than 0.4 s after another, and only a VOBU can begin a chapter; so the last groups are as
// long as each other, none much shorter than `longest`.
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
    const double rate = conversion.frameRate().perSecond();
    // A closed group ends with a frame that others refer to.
    const int longest = (conversion.keyframeInterval() - 1) / (kBFrames + 1) * (kBFrames + 1) + 1;
    std::vector<std::string> times;
    int frame = 0;
    for (const Chapter& chapter : conversion.chapters) {
        const int next = conversion.frameAt(chapter.seconds);
        for (const int keyframe : groupsBetween(frame, next, longest))
            times.push_back(fmt::format("{:.6f}", keyframe / rate));
        frame = next;
    }
    return fmt::format("{}", fmt::join(times, ","));
}

// Pictures that are pulled down go out of a player's buffer up to half a field later than the
// encoder and the muxer have them go. What arrives meanwhile is to find room, too.
int bufferOf(const Conversion& conversion) {
    if (!conversion.isPulledDown) return kPlayerBuffer;
    constexpr double kHalfField = 1001.0 / 120'000;  // s
    constexpr int kUnit = 16'384;                    // in which the stream tells it
    return static_cast<int>((kPlayerBuffer - kMuxRate * kHalfField) / kUnit) * kUnit;
}

Arguments videoArguments(const Conversion& conversion, int videoRate) {
    const FrameRate rate = conversion.frameRate();
    // Of what the encoder offers, trellis quantisation gains most for its time.
    Arguments arguments = {"-map",     "[film]",
                           "-c:v",     "mpeg2video",
                           "-trellis", "1",
                           "-bf",      std::to_string(kBFrames),
                           "-g",       fmt::format("{}", conversion.keyframeInterval()),
                           "-r",       fmt::format("{}/{}", rate.numerator, rate.denominator),
                           "-b:v",     fmt::format("{}k", videoRate),
                           "-maxrate", fmt::format("{}k", conversion.topVideoRate),
                           "-bufsize", fmt::format("{}", bufferOf(conversion))};
    // A closed group needs nothing of the one before, where a jump has not been. Keyframes stand
    // where they are planned, not where the scene changes.
    append(arguments, {"-flags", conversion.hasFields() ? "+cgop+ilme+ildct" : "+cgop",
                       "-sc_threshold", "1000000000"});
    const std::string times = keyframeTimes(conversion);
    if (!times.empty()) append(arguments, {"-force_key_frames", times});
    return arguments;
}

// Whole AC-3 frames, no more than there is picture.
std::int64_t samplesOf(double seconds) {
    const auto frames = static_cast<std::int64_t>(seconds * kSampleRate / kSamplesOfAc3Frame);
    return std::max<std::int64_t>(frames, 1) * kSamplesOfAc3Frame;
}

std::int64_t samplesOf(const Conversion& conversion) {
    return samplesOf(conversion.frames / conversion.frameRate().perSecond());
}

// What plays a track faster. The first sounds come out of a stretching filter a little late: before
// them goes some silence, which is cut off again.
std::string hastened(double speed, bool keepsPitch) {
    if (speed == 1) return {};
    if (!keepsPitch)
        return fmt::format(",asetrate={:.0f},aresample={}", kSampleRate * speed, kSampleRate);
    constexpr int kSilence = 5000;  // samples
    return fmt::format(
        ",adelay={}S:all=1,rubberband=tempo={:.9f}:channels=together,atrim=start_sample={:.0f}"
        ",asetpts=PTS-STARTPTS",
        kSilence, speed, kSilence / speed);
}

// How times that do not follow from each other are made good: by silence, or by leaving something
// out. Where clips were joined, pieces of one recording go on to the sample, whatever their times
// say to a frame of sound; that of others is stretched by a hundredth, which nobody hears as a gap
// would be. A resampler that were made for that on the way would begin to count anew.
std::string_view compensation(const Film& film) {
    return film.source.clips.empty() ? "async=1"
                                     : "async=500:min_comp=0.03:min_hard_comp=0.1:flags=res";
}

// A track that begins and ends with the picture: late ones are filled from the start, short ones
// to the end.
std::string soundFilters(const Film& film, const Conversion& conversion, const DiscTrack& track,
                         double gain) {
    std::string filters;
    const double start = startOf(film) - film.soundDelay;
    if (start != 0) filters = fmt::format("asetpts=PTS-({:.6f})/TB,", start);
    filters += fmt::format("aresample={}:first_pts=0:{}", kSampleRate, compensation(film));
    filters += hastened(conversion.speed, conversion.keepsPitch);
    if (gain != 0) filters += fmt::format(",volume={:.2f}dB", gain);
    return fmt::format("{},aformat=sample_fmts=fltp:channel_layouts={},apad,atrim=end_sample={}",
                       filters, track.isSurround ? "5.1" : "stereo", samplesOf(conversion));
}

// What leaves of a copied track the frames within the picture's time; the first may begin a little
// before it. Times are parts of a frame's duration: the unit in which these filters count is not
// the one that they tell.
std::string framesWithin(const Film& film, const Conversion& conversion) {
    constexpr double kFrame = 1.0 * kSamplesOfAc3Frame / kSampleRate;
    const double seconds = conversion.frames / conversion.frameRate().perSecond();
    return fmt::format(
        "setts=ts=TS-{:.6f}*DURATION,noise=drop='lte(pts+duration,0)+gt(pts+duration,{:.6f}*"
        "duration)'",
        film.video.start / kFrame, seconds / kFrame);
}

Arguments soundArguments(const Film& film, const Conversion& conversion, double gain) {
    Arguments arguments = {"-c:a", "ac3"};
    for (std::size_t i = 0; i < conversion.tracks.size(); ++i) {
        const DiscTrack& track = conversion.tracks[i];
        append(arguments, {"-map", fmt::format("{}:{}", soundInput(conversion), track.index)});
        if (track.isCopied) {
            append(arguments, {fmt::format("-c:a:{}", i), "copy", fmt::format("-bsf:a:{}", i),
                               framesWithin(film, conversion)});
            continue;
        }
        append(arguments,
               {fmt::format("-filter:a:{}", i), soundFilters(film, conversion, track, gain),
                fmt::format("-b:a:{}", i), fmt::format("{}k", track.rate)});
    }
    if (conversion.tracks.empty()) {
        append(arguments,
               {"-map", "1:a", "-af", fmt::format("atrim=end_sample={}", samplesOf(conversion)),
                "-b:a", fmt::format("{}k", kStereoRate)});
    }
    return arguments;
}

// As many pictures as come, numbered from 0.
Arguments jpegArguments(const std::string& pattern) {
    return {"-c:v", "mjpeg",  "-q:v",          "2", "-fps_mode", "passthrough",
            "-f",   "image2", "-start_number", "0", pattern};
}

// ffmpeg finds a place in a program stream by its times, not by its keyframes, so it enters a film
// well before the wanted moment.
double entryBefore(double seconds, double lead = 2) {
    return std::max(0.0, std::floor(seconds) - std::ceil(lead));
}

// Half a frame before the wanted time, the wanted frame is still to come.
std::string framesFrom(double seconds, const FrameRate& rate) {
    return fmt::format("select='gte(t,{:.6f})',", std::max(0.0, seconds - 0.5 / rate.perSecond()));
}

}  // namespace

Arguments encodingCommand(const Film& film, const Conversion& conversion, const EncoderRun& run,
                          const std::string& output) {
    Arguments arguments = startedOn(film, conversion);
    const bool hasSound = run.pass != Pass::first;
    if (hasSound && conversion.tracks.empty()) append(arguments, silentInput());
    if (hasSound) appendSubtitleInput(arguments, run.subtitles);
    append(arguments, {"-filter_complex", graphOf(film, conversion, run)});
    // The picture comes first: its number in the log's name is that of the whole command.
    append(arguments, videoArguments(conversion, run.videoRate));
    if (run.pass != Pass::only)
        append(arguments,
               {"-pass", run.pass == Pass::first ? "1" : "2", "-passlogfile", run.passLog});
    if (run.pass == Pass::first) {
        // Trellis quantisation takes up to two fifths of its time, and gains nothing in a log.
        append(arguments, {"-trellis", "0", "-f", "null", "/dev/null"});
        return arguments;
    }
    append(arguments, soundArguments(film, conversion, run.gain));
    appendSubtitles(arguments, run.subtitles, subtitleInput(conversion));
    append(arguments, dvdOutput(output));
    for (std::size_t i = 0; i < run.excerpts.size(); ++i) {
        append(arguments, {"-map", fmt::format("[excerpt{}]", i)});
        append(arguments, jpegArguments(run.excerpts[i].pattern));
    }
    return arguments;
}

Arguments remuxCommand(const Film& film, const Conversion& conversion, const std::string& subtitles,
                       const std::string& output) {
    Arguments arguments = startedOn(film, conversion);
    if (conversion.tracks.empty()) append(arguments, silentInput());
    appendSubtitleInput(arguments, subtitles);
    append(arguments, {"-map", fmt::format("0:{}", film.video.index), "-c", "copy"});
    for (const DiscTrack& track : conversion.tracks)
        append(arguments, {"-map", fmt::format("0:{}", track.index)});
    if (conversion.tracks.empty()) {
        append(arguments, {"-map", "1:a", "-c:a", "ac3", "-b:a", fmt::format("{}k", kStereoRate),
                           "-af", fmt::format("atrim=end_sample={}", samplesOf(film.seconds))});
    }
    appendSubtitles(arguments, subtitles, subtitleInput(conversion));
    append(arguments, dvdOutput(output));
    return arguments;
}

Arguments interleaveCommand(const std::string& dvdFilm, const Conversion& conversion,
                            const std::string& subtitles, const std::string& output) {
    Arguments arguments = ffmpegStart();
    append(arguments, {"-i", "file:" + dvdFilm});
    appendSubtitleInput(arguments, subtitles);
    append(arguments, {"-map", "0:v:0", "-map", "0:a", "-c", "copy"});
    appendSubtitles(arguments, subtitles, 1);
    // ffmpeg reads a wrong time where a frame's header lies in two packs. In a track that was
    // encoded, frame follows frame.
    for (std::size_t i = 0; i < std::max<std::size_t>(conversion.tracks.size(), 1); ++i) {
        if (conversion.tracks.empty() || !conversion.tracks[i].isCopied)
            append(arguments, {fmt::format("-bsf:a:{}", i), "setts=ts=STARTPTS+N*DURATION"});
    }
    append(arguments, dvdOutput(output));
    return arguments;
}

std::string videoIn(const Film& film, const FilmPlace& place) {
    return place.isPart ? "0:v:0" : fmt::format("0:{}", film.video.index);
}

Arguments excerptCommand(const std::string& dvdFilm, const Film& film, const Conversion& conversion,
                         const FrameRange& range, PixelSize size, const std::string& pattern) {
    const FrameRate rate = factsOf(conversion.standard).frameRate;
    const int frame = conversion.frameAt(range.first / rate.perSecond());
    const double seconds = conversion.startOf(frame), start = entryBefore(seconds);
    Arguments arguments = ffmpegStart();
    // Times that count from the place of entry may be those of the next frame or field. Those of a
    // copied film need not count from its start.
    if (!conversion.isCopied) append(arguments, {"-copyts", "-start_at_zero"});
    FilmPlace place = placeIn(film.source, start, seconds);
    if (!conversion.isCopied || !place.isPart) place = {inputName(dvdFilm), start};
    const double from = conversion.isCopied ? seconds - place.begin - place.seconds : seconds;
    append(arguments, {"-noaccurate_seek", "-ss", fmt::format("{:.6f}", place.seconds)});
    append(arguments, {"-i", place.input, "-map", "0:v:0"});
    append(arguments, {"-vf", framesFrom(from, rate) + excerptFiltersOf(size, conversion)});
    append(arguments, {"-frames:v", fmt::format("{}", range.count)});
    append(arguments, jpegArguments(pattern));
    return arguments;
}

Arguments pictureCommand(const Film& film, const SourceColors& colors, const Moment& moment,
                         const Raster& raster, const std::string& output) {
    if (film.source.slides) {
        Arguments arguments = ffmpegStart();
        append(arguments, drawnStill());
        append(arguments, {"-vf", stillFilters(film.video, colors, raster), "-frames:v", "1",
                           "-c:v", "mjpeg", "-q:v", "3", output});
        return arguments;
    }
    // A stream without an index is entered anywhere, and one keyframe at least is to come from
    // there.
    const double tail = film.container.starts_with("mpeg") ? 12 : 1;
    const double last = std::max(0.0, film.seconds - (moment.isExact ? 0.1 : tail));
    const double seconds = std::clamp(moment.seconds, 0.0, last);
    const double start = moment.isExact ? std::floor(seconds) - std::ceil(moment.lead) : seconds;
    Arguments arguments = ffmpegStart();
    append(arguments, {"-noaccurate_seek"});
    if (!moment.isExact) append(arguments, {"-skip_frame", "nokey"});
    // Raw streams have no times to look for.
    const FilmPlace place = placeIn(film, start, seconds);
    if (place.seconds > 0) append(arguments, {"-ss", fmt::format("{:.6f}", place.seconds)});
    append(arguments, {"-i", place.input, "-map", videoIn(film, place)});
    std::string filters = stillFilters(film.video, colors, raster);
    if (moment.isExact)
        filters = framesFrom(seconds - place.begin - place.seconds, film.video.frameRate) + filters;
    append(arguments, {"-vf", filters, "-frames:v", "1"});
    // The keyframe's time is before 0 here, where pictures would otherwise be dropped.
    append(arguments, {"-fps_mode", "passthrough", "-c:v", "mjpeg", "-q:v", "3"});
    append(arguments, {"-f", "image2pipe", "file:" + output});
    return arguments;
}

}  // namespace tkv::disc
