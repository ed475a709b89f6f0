#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "disc/film/film.h"
#include "disc/plan/budget.h"
#include "disc/project/standard.h"

// What happens to a film's picture and sound on its way to the disc.

namespace tkv::disc {

/// Width to height of a wide display, and of others.
inline constexpr double kWideAspect = 16.0 / 9;
inline constexpr double kNarrowAspect = 4.0 / 3;

/// A picture's pixels, and the shape in which they are shown: width to height.
struct Raster {
    PixelSize size;
    double aspect = 0;
};

/// A picture of that size on a page, of which 720 x 540 pixels are shown as 16:9.
constexpr Raster onPage(PixelSize size) {
    return {size, kWideAspect * kPageHeight / kPageWidth * size.width / size.height};
}

/// A picture of square pixels.
constexpr Raster ofSquares(PixelSize size) {
    return {size, static_cast<double>(size.width) / size.height};
}

/// The fields that players show before a picture of cinema's 24 a second on an NTSC disc: three for
/// one picture and two for the next. A picture before the first, of which there is none, has two.
constexpr int fieldsBefore(int picture) {
    return (5 * picture + 1) / 2;
}

/// Where the disc's fields, two moments of time in a frame, come from.
enum class FieldSource {
    none,      ///< there are none: it is progressive
    kept,      ///< the film's own fields
    other,     ///< the film's fields, of which others are made for this standard's rate
    pictures,  ///< a field of each frame of a film of 48 or more a second
    merged,    ///< there are none any more: whole pictures are made of the film's
};

/// Where a film's picture lies in a raster; the rest is black. Columns and rows from the top left.
struct Placement {
    int x, y, width, height;
    bool operator==(const Placement&) const = default;
};

/// How a film's pixels are to be read.
struct SourceColors {
    std::string transfer;      ///< of HDR, as ffmpeg's zscale calls it; empty for all else
    std::string matrix;        ///< as zscale calls it for HDR, else scale; empty for RGB
    bool isFullRange = false;  ///< or else limited to video levels
    bool operator==(const SourceColors&) const = default;
};

/// A sound track of the disc's film.
struct DiscTrack {
    int index = 0;            ///< of the film's track, among all streams of its files
    std::string language;     ///< two letters of ISO 639-1; "xx" when unknown
    bool isSurround = false;  ///< 5.1, or else stereo
    int rate = 0;             ///< kb/s
    bool isCopied = false;    ///< AC-3, as it is in the film
};

/// All that happens to a film, decided once. Whoever makes, measures or tells of the disc's film
/// reads it here.
struct Conversion {
    Standard standard = Standard::pal;
    bool isCopied = false;        ///< its pictures and sound stay as they are
    bool isDrawn = false;         ///< we draw its frames, as the disc has them
    bool keepsSubtitles = false;  ///< and its own subtitles, which nothing is drawn beside
    FieldSource fields = FieldSource::none;
    bool isPulledDown = false;  ///< is it cinema's 24 pictures, with flags that make them 29.97?
    bool isTopFirst = false;    ///< of the film's own fields: is the upper one shown first?
    double speed = 1;           ///< the disc's film plays this much faster, its sound too
    bool keepsPitch = true;     ///< then: does the sound keep its pitch, or rise with the speed?
    int frames = 1;             ///< of the disc's film, as they are stored
    double seconds = 0;         ///< of the disc's film
    Edges cut;                  ///< what is left out of the film's picture
    bool isWide = false;        ///< is its frame 16:9, or else 4:3?
    Placement placement{};      ///< in that frame
    SourceColors colors;
    std::vector<DiscTrack> tracks;  ///< none: the disc's film has a silent one
    int soundRate = 0;              ///< kb/s, of all tracks together
    int subtitleRate = 0;           ///< kb/s, of all subtitles together
    bool isSoundWhole = false;      ///< are the tracks there all the time?
    bool evensLoudness = false;     ///< is it made as loud as the other films?
    int videoRate = 0;              ///< kb/s of the picture; 0 when it is copied
    int topVideoRate = 0;           ///< kb/s, of the hardest second
    bool isExact = false;           ///< must its rate be kept, since others need the rest?
    std::vector<Chapter> chapters;  ///< in seconds of the disc's film: the first at 0, rising
    std::string note;  ///< what is worth telling about its motion, in some words; mostly empty

    bool hasFields() const { return fields != FieldSource::none && fields != FieldSource::merged; }

    /// Of the disc's film, as they are stored.
    FrameRate frameRate() const;
    /// Frames at most from one keyframe to the next, as they are stored.
    int keyframeInterval() const;
    /// The frames that players show, in the standard's rate.
    int shownFrames() const;
    /// The frame, as they are stored, that begins next to a time in seconds.
    int frameAt(double time) const;
    /// When a frame begins to be shown.
    double startOf(int frame) const;
    /// What its picture gets where there is room for everything, in kb/s.
    int bestVideoRate() const { return std::min(kBestVideoRate, topVideoRate); }
};

/// The conversion of a film, whose frames have been counted, but for its chapters, rates of the
/// picture and loudness, which are not the film's matter alone.
Conversion conversionOf(const Film& film, Standard standard, bool isCopied);

/// Decides on the sound of a film, from which the rest of the conversion is known. `stereoRate`:
/// kb/s, one of AC-3's.
void setSound(const Film& film, int stereoRate, Conversion& conversion);

/// A picture of the shape `aspect` in a raster that is shown in the shape `rasterAspect`: as large
/// as it fits, in the middle, the bars multiples of `step`; the whole raster for a shape that is
/// nearly its own.
Placement placedIn(PixelSize raster, double rasterAspect, double aspect, PixelSize step);

}  // namespace tkv::disc
