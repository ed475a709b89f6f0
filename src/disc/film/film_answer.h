#pragma once

#include <string_view>

#include "disc/film/film.h"

namespace tkv::disc {

/// A film from the JSON that ffprobe answers about its source (its format, streams and chapters).
/// Throws DiscError when it has no moving picture.
Film filmFromAnswer(FilmSource source, std::string_view json);

}  // namespace tkv::disc
