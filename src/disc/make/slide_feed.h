#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "disc/make/ffmpeg_arguments.h"
#include "disc/plan/plan.h"
#include "disc/run/tools.h"

// Hands the frames of films that we draw to ffmpeg.

namespace tkv::disc {

/// What of a film a command of ffmpeg's reads; of films that are no pictures it finds that itself.
struct FilmPart {
    int first = 0, count = 0;  ///< frames of one that is drawn
    PixelSize raster;          ///< of these
    bool isStill = false;      ///< are they to have no fields?
};

/// All of it, in the disc's raster.
FilmPart wholeOf(const DiscFilm& film);

/// So many of the disc's frames, from a time in seconds on.
FilmPart framesOf(const DiscFilm& film, double seconds, int frames);

/// A drawn film's frame at a time in seconds, as large as it is of use to anybody.
inline constexpr PixelSize kStillRaster{1920, 1080};
FilmPart stillOf(const DiscFilm& film, double seconds);

/// What ffmpeg is told of the frames that it gets through its pipe: those of a disc, or a still.
Arguments drawnInput(const Conversion& conversion);
Arguments drawnStill();

/// Tools::encode with a command that reads a part of a film. Throws DiscError when a picture cannot
/// be read any more.
int encodeFilm(const DiscFilm& film, const FilmPart& part, const Tools& tools,
               const Arguments& command, const Failure& failure,
               const std::function<void(double seconds)>& onSeconds = {},
               std::function<void(std::string_view line)> onError = {});

}  // namespace tkv::disc
