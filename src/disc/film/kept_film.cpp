#include "disc/film/kept_film.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "disc/film/probe.h"
#include "disc/film/slide_film.h"
#include "disc/film/title_facts.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace {

using Json = nlohmann::json;

// What counting finds.
Json countsOf(const Film& film) {
    Json tracks = Json::object();
    for (const AudioTrack& track : film.audio)
        tracks[std::to_string(track.index)] = {
            {"isWhole", track.isWhole}, {"isUnbroken", track.isUnbroken}, {"late", track.late}};
    return {{"seconds", film.seconds},
            {"lost", film.lost},
            {"start", film.video.start},
            {"frames", film.frames},
            {"keyframeInterval", film.keyframeInterval},
            {"keyframes", film.keyframes},
            {"tracks", tracks}};
}

// What counting the frames of its clips changes of a film.
void takeCounts(Film& film, Film counted) {
    film.source = std::move(counted.source);
    film.audio = std::move(counted.audio);
    film.marks = std::move(counted.marks);
    film.keyframes = std::move(counted.keyframes);
    film.video.start = counted.video.start;
    film.seconds = counted.seconds;
    film.lost = counted.lost;
    film.frames = counted.frames;
    film.keyframeInterval = counted.keyframeInterval;
}

void setCounts(Film& film, const Json& counts) {
    counts.at("seconds").get_to(film.seconds);
    counts.at("lost").get_to(film.lost);
    counts.at("frames").get_to(film.frames);
    counts.at("keyframeInterval").get_to(film.keyframeInterval);
    counts.at("keyframes").get_to(film.keyframes);
    beginAt(film, counts.at("start").get<double>());
    const Json& tracks = counts.at("tracks");
    std::erase_if(film.audio, [&](const AudioTrack& track) {
        const bool isEmpty = !tracks.contains(std::to_string(track.index));
        if (isEmpty)
            film.notes.push_back(
                fmt::format("track {} (sound) is left out: it is empty", track.index));
        return isEmpty;
    });
    for (AudioTrack& track : film.audio) {
        const Json& counted = tracks.at(std::to_string(track.index));
        counted.at("isWhole").get_to(track.isWhole);
        counted.at("isUnbroken").get_to(track.isUnbroken);
        counted.at("late").get_to(track.late);
    }
}

}  // namespace

namespace {

Film probeOne(const FilmSource& source, Workshop& workshop) {
    const Workshop::Lock lock(workshop, source.stamp);
    const auto probed = [&](const FilmSource& asked) {
        std::vector<std::string> inputs{asked.stamp};
        if (asked.looksFurther) inputs.emplace_back("looks further");
        const std::string name = workshop.result(
            Workshop::nameOf("answer", ".json", inputs), [&](const std::string& made) {
                writeText(workshop.path(made), probeAnswer(asked, workshop.tools()));
            });
        return probedFilm(asked, readText(workshop.path(name)), workshop.tools());
    };
    Film film = probed(source);
    if (!lacksSound(film)) return film;
    FilmSource further = source;
    further.looksFurther = true;
    Film whole = probed(further);
    // Tables may name sound that is nowhere.
    return whole.audio.size() > film.audio.size() ? whole : film;
}

}  // namespace

Film probeFilmOnce(const FilmSource& source, Workshop& workshop) {
    return filmOf(source, [&](const FilmSource& each) { return probeOne(each, workshop); });
}

void countFramesOnce(Film& film, Workshop& workshop) {
    if (!film.source.clips.empty()) {
        takeCounts(film, filmOf(film.source, [&](const FilmSource& each) {
                       Film clip = probeOne(each, workshop);
                       countFramesOnce(clip, workshop);
                       return clip;
                   }));
        return;
    }
    if (film.source.slides) return makeSlideSound(film, workshop);
    const std::string name = workshop.result(
        Workshop::nameOf("counts", ".json", {film.source.stamp}), [&](const std::string& made) {
            Film counted = film;
            countFrames(counted, workshop.tools());
            writeText(workshop.path(made), countsOf(counted).dump());
        });
    setCounts(film, Json::parse(readText(workshop.path(name))));
}

}  // namespace tkv::disc
