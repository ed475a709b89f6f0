#include "disc/project/slide_request.h"

#include <filesystem>
#include <utility>

#include "system/paths.h"

namespace tkv::disc {

FilmRequest filmOfPictures(std::vector<std::string> paths) {
    std::error_code error;
    const std::string& first = paths.front();
    FilmRequest film;
    film.path = std::filesystem::is_directory(first, error) ? first : parentFolder(first);
    film.slides.emplace().paths = std::move(paths);
    return film;
}

}  // namespace tkv::disc
