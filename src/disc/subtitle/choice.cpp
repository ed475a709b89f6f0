#include "disc/subtitle/choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

#include "disc/film/subtitle_words.h"
#include "disc/run/fault.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// What can be drawn: texts, and the pictures of Blu-ray discs.
constexpr std::array<std::string_view, 8> kCodecs{
    "subrip", "srt", "ass", "ssa", "webvtt", "mov_text", "text", "hdmv_pgs_subtitle"};

constexpr std::array<std::string_view, 16> kFilms{"mkv", "mp4", "m4v",  "mov", "avi", "mpg",
                                                  "vob", "ts",  "m2ts", "mts", "mxf", "webm",
                                                  "wmv", "flv", "ogv",  "mpeg"};

bool isKnown(const FilmSubtitle& subtitle) {
    return std::ranges::find(kCodecs, subtitle.codec) != kCodecs.end();
}

// Whether a subtitle file belongs to another film, whose longer name it begins with.
bool isOfAnother(const std::string& subtitle, const std::string& stem,
                 const std::vector<std::string>& names) {
    return std::ranges::any_of(names, [&](const std::string& name) {
        const std::string other = withoutExtension(name);
        return other.size() > stem.size() && subtitle.starts_with(other + ".") &&
               std::ranges::find(kFilms, asciiLowered(pathExtension(name))) != kFilms.end();
    });
}

FilmSubtitle requested(const SubtitleRequest& request, const std::string& film) {
    const std::string name = lastComponent(request.path);
    const std::string stem = withoutExtension(lastComponent(film));
    auto found = subtitleNamed(name, stem);
    if (!found) found = subtitleNamed(name);
    if (!found) {
        throw DiscError(fmt::format("{} is no file of subtitles that is known here (.srt, .ass, "
                                    ".ssa, .vtt or .sup).",
                                    request.path),
                        film);
    }
    if (!canBeRead(request.path))
        throw DiscError(fmt::format("{} cannot be read; is that its name?", request.path), film);
    found->path = request.path;
    found->language = request.language.value_or(found->language);
    if (request.isForced)
        found->kind = *request.isForced ? SubtitleKind::forced : SubtitleKind::normal;
    return *found;
}

std::vector<FilmSubtitle> allOf(const FilmRequest& request, Film& film) {
    std::vector<FilmSubtitle> all;
    if (!request.subtitles) {
        all = subtitlesBeside(request.path);
        std::ranges::move(film.subtitles, std::back_inserter(all));
        return all;
    }
    all.reserve(request.subtitles->size());
    for (const SubtitleRequest& each : *request.subtitles)
        all.push_back(requested(each, request.path));
    return all;
}

}  // namespace

std::vector<FilmSubtitle> subtitlesBeside(const std::string& film) {
    const std::string folder = parentFolder(film), stem = withoutExtension(lastComponent(film));
    const auto names = folderNames(folder).value_or(std::vector<std::string>{});
    std::vector<FilmSubtitle> beside;
    for (const std::string& name : names) {
        auto found = subtitleNamed(name, stem);
        if (!found || isOfAnother(name, stem, names)) continue;
        found->path = joinPath(folder, name);
        beside.push_back(std::move(*found));
    }
    return beside;
}

std::string nameOf(const FilmSubtitle& subtitle, const Film& film) {
    if (!subtitle.path.empty()) return lastComponent(subtitle.path);
    return fmt::format("track {} of {}", subtitle.index, lastComponent(film.source.path));
}

void chooseSubtitles(const FilmRequest& request, const Project& project, Film& film) {
    const bool areUnwanted = !request.subtitles && project.subtitles == kNone;
    std::vector<FilmSubtitle> chosen;
    std::size_t beyond = 0;
    if (areUnwanted) film.subtitles.clear();
    for (FilmSubtitle& each : areUnwanted ? std::vector<FilmSubtitle>{} : allOf(request, film)) {
        if (!isKnown(each)) {
            film.notes.push_back(fmt::format("{} holds pictures of subtitles ({}), and is left out",
                                             nameOf(each, film), each.codec));
        } else if (chosen.size() < kMostSubtitles) {
            chosen.push_back(std::move(each));
        } else {
            ++beyond;
        }
    }
    if (beyond > 0) {
        film.notes.push_back(fmt::format("{} subtitles are left out, since a disc's film has {}",
                                         beyond, kMostSubtitles));
    }
    film.subtitles = std::move(chosen);
    const std::string wanted = request.shown.value_or(std::string(kNone));
    if (wanted != kNone &&
        std::ranges::find(film.subtitles, wanted, &FilmSubtitle::language) == film.subtitles.end())
        film.notes.push_back(fmt::format(
            "none of its subtitles are in the language \"{}\", which is to be shown", wanted));
}

}  // namespace tkv::disc
