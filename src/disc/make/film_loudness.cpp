#include "disc/make/film_loudness.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace tkv::disc {

namespace {

constexpr double kLoudness = -23;  // LUFS, broadcasters' measure
constexpr double kTopPeak = -1;    // decibels below full scale
constexpr double kSilence = -69;   // LUFS; the measure itself begins at -70

// The number behind a word, the last time that it stands there.
std::optional<double> lastNumberAfter(const std::string& text, const char* word) {
    const std::size_t at = text.rfind(word);
    if (at == std::string::npos) return std::nullopt;
    const char* const start = text.c_str() + at + std::string_view(word).size();
    char* end = nullptr;
    const double number = std::strtod(start, &end);
    return end == start ? std::nullopt : std::optional(number);
}

}  // namespace

Arguments loudnessCommand(const Film& film) {
    const int index = film.audio.empty() ? 0 : film.audio.front().index;
    Arguments arguments{"ffmpeg", "-nostdin", "-hide_banner", "-nostats", "-progress", "pipe:1"};
    append(arguments, inputWords(film.source));
    append(arguments, {"-map", fmt::format("0:{}", index), "-af",
                       "ebur128=peak=true:framelog=verbose", "-f", "null", "/dev/null"});
    return arguments;
}

double gainFromAnswer(const std::string& answer) {
    const auto loudness = lastNumberAfter(answer, " I: ");
    const auto peak = lastNumberAfter(answer, "Peak: ");
    if (!loudness || !peak || !(*loudness > kSilence)) return 0;
    // What is nearly silent is not all noise for that.
    return std::clamp(std::min(kLoudness - *loudness, kTopPeak - *peak), -30.0, 20.0);
}

}  // namespace tkv::disc
