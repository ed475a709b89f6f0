#pragma once

#include <string>
#include <vector>

#include "disc/film.h"
#include "disc/film_picture.h"
#include "disc/standard.h"

// The words that make ffmpeg turn a film into one for a disc. Nothing here starts it.

namespace tkv::disc {

/// How many frames the disc's film has. The film's own have been counted.
int discFrameCount(const Film& film, Standard standard);

/// What a film's sound takes on the disc, all tracks together, in kb/s.
int soundRate(const Film& film);

/// A run of frames of the disc's film, counted from 0.
struct FrameRange {
    int first = 0;
    int count = 0;
    bool operator==(const FrameRange&) const = default;
};

/// Pictures that are written while a film is encoded: those of all ranges, one after another.
struct ExcerptOutput {
    PixelSize size;                  ///< what a picture of 16:9 is squeezed into
    std::vector<FrameRange> ranges;  ///< in order, none touching another
    std::string pattern;             ///< relative path with a %06d, which counts from 0
};

struct FilmEncoding {
    Standard standard = Standard::pal;
    int videoRate = 0;                ///< kb/s
    int topVideoRate = 0;             ///< kb/s, of the hardest second
    std::vector<double> keyframesAt;  ///< seconds of the disc's film, brought to its nearest frames
    double gain = 0;                  ///< decibels, of all tracks
    std::vector<ExcerptOutput> excerpts;
};

/// Encodes a film, whose frames have been counted, in one go; or in two, of which the first only
/// writes `passLog`, to which ffmpeg adds "-0.log".
enum class Pass { only, first, second };
std::vector<std::string> encodingCommand(const Film& film, const FilmEncoding& encoding, Pass pass,
                                         const std::string& passLog, const std::string& output);

/// Puts the tracks of a film that is ready for a disc into a DVD program stream, untouched; a
/// silent one beside them when it has no sound.
std::vector<std::string> remuxCommand(const Film& film, const std::string& output);

/// Puts the tracks of a disc's film together anew. The muxer leaves out units of navigation while
/// it waits for a sound that comes late, from a silent input or after a gap; from the finished film
/// all comes in time.
std::vector<std::string> interleaveCommand(const std::string& dvdFilm, const std::string& output);

/// Cuts frames out of a film that is ready for a disc, from `seconds` on.
/// `dvdFilm`: its file, or its VOBs in their order. `pattern`: as ExcerptOutput's.
std::vector<std::string> excerptCommand(const std::vector<std::string>& dvdFilm, bool isWide,
                                        Standard standard, double seconds, int frames,
                                        PixelSize size, const std::string& pattern);

/// Takes one picture at a keyframe near `seconds`, quickly: the picture of 16:9, with bars
/// where the film has another shape, squeezed into `size`, as a JPEG.
std::vector<std::string> pictureCommand(const Film& film, double seconds, PixelSize size,
                                        const std::string& output);

/// Measures the loudness of the first track; ffmpeg tells it in its last lines, of which
/// gainFromAnswer makes the decibels that bring it to -23 LUFS with peaks below -1 dB.
std::vector<std::string> loudnessCommand(const Film& film);
double gainFromAnswer(const std::string& answer);

}  // namespace tkv::disc
