#include "disc/film/film.h"

#include <algorithm>

namespace tkv::disc {

FilmPlace placeIn(const Film& film, double entry, double moment) {
    FilmPlace place =
        placeIn(film.source, std::max(0.0, entry + film.skipped), moment + film.skipped);
    const double first = film.video.start - film.skipped + place.shift;
    if (place.seconds > 0) place.seconds += first;
    place.begin -= film.skipped + first;
    return place;
}

void beginAt(Film& film, double start) {
    for (Chapter& mark : film.marks)
        mark.seconds = std::max(0.0, mark.seconds - (start - film.video.start));
    film.video.start = start;
}

}  // namespace tkv::disc
