#include "disc/subtitle/choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <utility>

#include "disc/film/folder.h"
#include "disc/film/subtitle_words.h"
#include "disc/run/fault.h"
#include "disc/subtitle/vobsub_index.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

// What can be drawn: texts, captions, and the pictures of Blu-ray discs, DVDs and television.
constexpr std::array<std::string_view, 12> kCodecs{
    "subrip", "srt",     "ass",     "ssa",          "webvtt",       "mov_text",
    "text",   "eia_608", kCaptions, "dvd_subtitle", "dvb_subtitle", "hdmv_pgs_subtitle"};

// A DVD's own, whose colours are known.
bool areCopied(const FilmSubtitle& subtitle, const Film& film) {
    return film.palette && subtitle.path.empty() && subtitle.codec == "dvd_subtitle";
}

// Whether a subtitle file belongs to another film, whose longer name it begins with.
bool isOfAnother(const std::string& subtitle, const std::string& stem,
                 const std::vector<std::string>& names) {
    return std::ranges::any_of(names, [&](const std::string& name) {
        const std::string other = withoutExtension(name);
        return other.size() > stem.size() && subtitle.starts_with(other + ".") &&
               kindOf(name) == FileKind::film;
    });
}

std::string textOf(const std::string& index) {
    constexpr std::int64_t kMostBytes = 16 << 20;
    const auto bytes = readFile(index, kMostBytes);
    return bytes ? std::string(bytes->begin(), bytes->end()) : "";
}

bool isFolder(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

// The tracks of a file: an index tells of several.
std::vector<FilmSubtitle> tracksOf(const FilmSubtitle& file, std::vector<std::string>& notes) {
    if (file.codec != "dvd_subtitle") return {file};
    const std::string name = lastComponent(file.path);
    if (unitsOfIndex(file.path).empty()) {
        notes.push_back(fmt::format("{} has no {}.sub beside it, and is left out", name,
                                    withoutExtension(name)));
        return {};
    }
    const std::vector<std::string> languages = tracksInIndex(textOf(file.path));
    if (languages.empty()) notes.push_back(name + " holds no subtitles, and is left out");
    std::vector<FilmSubtitle> tracks;
    for (const std::string& language : languages) {
        FilmSubtitle& track = tracks.emplace_back(file);
        track.index = static_cast<int>(tracks.size()) - 1;
        if (languages.size() > 1 || file.language == "xx") track.language = language;
        track.isDefault = file.isDefault && tracks.size() == 1;
    }
    return tracks;
}

FilmSubtitle requested(const SubtitleRequest& request, const std::string& film) {
    if (isFolder(request.path)) {
        throw DiscError(
            fmt::format("{} is a folder. Name the files of subtitles in it.", request.path), film);
    }
    const std::string name = lastComponent(request.path);
    const std::string stem = withoutExtension(lastComponent(film));
    auto found = subtitleNamed(name, stem);
    if (!found) found = subtitleNamed(name);
    if (!found) {
        throw DiscError(fmt::format("{} is no file of subtitles that is known here (.srt, .ass, "
                                    ".ssa, .vtt, .sup or .idx).",
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
    const auto add = [&](const FilmSubtitle& file, const std::optional<std::string>& language) {
        const auto tracks = tracksOf(file, film.notes);
        for (const FilmSubtitle& track : tracks) {
            if (tracks.size() == 1 || !language || track.language == *language)
                all.push_back(track);
        }
    };
    if (!request.subtitles) {
        for (const FilmSubtitle& each : subtitlesBeside(request.path))
            add(each, {});
        for (const std::string& part : request.parts) {
            if (part != request.path && !subtitlesBeside(part).empty())
                film.notes.push_back("the subtitles beside " + lastComponent(part) +
                                     " are left out");
        }
        std::ranges::move(film.subtitles, std::back_inserter(all));
        return all;
    }
    for (const SubtitleRequest& each : *request.subtitles)
        add(requested(each, request.path), each.language);
    return all;
}

}  // namespace

bool areDrawable(const FilmSubtitle& subtitle) {
    return subtitle.index >= 0 && std::ranges::find(kCodecs, subtitle.codec) != kCodecs.end();
}

std::vector<FilmSubtitle> subtitlesBeside(const std::string& film) {
    const std::string folder = parentFolder(film), stem = withoutExtension(lastComponent(film));
    const auto names = folderNames(folder).value_or(std::vector<std::string>{});
    std::vector<FilmSubtitle> beside;
    for (const std::string& name : names) {
        auto found = subtitleNamed(name, stem);
        if (!found || isOfAnother(name, stem, names)) continue;
        found->path = joinPath(folder, name);
        if (isFolder(found->path)) continue;
        beside.push_back(std::move(*found));
    }
    return beside;
}

std::string nameOf(const FilmSubtitle& subtitle, const Film& film) {
    if (!subtitle.path.empty()) {
        const bool isOne = subtitle.codec != "dvd_subtitle" || subtitle.index == 0;
        return (isOne ? "" : fmt::format("track {} of ", subtitle.index)) +
               lastComponent(subtitle.path);
    }
    return fmt::format("track {} of {}", subtitle.index, lastComponent(film.source.path));
}

void chooseSubtitles(const FilmRequest& request, const Project& project, Film& film) {
    const bool areUnwanted = !request.subtitles && project.subtitles == kNone;
    std::vector<FilmSubtitle> chosen;
    std::size_t beyond = 0;
    if (areUnwanted) film.subtitles.clear();
    for (FilmSubtitle& each : areUnwanted ? std::vector<FilmSubtitle>{} : allOf(request, film)) {
        if (!areDrawable(each) && !areCopied(each, film)) {
            film.notes.push_back(
                fmt::format("{} holds subtitles that cannot be read ({}), and is left out",
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
