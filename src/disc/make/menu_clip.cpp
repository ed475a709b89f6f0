#include "disc/make/menu_clip.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

#include "composer/page_geometry.h"
#include "disc/make/film_filters.h"
#include "disc/plan/budget.h"
#include "disc/plan/conversion.h"

namespace tkv::disc {

namespace {

constexpr double kFadeSeconds = 2;

// How ffmpeg names a bitmap's pixels.
constexpr const char* kPixelFormat = std::endian::native == std::endian::little ? "bgr0" : "0rgb";

}  // namespace

Arguments menuClipCommand(const MenuSound& sound, Standard standard, int rate,
                          const std::string& output) {
    const StandardFacts facts = factsOf(standard);
    const std::string frameRate =
        fmt::format("{}/{}", facts.frameRate.numerator, facts.frameRate.denominator);
    const double seconds = facts.menuSeconds();
    Arguments arguments = ffmpegStart();
    append(arguments, {"-f", "rawvideo", "-pixel_format", kPixelFormat});
    append(arguments, {"-video_size", fmt::format("{}x{}", kPageWidth, kPageHeight), "-framerate",
                       frameRate, "-i", "pipe:0"});
    if (sound.input.empty()) {
        append(arguments,
               {"-f", "lavfi", "-i", "anullsrc=sample_rate=48000:channel_layout=stereo"});
    } else {
        append(arguments, {"-ss", fmt::format("{:.3f}", sound.from), "-i", sound.input});
    }
    append(arguments,
           {"-map", "0:v:0", "-map", "1:" + (sound.input.empty() ? "a:0" : sound.stream)});
    append(arguments, {"-vf", fmt::format("scale={}:{}:out_color_matrix=bt601:out_range=tv,"
                                          "format=yuv420p,setparams=color_primaries=unknown:"
                                          "color_trc=unknown:colorspace=unknown",
                                          kRasterWidth, facts.rasterHeight)});
    // Times are counted anew: those of files that round them have small steps, and so do those of
    // sound of another rate.
    append(arguments, {"-af", fmt::format("aresample=48000,asetpts=N/SR/TB,apad,"
                                          "atrim=duration={0:.3f},afade=t=in:d=0.2,"
                                          "afade=t=out:st={1:.3f}:d={2}",
                                          seconds, seconds - kFadeSeconds, kFadeSeconds)});
    // At this rate B-frames gain nothing, and cost a fifth of the time. The other processor draws.
    // Without a word on how much there is in a picture the encoder takes the first for a hard one,
    // and gives it half of what the next keyframes get.
    append(arguments, {"-c:v", "mpeg2video", "-aspect", "16:9", "-rc_init_cplx", "50"});
    append(arguments, {"-b:v", fmt::format("{}k", rate), "-maxrate",
                       fmt::format("{}k", rate * 3 / 2), "-bufsize", "1835008", "-g",
                       std::to_string(facts.keyframeInterval), "-bf", "0", "-threads", "1"});
    append(arguments,
           {"-c:a", "ac3", "-ar", "48000", "-ac", "2", "-b:a", fmt::format("{}k", kStereoRate)});
    append(arguments, {"-frames:v", std::to_string(facts.menuFrames), "-f", "dvd", "-muxrate",
                       "10080000", "-packetsize", "2048", output});
    return arguments;
}

Arguments backgroundCommand(const std::string& scene, double aspect, PixelSize size,
                            const std::string& output) {
    // Beside a picture that is whole no edge of it is to be seen.
    const double part =
        isCutToFill(aspect, kWideAspect) ? 1 : std::min(aspect / kWideAspect, kWideAspect / aspect);
    Arguments arguments = ffmpegStart();
    append(arguments, {"-i", scene, "-vf",
                       fmt::format("crop=iw*{0:.4f}:ih*{0:.4f},scale={1}:{2},gblur=sigma=30,"
                                   "eq=brightness=-0.06:saturation=0.8",
                                   part, size.width, size.height),
                       "-q:v", "2", output});
    return arguments;
}

Arguments dotCommand(Standard standard, const std::string& output) {
    Arguments arguments = ffmpegStart();
    append(arguments,
           {"-f", "lavfi", "-i", "color=black@0.07:s=2x2,format=rgba", "-frames:v", "1", "-vf",
            fmt::format("pad={}:{}:color=black@0", kRasterWidth, factsOf(standard).rasterHeight),
            output});
    return arguments;
}

}  // namespace tkv::disc
