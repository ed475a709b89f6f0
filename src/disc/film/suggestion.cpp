#include "disc/film/suggestion.h"

#include <string>

#include "disc/film/captions.h"

namespace tkv::disc {

void addSuggestions(Project& project, const std::vector<Film>& films) {
    const std::vector<std::string> captions = captionsOf(project.films, films, project.labels);
    const bool countsMarks = project.chapters.source == ChapterRule::Source::marks;
    for (std::size_t i = 0; i < films.size(); ++i) {
        FilmRequest& request = project.films[i];
        request.caption = captions[i];
        if (!request.chapters && countsMarks && !films[i].marks.empty())
            request.chapters = films[i].marks;
    }
}

}  // namespace tkv::disc
