#include <cmath>

#include "disc/film/film_answer.h"
#include "disc/film/suggestion.h"
#include "disc/plan/plan.h"
#include "disc/project/project_file.h"
#include "disc/project/project_text.h"
#include "disc/run/fault.h"
#include "fuzzing.h"

// Any bytes as ffprobe's output about a film. A film that comes of it can be planned, as the
// preview does without counting its frames, and written into a project file.

using namespace tkv;
using namespace tkv::disc;
using namespace tkv::fuzz;

namespace {

void check(const Film& film) {
    const VideoTrack& video = film.video;
    require(video.size.width > 0 && video.size.height > 0, "a film has pixels");
    require(video.aspect > 0 && std::isfinite(video.aspect), "a film has a shape");
    const double rate = video.frameRate.perSecond();
    require(rate > 0 && rate < 1000, "a film has a frame rate");
    require(film.seconds >= 0 && std::isfinite(film.seconds), "a film has a length");
    require(video.start >= 0 && std::isfinite(video.start), "a film begins somewhere");
    for (const AudioTrack& track : film.audio) {
        require(track.channels > 0 && track.sampleRate > 0, "sound has channels and a rate");
        require(track.language.size() == 2, "a language has two letters");
    }
    for (const Chapter& mark : film.marks)
        require(mark.seconds >= 0 && std::isfinite(mark.seconds), "a mark is in the film");
}

void use(const Film& film) {
    Project project;
    project.labels = labelsOf("en");
    project.films.emplace_back().path = film.source.path;
    addSuggestions(project, {film});
    const std::string text = projectFileText(project, scratchFolder());
    Project again;
    readProjectFile(scratchFile("project.toml", reinterpret_cast<const std::uint8_t*>(text.data()),
                                text.size()),
                    "/", again);
    planDisc(project, {film});
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view answer(reinterpret_cast<const char*>(data), size);
    Film film;
    FilmSource source;
    source.path = "/films/a.mp4";
    source.files = {source.path};
    try {
        film = filmFromAnswer(source, answer);
    } catch (const DiscError&) {
        return 0;
    }
    check(film);
    use(film);
    return 0;
}
