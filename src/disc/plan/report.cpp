#include "disc/plan/report.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "disc/plan/chapters.h"
#include "disc/project/names.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

double playingTime(const DiscPlan& plan) {
    double seconds = 0;
    for (const DiscFilm& film : plan.films)
        seconds += film.conversion.seconds;
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

// A path as one word of a shell's command.
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

// Seconds of a film's beginning that nobody misses.
constexpr double kShortLoss = 0.5;

// "en, fr for the hard of hearing, en forced"; empty without any.
std::string subtitleWords(const DiscFilm& film) {
    std::string words;
    for (const DiscSubtitle& subtitle : film.subtitles) {
        const FilmSubtitle& source = subtitle.source;
        words += words.empty() ? ", subtitles: " : ", ";
        words += source.language == "xx" ? "unknown" : source.language;
        constexpr std::array<std::string_view, 4> kKinds{"", " with sounds", " commentary",
                                                         " forced"};
        words += kKinds.at(static_cast<std::size_t>(source.kind));
        if (subtitle.isShown) words += " (shown)";
    }
    return words;
}

// "60 pictures, 6 s each, music: a.flac, b.mp3"
std::string slideWords(const SlideShow& show) {
    std::string words =
        fmt::format("{}, {:.3g} s each", counted(show.slides.size(), "picture"), show.step);
    std::vector<std::string> names;
    for (const std::string& path : show.request.music)
        names.push_back(lastComponent(path));
    if (!names.empty()) words += fmt::format(", music: {}", fmt::join(names, ", "));
    return words;
}

std::string filmLine(const DiscFilm& film) {
    const VideoTrack& video = film.film.video;
    const Conversion& conversion = film.conversion;
    const std::string lost =
        film.film.lost < kShortLoss
            ? ""
            : fmt::format(", without the {:.1f} s before its first keyframe", film.film.lost);
    const auto& slides = film.film.source.slides;
    const std::string what = slides
                                 ? slideWords(*slides)
                                 : fmt::format("{} x {}, {:.4g} frames a second", video.shown.width,
                                               video.shown.height, video.frameRate.perSecond());
    std::string line = fmt::format("  {}  {}, {}: ", timeText(std::round(film.film.seconds)),
                                   shortName(film.request), what);
    if (conversion.isCopied) return line + "copied as it is" + lost + subtitleWords(film);
    line += fmt::format("{} at {} kb/s", conversion.isWide ? "16:9" : "4:3", conversion.videoRate);
    return fmt::format("{}{}{}{}{}", line, conversion.note.empty() ? "" : ", ", conversion.note,
                       lost, subtitleWords(film));
}

// The times that a person has given of a film and that it does not have, a line for each.
std::vector<std::string> beyondLines(const DiscFilm& film) {
    std::vector<std::string> lines;
    const auto add = [&](std::string_view what, double seconds, std::string_view becomes) {
        if (seconds < film.film.seconds) return;
        lines.push_back(fmt::format("        {} {} is behind its end, and {}", what,
                                    timeText(seconds), becomes));
    };
    for (const double excerpt : film.request.excerpts)
        add("excerpt", excerpt, "shows that");
    for (const Chapter& chapter : film.request.chapters.value_or(std::vector<Chapter>{}))
        add("chapter", chapter.seconds, "left out");
    return lines;
}

// What of a film the disc has no place for, a line each.
std::vector<std::string> leftOutLines(const DiscFilm& film) {
    std::vector<std::string> lines;
    std::vector<std::string> languages;
    for (std::size_t i = kMostTracks; i < film.film.audio.size(); ++i)
        languages.push_back(film.film.audio[i].language);
    std::ranges::replace(languages, "xx", "unknown");
    if (!languages.empty())
        lines.push_back(fmt::format("{} left out, since a disc's film has {}: {}",
                                    counted(languages.size(), "sound track"), kMostTracks,
                                    fmt::join(languages, ", ")));
    if (film.chaptersLeftOut > 0)
        lines.push_back(fmt::format("{} left out, since a disc's film has {}, 2 s apart or more",
                                    counted(film.chaptersLeftOut, "chapter"), kMostChapters));
    std::ranges::copy(film.film.source.notes, std::back_inserter(lines));
    std::ranges::copy(film.film.notes, std::back_inserter(lines));
    return lines;
}

}  // namespace

