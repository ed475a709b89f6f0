#pragma once

#include <string>
#include <vector>

#include "disc/film/film.h"
#include "disc/make/ffmpeg_arguments.h"
#include "disc/make/film_filters.h"
#include "disc/plan/conversion.h"

// Commands with which ffmpeg turns a film into one for a disc. Nothing here starts it. Names of
// files that it makes are relative to where it runs.

namespace tkv::disc {

/// Pictures that are written while a film is encoded: those of all ranges, one after another.
struct ExcerptOutput {
    PixelSize size;                  ///< in the page's pixels
    std::vector<FrameRange> ranges;  ///< in order, none touching another
    std::string pattern;             ///< a name with a %06d, which counts from 0
};

/// A film is encoded in one go; or in two, of which the first only writes a log.
enum class Pass { only, first, second };

/// One run of the encoder, and what the conversion does not say of it.
struct EncoderRun {
    int videoRate = 0;  ///< kb/s
    double gain = 0;    ///< decibels, of all tracks
    std::vector<ExcerptOutput> excerpts;
    Pass pass = Pass::only;
    std::string subtitles;  ///< the index of the film's; empty without any
    std::string passLog;    ///< of two passes; ffmpeg adds "-0.log"
};

Arguments encodingCommand(const Film& film, const Conversion& conversion, const EncoderRun& run,
                          const std::string& output);

/// Puts the tracks of a film that is ready for a disc into a DVD program stream, untouched; a
/// silent one beside them when it has no sound. `subtitles`: as EncoderRun's.
Arguments remuxCommand(const Film& film, const Conversion& conversion, const std::string& subtitles,
                       const std::string& output);

/// Puts the tracks of a disc's film together anew. The muxer leaves out navigation packs while
/// it waits for a sound that comes late, from a silent input or after a gap; from the finished film
/// all comes in time. Subtitles are taken anew: ffmpeg finds none in a film whose first come late.
Arguments interleaveCommand(const std::string& dvdFilm, const Conversion& conversion,
                            const std::string& subtitles, const std::string& output);

/// The picture's stream, as ffmpeg is told of it, where a film is entered in that place.
std::string videoIn(const Film& film, const FilmPlace& place);

/// Cuts frames out of a disc's film. `pattern`: as ExcerptOutput's.
Arguments excerptCommand(const std::string& dvdFilm, const Film& film, const Conversion& conversion,
                         const FrameRange& range, PixelSize size, const std::string& pattern);

/// A moment of a film: a keyframe near it, which is found quickly, or its own frame.
struct Moment {
    double seconds = 0;  ///< of the film as it came
    bool isExact = false;
    /// Seconds before it, for its own frame, where decoding begins: a keyframe lies in between.
    double lead = 2;
};

/// Takes one picture at a moment, as a JPEG.
Arguments pictureCommand(const Film& film, const SourceColors& colors, const Moment& moment,
                         const Raster& raster, const std::string& output);

}  // namespace tkv::disc
