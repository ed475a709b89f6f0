#include "disc/report.h"

#include <fmt/format.h>

#include <cmath>

#include "disc/film_encoding.h"
#include "disc/names.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

double playingTime(const DiscPlan& plan) {
    double seconds = 0;
    for (const TitleSet& set : plan.sets)
        seconds += set.seconds;
    return seconds;
}

std::string counted(std::size_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string_view standardName(Standard standard) {
    return standard == Standard::pal ? "PAL" : "NTSC";
}

std::string gigabytes(std::int64_t bytes) {
    return fmt::format("{:.2f} GB", static_cast<double>(bytes) / 1e9);
}

}  // namespace

std::string shellWord(const std::string& path) {
    constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+,:@";
    if (path.find_first_not_of(kPlain) == std::string::npos) return path;
    std::string word = "'";
    for (const char byte : path) {
        if (byte == '\'') {
            word += "'\\''";
        } else {
            word += byte;
        }
    }
    return word + "'";
}

namespace {

std::string filmLine(const Film& film, const TitleSet& set, Standard standard) {
    const VideoTrack& video = film.video;
    std::string line = fmt::format(
        "  {}  {}, {} x {}, {:.4g} frames a second: ", timeText(std::round(film.seconds)),
        lastComponent(film.path), video.shown.width, video.shown.height,
        video.frameRate.perSecond());
    if (set.isCopied) return line + "copied as it is";
    line += fmt::format("{} at {} kb/s", set.isWide ? "16:9" : "4:3", set.videoRate);
    const std::string note = motionOf(video, standard).note;
    return note.empty() ? line : fmt::format("{}, {}", line, note);
}

}  // namespace

std::vector<std::string> planLines(const Project& project, const std::vector<Film>& films,
                                   const DiscPlan& plan) {
    std::size_t menus = plan.pages.size();
    for (const TitleSet& set : plan.sets)
        menus += set.pages.size();
    std::vector<std::string> lines{fmt::format(
        "{}, {}, {}, {}, about {} of {}", standardName(plan.standard),
        counted(films.size(), "film"), timeText(std::round(playingTime(plan))),
        counted(menus, "menu page"), gigabytes(plan.bytes), gigabytes(capacityOf(project.size)))};
    for (std::size_t i = 0; i < films.size(); ++i)
        lines.push_back(filmLine(films[i], plan.sets[i], plan.standard));
    return lines;
}

std::vector<std::string> madeLines(const Options& options, const DiscPlan& plan, std::size_t menus,
                                   std::int64_t bytes) {
    const std::string disc = options.output + (options.makesImage ? "/disc.iso" : "/disc");
    std::vector<std::string> lines{
        fmt::format("Made in {}:", options.output),
        fmt::format("  disc/       {}, {}, {}, {}", standardName(plan.standard),
                    counted(plan.sets.size(), "film"), counted(menus, "menu page"),
                    gigabytes(bytes))};
    if (options.makesImage) lines.emplace_back("  disc.iso    the same as a disc image");
    if (menus > 0) lines.emplace_back("  menus/      pictures of the menus");
    lines.emplace_back("  jacket.jpg  for the case");
    if (bytes > capacityOf(options.project.size))
        lines.emplace_back("It is too large for the blank disc that was asked for.");
    lines.push_back(fmt::format("Play it:  vlc {}", shellWord("dvd://" + disc)));
    lines.push_back(fmt::format("Burn it:  growisofs -dvd-compat -Z /dev/sr0{}{}",
                                options.makesImage ? "=" : " -dvd-video ", shellWord(disc)));
    return lines;
}

std::vector<std::string> previewLines(const Options& options, std::size_t menus) {
    return {fmt::format("Drawn in {}/menus: {}", options.output, counted(menus, "menu page"))};
}

std::string jacketLine(const Project& project, const DiscPlan& plan) {
    const double minutes = std::max(1.0, std::round(playingTime(plan) / 60));
    return withNumber(project.labels.minutes, static_cast<int>(minutes));
}

}  // namespace tkv::disc
