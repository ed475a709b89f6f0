#include "disc/counted_film.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "disc/probe.h"

namespace tkv::disc {

namespace {

using Json = nlohmann::json;

// What counting finds.
Json countsOf(const Film& film) {
    std::vector<int> tracks;
    for (const AudioTrack& track : film.audio)
        tracks.push_back(track.index);
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
    const auto tracks = counts.at("tracks").get<std::vector<int>>();
    std::erase_if(film.audio, [&](const AudioTrack& track) {
        return std::ranges::find(tracks, track.index) == tracks.end();
    });
}

}  // namespace

void countFramesOnce(Film& film, Workshop& workshop) {
    const std::string name = workshop.result(Workshop::nameOf("counts", ".json", {film.stamp}),
                                             [&](const std::string& path) {
                                                 Film counted = film;
                                                 countFrames(counted);
                                                 std::ofstream(path) << countsOf(counted);
                                             });
    try {
        setCounts(film, Json::parse(std::ifstream(name)));
    } catch (const Json::exception&) {
        countFrames(film);  // Somebody has changed the file.
    }
}

}  // namespace tkv::disc
