#include "disc/film/suggestion.h"

#include "disc/project/names.h"

namespace tkv::disc {

FilmRequest suggestedRequest(FilmRequest request, const Film& film, const ChapterRule& rule) {
    request.caption = captionOf(request, film.title);
    const bool countsMarks = rule.source == ChapterRule::Source::marks && !film.marks.empty();
    if (!request.chapters && countsMarks) request.chapters = film.marks;
    return request;
}

}  // namespace tkv::disc
