#include "disc/make/film_hardness.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "disc/make/ffmpeg_arguments.h"
#include "disc/make/film_encoding.h"
#include "disc/make/film_filters.h"
#include "disc/make/slide_feed.h"
#include "disc/run/fault.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Samples of a film, each a group of pictures, which has as many of each kind as the encoder's
// have.
constexpr int kSamples = 12;
constexpr int kBFramesBetween = 2;  // B-frames between two that others refer to

int framesOfSample(const Conversion& conversion) {
    return (conversion.keyframeInterval() - 1) / (kBFramesBetween + 1) * (kBFramesBetween + 1) + 1;
}

// The file of a quantiser. `output`: a name that all have in common.
std::string outputOf(const std::string& output, int quantiser) {
    return fmt::format("{}-{}.m2v", output, quantiser);
}

// Encodes the group of pictures that begins with the keyframe before `seconds`, into a file for
// each quantiser.
Arguments lookCommand(const Film& film, const Conversion& conversion, double seconds,
                      const std::string& output) {
    const FrameRate rate = conversion.frameRate();
    const int frames = framesOfSample(conversion);
    Arguments arguments = ffmpegStart();
    // Raw streams have no times to look for.
    const FilmPlace place = placeIn(film, seconds, seconds);
    if (conversion.isDrawn) {
        append(arguments, drawnInput(conversion));
    } else {
        if (place.seconds > 0)
            append(arguments, {"-noaccurate_seek", "-ss", fmt::format("{:.3f}", place.seconds)});
        append(arguments, {"-i", place.input});
    }
    std::string outputs;
    for (const int quantiser : kLookQuantisers)
        outputs += fmt::format("[with{}]", quantiser);
    append(arguments, {"-filter_complex", fmt::format("[{}]{},trim=end_frame={},split={}{}",
                                                      videoIn(film, place), discFrames(conversion),
                                                      frames, kLookQuantisers.size(), outputs)});
    for (const int quantiser : kLookQuantisers) {
        append(arguments, {"-map", fmt::format("[with{}]", quantiser), "-c:v", "mpeg2video"});
        append(arguments, {"-trellis", "1", "-bf", fmt::format("{}", kBFramesBetween)});
        append(arguments, {"-g", fmt::format("{}", frames), "-sc_threshold", "1000000000"});
        append(arguments, {"-r", fmt::format("{}/{}", rate.numerator, rate.denominator)});
        append(arguments, {"-flags", conversion.hasFields() ? "+cgop+ilme+ildct" : "+cgop"});
        append(arguments, {"-q:v", fmt::format("{}", quantiser), "-f", "mpeg2video",
                           "file:" + outputOf(output, quantiser)});
    }
    return arguments;
}

// What the samples take together.
struct Look {
    int frames = 0;
    std::array<std::uintmax_t, kLookQuantisers.size()> bytes{};
};

void addSample(Look& look, const DiscFilm& film, double seconds, const std::string& output,
               const Workshop& workshop) {
    const int frames = encodeFilm(
        film, framesOf(film, seconds, framesOfSample(film.conversion)), workshop.tools(),
        lookCommand(film.film, film.conversion, seconds, output),
        {film.request.path, fmt::format("{} could not be looked at", film.request.path), ""});
    // Where nothing is left of the film, nothing is written.
    if (frames == 0) return;
    look.frames += frames;
    for (std::size_t i = 0; i < kLookQuantisers.size(); ++i)
        look.bytes[i] += fs::file_size(workshop.path(outputOf(output, kLookQuantisers[i])));
}

// Evenly apart; of slides each at another moment of one, since most of their time nothing changes.
double secondsOf(int sample, int samples, const Film& film) {
    const double seconds = film.seconds * (sample + 0.5) / samples;
    if (!film.source.slides) return seconds;
    const double step = film.source.slides->step;
    return (std::floor(seconds / step) + (sample + 0.5) / samples) * step;
}

Look sampled(const DiscFilm& film, const std::string& output, const Workshop& workshop) {
    const Conversion& conversion = film.conversion;
    const int samples = std::clamp(conversion.frames / framesOfSample(conversion), 1, kSamples);
    Look look;
    for (int i = 0; i < samples; ++i) {
        try {
            addSample(look, film, secondsOf(i, samples, film.film), output, workshop);
        } catch (const DiscError&) {
            // A place that is damaged; or a file that is read from its beginning only.
            continue;
        }
    }
    return look;
}

}  // namespace

Hardness hardnessOf(const DiscFilm& film, Workshop& workshop) {
    const Conversion& conversion = film.conversion;
    Arguments inputs = lookCommand(film.film, conversion, 0, "");
    inputs.push_back(film.film.source.stamp);
    const std::string name = Workshop::nameOf("hardness", ".json", inputs);
    if (workshop.has(name))
        return nlohmann::json::parse(readText(workshop.path(name))).get<Hardness>();
    const std::string made = Workshop::unfinished(name);
    const Look look = sampled(film, made, workshop);
    Hardness hardness{};
    if (look.frames == 0) return hardness;
    const double seconds = look.frames / conversion.frameRate().perSecond();
    for (std::size_t i = 0; i < hardness.size(); ++i)
        hardness[i] = std::max(1.0, static_cast<double>(look.bytes[i]) * 8 / 1000 / seconds);
    writeText(workshop.path(made), nlohmann::json(hardness).dump());
    workshop.finish(name);
    return hardness;
}

}  // namespace tkv::disc
