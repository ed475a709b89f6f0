#include "disc/make/film_damage.h"

#include <fmt/format.h>

#include "disc/project/names.h"

namespace tkv::disc {

namespace {

// Complaints that are no further apart are of one place, in seconds: a decoder goes on complaining
// until the next keyframe.
constexpr double kOnePlace = 2;

}  // namespace

bool isOfEncoding(std::string_view line) {
    const auto says = [&](std::string_view words) {
        return line.find(words) != std::string_view::npos;
    };
    return line.starts_with("[dvd @ ") || says("rc buffer underflow") ||
           says("max bitrate possibly too small") || says("    Last message repeated ");
}

void FilmDamage::reach(double seconds) {
    seconds_ = seconds;
}

void FilmDamage::take(std::string_view line) {
    if (line.empty() || isOfEncoding(line) || (lacksBeginning_ && seconds_ < kOnePlace)) return;
    if (places_ == 0) first_ = seconds_;
    if (places_ == 0 || seconds_ > last_ + kOnePlace) ++places_;
    last_ = seconds_;
}

std::string FilmDamage::sentence(const std::string& path) const {
    if (places_ == 0) return {};
    const std::string at = fmt::format("about {}", timeText(static_cast<int>(first_)));
    if (places_ == 1) return fmt::format("A place of {} could not be decoded, at {}.", path, at);
    return fmt::format("{} places of {} could not be decoded, the first at {}.", places_, path, at);
}

}  // namespace tkv::disc
