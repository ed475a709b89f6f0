#include "disc/make/slide_feed.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <future>
#include <span>
#include <utility>
#include <vector>

#include "disc/make/slide_frames.h"
#include "disc/run/fault.h"
#include "system/pipe.h"

namespace tkv::disc {

namespace {

// More than a frame, so that who draws and who encodes seldom wait for each other.
constexpr int kFedBytes = 1 << 20;

// Ends when all is written, or nobody reads it any more.
void feed(const DiscFilm& film, const FilmPart& part, const ProgramStop& stop, Descriptor encoder) {
    const SlideShow& show = *film.film.source.slides;
    const SlideTimes times(show, film.conversion);
    const int end = std::min(film.conversion.frames, part.first + part.count);
    SlideFrames frames(show, times, end, part.raster);
    std::vector<std::uint8_t> frame(frameBytes(part.raster));
    for (int number = part.first; number < end && !stop.isStopped(); ++number) {
        if (part.isStill) {
            frames.drawStill(number, frame);
        } else {
            frames.draw(number, frame);
        }
        if (!writeWhole(encoder, std::as_bytes(std::span(frame)))) return;
    }
}

int frameAt(const DiscFilm& film, double seconds) {
    const Conversion& conversion = film.conversion;
    return std::clamp(conversion.frameAt(seconds), 0, conversion.frames - 1);
}

PixelSize rasterOf(const Conversion& conversion) {
    return {kRasterWidth, factsOf(conversion.standard).rasterHeight};
}

Arguments drawnInput(FrameRate rate, PixelSize raster) {
    return {"-f",
            "rawvideo",
            "-pixel_format",
            "yuv420p",
            "-video_size",
            fmt::format("{}x{}", raster.width, raster.height),
            "-framerate",
            fmt::format("{}/{}", rate.numerator, rate.denominator),
            "-i",
            "pipe:0"};
}

}  // namespace

FilmPart wholeOf(const DiscFilm& film) {
    return {0, film.conversion.frames, rasterOf(film.conversion)};
}

FilmPart framesOf(const DiscFilm& film, double seconds, int frames) {
    return {frameAt(film, seconds), frames, rasterOf(film.conversion)};
}

FilmPart stillOf(const DiscFilm& film, double seconds) {
    return {frameAt(film, seconds), 1, kStillRaster, true};
}

Arguments drawnInput(const Conversion& conversion) {
    return drawnInput(conversion.frameRate(), rasterOf(conversion));
}

Arguments drawnStill() {
    return drawnInput(factsOf(Standard::pal).frameRate, kStillRaster);
}

int encodeFilm(const DiscFilm& film, const FilmPart& part, const Tools& tools,
               const Arguments& command, const Failure& failure,
               const std::function<void(double seconds)>& onSeconds,
               std::function<void(std::string_view line)> onError) {
    if (!film.film.source.slides)
        return tools.encode(command, failure, onSeconds, Descriptor(-1), std::move(onError));
    std::optional<Pipe> pipe = makePipe(kFedBytes);
    if (!pipe) throw DiscError(failure.task + ": too many open files.", failure.about);
    std::future<void> feeding = std::async(
        std::launch::async, [&film, &part, &tools, encoder = std::move(pipe->writeEnd)]() mutable {
            feed(film, part, tools.stop(), std::move(encoder));
        });
    int frames = 0;
    try {
        frames =
            tools.encode(command, failure, onSeconds, std::move(pipe->readEnd), std::move(onError));
    } catch (const Interrupted&) {
        throw;
    } catch (const DiscError&) {
        feeding.get();  // Without pictures nothing can be encoded, and they tell why.
        throw;
    }
    feeding.get();
    return frames;
}

}  // namespace tkv::disc
