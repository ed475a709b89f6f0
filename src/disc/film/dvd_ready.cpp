#include "disc/film/dvd_ready.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace tkv::disc {

namespace {

// Bits a second that a disc's player can take: of video, of an AC-3 track, and of all together.
constexpr std::int64_t kTopVideo = 9'800'000, kTopAc3 = 448'000, kTopSum = 10'080'000;

struct CodecName {
    std::string_view codec, name;
};
constexpr std::array<CodecName, 8> kNames{{
    {"h264", "H.264"},
    {"hevc", "H.265"},
    {"mpeg4", "MPEG-4"},
    {"mpeg1video", "MPEG-1"},
    {"dvvideo", "DV"},
    {"aac", "AAC"},
    {"mp3", "MP3"},
    {"dts", "DTS"},
}};

std::string_view nameOf(std::string_view codec) {
    const auto* const row = std::ranges::find(kNames, codec, &CodecName::codec);
    return row == kNames.end() ? codec : row->name;
}

bool isAbout(double a, double b) {
    return std::abs(a / b - 1) < 0.01;
}

std::string reasonOf(const VideoTrack& video, const StandardFacts& facts) {
    if (video.codec != "mpeg2video") return fmt::format("its video is {}", nameOf(video.codec));
    if (video.profile != "Main" || video.level != kMainLevel)
        return "its video is not of MPEG-2's main profile and level";
    if (video.pixelFormat != "yuv420p") return fmt::format("its pixels are {}", video.pixelFormat);

    const int width = video.size.width, height = video.size.height;
    const bool isFull =
        (width == 720 || width == 704 || width == 352) && height == facts.rasterHeight;
    if (!isFull && (width != 352 || 2 * height != facts.rasterHeight))
        return fmt::format("its picture is {} x {}", width, height);
    const double rate = facts.frameRate.perSecond();
    // Cinema's 24 that flags of its fields bring to 29.97 are said to be 29.97 too.
    if (std::abs(video.frameRate.perSecond() / rate - 1) > 0.0005)
        return fmt::format("it has {:.4g} frames a second", video.frameRate.perSecond());
    const bool mayBeWide = width > 352;
    if (!isAbout(video.aspect, 4.0 / 3) && !(mayBeWide && isAbout(video.aspect, 16.0 / 9)))
        return "its picture is neither 4:3 nor 16:9";
    if (video.maxBitRate > kTopVideo)
        return fmt::format("its video takes up to {:.1f} Mb/s",
                           static_cast<double>(video.maxBitRate) / 1e6);
    return {};
}

std::string reasonOf(const AudioTrack& track) {
    if (track.codec != "ac3" && track.codec != "mp2" && track.codec != "pcm_dvd")
        return fmt::format("its sound is {}", nameOf(track.codec));
    if (!track.isWhole) return "its sound is not there all the time";
    if (track.sampleRate != 48000)
        return fmt::format("its sound has {} samples a second", track.sampleRate);
    if (track.codec == "ac3" && track.bitRate > kTopAc3)
        return fmt::format("its sound takes {} kb/s", track.bitRate / 1000);
    return {};
}

}  // namespace

std::string whyNotDvdReady(const Film& film, Standard standard) {
    const StandardFacts facts = factsOf(standard);
    if (std::string reason = reasonOf(film.video, facts); !reason.empty()) return reason;
    if (film.keyframeInterval > facts.keyframeInterval)
        return fmt::format("its keyframes are {} frames apart", film.keyframeInterval);
    if (film.audio.size() > kMostTracks)
        return fmt::format("it has {} sound tracks", film.audio.size());
    for (const AudioTrack& track : film.audio) {
        if (std::string reason = reasonOf(track); !reason.empty()) return reason;
    }
    const std::int64_t sum = std::accumulate(
        film.audio.begin(), film.audio.end(), film.video.maxBitRate,
        [](std::int64_t bits, const AudioTrack& track) { return bits + track.bitRate; });
    if (sum > kTopSum)
        return fmt::format("it takes up to {:.1f} Mb/s", static_cast<double>(sum) / 1e6);
    return {};
}

}  // namespace tkv::disc
