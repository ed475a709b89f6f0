#include "disc/make/bars.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <string_view>

#include "disc/make/ffmpeg_arguments.h"
#include "disc/make/film_encoding.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace {

constexpr int kMoments = 10;

// Frames of each; the filter passes over the first two.
constexpr int kFrames = 5;

// What lies within, in pixels from the top left; nothing at first.
struct Inside {
    int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
};

Arguments lookCommand(const Film& film, double seconds, const std::string& output) {
    Arguments arguments = ffmpegStart();
    const FilmPlace place = placeIn(film, seconds, seconds);
    append(arguments, {"-ss", fmt::format("{:.3f}", place.seconds)});
    append(arguments, {"-i", place.input, "-map", videoIn(film, place)});
    append(arguments, {"-vf", "cropdetect=round=2,metadata=mode=print:file=" + output});
    append(arguments, {"-frames:v", fmt::format("{}", kFrames), "-f", "null", "-"});
    return arguments;
}

// The number behind the last of a filter's words.
std::optional<int> lastNumber(std::string_view text, std::string_view name) {
    const std::string word = fmt::format("lavfi.cropdetect.{}=", name);
    const std::size_t at = text.rfind(word);
    if (at == std::string_view::npos) return {};
    const std::string_view rest = text.substr(at + word.size());
    int number = 0;
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

void widen(Inside& inside, std::string_view text) {
    const auto left = lastNumber(text, "x1"), right = lastNumber(text, "x2");
    const auto top = lastNumber(text, "y1"), bottom = lastNumber(text, "y2");
    if (!left || !right || !top || !bottom || *left >= *right || *top >= *bottom) return;
    inside.left = std::min(inside.left, *left);
    inside.top = std::min(inside.top, *top);
    inside.right = std::max(inside.right, *right);
    inside.bottom = std::max(inside.bottom, *bottom);
}

Inside look(const Film& film, const std::string& made, const Workshop& workshop) {
    Inside inside;
    const std::string output = made + "-frames.txt";
    for (int i = 0; i < kMoments; ++i) {
        const double seconds = film.seconds * (i + 0.5) / kMoments;
        workshop.tools().encode(
            lookCommand(film, seconds, output),
            {film.source.path, fmt::format("{} could not be looked at", film.source.path), ""});
        widen(inside, readText(workshop.path(output)));
    }
    return inside;
}

}  // namespace

Edges barsOf(const Film& film, Workshop& workshop) {
    const std::string name = workshop.result(
        Workshop::nameOf("bars", ".json", {film.source.stamp, fmt::format("{}", film.seconds)}),
        [&](const std::string& made) {
            const Inside inside = look(film, made, workshop);
            const PixelSize whole = film.video.shown;
            nlohmann::json edges{0, 0, 0, 0};
            if (inside.right > inside.left && inside.right < whole.width &&
                inside.bottom < whole.height)
                edges = {inside.left, inside.top, whole.width - 1 - inside.right,
                         whole.height - 1 - inside.bottom};
            writeText(workshop.path(made), edges.dump());
        });
    const auto edges = nlohmann::json::parse(readText(workshop.path(name)));
    return {edges.at(0), edges.at(1), edges.at(2), edges.at(3)};
}

}  // namespace tkv::disc