std::string passedOverLine(const std::vector<std::string>& names) {
    constexpr std::size_t kMostNames = 8;
    const std::size_t told = names.size() > kMostNames + 1 ? kMostNames : names.size();
    const auto rest = names.size() - told;
    return fmt::format(
        "Passed over, since not a film: {}{}",
        fmt::join(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(told), ", "),
        rest == 0 ? "" : fmt::format(" and {} more", rest));
}

std::vector<std::string> planLines(const DiscPlan& plan) {
    std::vector<std::string> lines{
        fmt::format("{}, {}, {}, {}, about {} of {}", standardName(plan.standard),
                    counted(plan.films.size(), "film"), timeText(std::round(playingTime(plan))),
                    counted(plan.pages.size(), "menu page"), gigabytes(plan.bytes),
                    gigabytes(capacityOf(plan.size)))};
    for (const DiscFilm& film : plan.films) {
        lines.push_back(filmLine(film));
        std::ranges::move(beyondLines(film), std::back_inserter(lines));
        for (const std::string& line : leftOutLines(film))
            lines.push_back("        " + line);
    }
    return lines;
}

std::string whyNoDisc(const DiscPlan& plan) {
    if (plan.films.empty()) return "There is no film. Name the files of some.";
    if (plan.films.size() > kMostFilms) {
        return fmt::format("{} films are too many: a disc holds {}.", plan.films.size(),
                           kMostFilms);
    }
    if (plan.missing == 0) return {};
    const double minutes = static_cast<double>(plan.missing) /
                           static_cast<double>(filmBytes(60, kLeastVideoRate + kStereoRate));
    const bool isSmall = plan.size == DiscSize::dvd5;
    return fmt::format(
        "The films are about {:.0f} min too long for a {} disc, even at {} kb/s. Leave some "
        "out{}.",
        std::ceil(minutes), isSmall ? "single-layer" : "dual-layer", kLeastVideoRate,
        isSmall ? ", or take a dual-layer one: --size dvd9" : "");
}

std::vector<std::string> madeLines(const Options& options, const DiscPlan& plan,
                                   const MadeDisc& made) {
    const std::string disc = options.output + (options.makesImage ? "/disc.iso" : "/disc");
    std::vector<std::string> lines{
        fmt::format("Made in {}:", options.output),
        fmt::format("  disc/       {}, {}, {}, {}", standardName(plan.standard),
                    counted(plan.films.size(), "film"), counted(plan.pages.size(), "menu page"),
                    gigabytes(made.bytes))};
    if (options.makesImage) lines.emplace_back("  disc.iso    the same as a disc image");
    if (!plan.pages.empty()) lines.emplace_back("  menus/      pictures of the menus");
    lines.emplace_back("  jacket.jpg  for the case");
    if (made.hasCover) lines.emplace_back("  cover.pdf   to print, for the case");
    if (made.bytes > capacityOf(plan.size))
        lines.emplace_back("It is too large for the blank disc that was asked for.");
    lines.push_back(fmt::format("Play it:  vlc {}", shellWord("dvd://" + disc)));
    if (!made.drive.empty()) {
        lines.push_back(fmt::format("disc.iso is written to {} and compared.", made.drive));
        return lines;
    }
    const std::string layers =
        made.firstLayer ? fmt::format(" -use-the-force-luke=break:{}", *made.firstLayer) : "";
    lines.push_back(fmt::format("Burn it:  growisofs -dvd-compat{} -Z /dev/sr0{}{}", layers,
                                options.makesImage ? "=" : " -dvd-video ", shellWord(disc)));
    return lines;
}

std::vector<std::string> previewLines(const Options& options, const DiscPlan& plan) {
    return {fmt::format("Drawn in {}/menus: {}", options.output,
                        counted(plan.pages.size(), "menu page"))};
}

std::vector<std::string> writtenLines(const Options& options) {
    const std::string file = shellWord(options.projectFile);
    return {fmt::format("Written: {}", file),
            fmt::format("Make the disc with: tkvDvdDisc {} -o FOLDER", file)};
}

std::string jacketLine(const DiscPlan& plan, std::string_view label) {
    const double minutes = std::max(1.0, std::round(playingTime(plan) / 60));
    return withNumber(label, static_cast<int>(minutes));
}

}  // namespace tkv::disc
