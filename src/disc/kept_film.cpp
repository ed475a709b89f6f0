#include "disc/kept_film.h"

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "disc/probe.h"
#include "disc/tools.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

using Json = nlohmann::json;

// What counting finds.
Json countsOf(const Film& film) {
    std::map<std::string, bool> tracks;
    for (const AudioTrack& track : film.audio)
        tracks[std::to_string(track.index)] = track.isWhole;
    return {{"seconds", film.seconds},
            {"frames", film.frames},
            {"keyframeInterval", film.keyframeInterval},
            {"keyframes", film.keyframes},
            {"tracks", tracks}};
}

void setCounts(Film& film, const Json& counts) {
    counts.at("seconds").get_to(film.seconds);
    counts.at("frames").get_to(film.frames);
    counts.at("keyframeInterval").get_to(film.keyframeInterval);
    counts.at("keyframes").get_to(film.keyframes);
    const Json& tracks = counts.at("tracks");
    std::erase_if(film.audio, [&](const AudioTrack& track) {
        return !tracks.contains(std::to_string(track.index));
    });
    for (AudioTrack& track : film.audio)
        tracks.at(std::to_string(track.index)).get_to(track.isWhole);
}

std::string answerName(const std::string& stamp) {
    return Workshop::nameOf("answer", ".json", {stamp});
}

}  // namespace

Film probeFilmOnce(const std::string& path, const std::string& folder) {
    return probeFilm(path, [&](const std::string& stamp) {
        const std::string answer = readText(joinPath(folder, answerName(stamp)));
        return Json::accept(answer) ? answer : std::string();  // Somebody may have changed it.
    });
}

void keepAnswer(const Film& film, Workshop& workshop) {
    workshop.result(answerName(film.stamp),
                    [&](const std::string& path) { writeText(path, film.answer); });
}

void countFramesOnce(Film& film, Workshop& workshop) {
    const std::string name = workshop.result(Workshop::nameOf("counts", ".json", {film.stamp}),
                                             [&](const std::string& path) {
                                                 Film counted = film;
                                                 countFrames(counted);
                                                 writeText(path, countsOf(counted).dump());
                                             });
    try {
        setCounts(film, Json::parse(std::ifstream(name)));
    } catch (const Json::exception&) {
        countFrames(film);  // Somebody has changed the file.
    }
}

}  // namespace tkv::disc
