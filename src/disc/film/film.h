#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "disc/film/source.h"
#include "disc/project/project.h"
#include "disc/project/standard.h"
#include "graphics/geometry.h"

// The facts of a film, as ffprobe tells them.

namespace tkv::disc {

/// Sound tracks of a disc's film. Those that a film has beyond are left out.
inline constexpr std::size_t kMostTracks = 8;

enum class Fields { progressive, topFirst, bottomFirst };

struct AudioTrack {
    std::string codec;  ///< as ffmpeg calls it
    int channels = 0;
    int sampleRate = 0;           ///< hertz
    std::int64_t bitRate = 0;     ///< bits a second; 0 when the file does not tell
    std::string language = "xx";  ///< two letters of ISO 639-1; "xx" when unknown
    int index = 0;                ///< among all streams of the sources
    int id = 0;                   ///< the stream's number in the file, where it has one
    bool isWhole = true;          ///< Is it there all the time? False only once frames are counted.
    bool isUnbroken = true;       ///< Does each packet begin where the one before it ends?
    double late = 0;              ///< seconds after the film's first frame; below 0: before it
};

/// Subtitle tracks of a disc's film. Those that a film has beyond are left out.
inline constexpr std::size_t kMostSubtitles = 32;

/// What a track's codec is called whose text stands in the film's pictures (EIA-608).
inline constexpr const char* kCaptions = "captions";

struct FilmSubtitle {
    std::string path;  ///< absolute, of a file of its own; empty: in the film
    /// Then among all streams of the sources, or -1, when it begins far behind; else of the file's.
    int index = 0;
    int id = 0;                   ///< the stream's number in the file, where it has one
    int letterboxedId = 0;        ///< of a DVD's own: of displays that show the film between bars
    std::string codec;            ///< as ffmpeg calls it, or kCaptions
    std::string language = "xx";  ///< two letters of ISO 639-1; "xx" when unknown
    SubtitleKind kind = SubtitleKind::normal;
    bool isDefault = false;  ///< does it say that it is the one to show?
    /// In the workshop, what is to be drawn: a file of the format ASS, PGS (.sup), or DVD's units
    /// (.mks); empty until it is read.
    std::string text;
};

/// The level of MPEG-2 that is called main, that of discs.
inline constexpr int kMainLevel = 8;

struct VideoTrack {
    int index = 0;                            ///< among all streams of the sources
    std::string codec, profile, pixelFormat;  ///< as ffmpeg calls it
    int level = 0;                            ///< as the codec counts; 0 when not told
    std::string matrix, transfer, range;      ///< the same; empty when the film is not tagged
    PixelSize size;                           ///< as stored
    PixelSize shown;                          ///< turned upright, before the pixels' shape counts
    double aspect = 0;                        ///< width to height of the picture as shown
    Edges cut;                                ///< what is left out of it, in pixels of `shown`
    double start = 0;     ///< of the first frame, in seconds after the film's earliest track begins
    FrameRate frameRate;  ///< of whole pictures, on average
    Fields fields = Fields::progressive;
    bool isToBeWhole = false;     ///< are whole pictures to be made of its fields?
    std::int64_t maxBitRate = 0;  ///< of the decoder's buffer, bits a second; 0 when not told
};

struct Film {
    FilmSource source;
    std::string container;  ///< as ffmpeg calls it: "matroska,webm"
    std::string title;      ///< its own tag; empty when it has none
    std::string taken;      ///< when, by its own tag, in ISO 8601; empty when it has none
    VideoTrack video;
    std::vector<AudioTrack> audio;
    std::vector<FilmSubtitle> subtitles;  ///< its own; those for the disc once they are chosen
    /// Of its own subtitles, where it is a DVD's title that has some.
    std::optional<DvdPalette> palette;
    std::vector<int> fonts;          ///< attached to it: their places among all streams
    std::vector<std::string> notes;  ///< what of it the disc lacks, and the like, in words
    std::vector<Chapter> marks;      ///< its own, as they stand in the file
    double start = 0;                ///< of the file's own time, in seconds
    double seconds = 0;              ///< by the file's word; by its frames once they are counted
    double lost = 0;             ///< seconds before the first frame that can be decoded, as counted
    double skipped = 0;          ///< seconds before its first frame that nobody wants
    double soundDelay = 0;       ///< seconds by which its sound is to come later
    bool endsEarly = false;      ///< does it go on in the file, where nobody wants it?
    bool isAltered = false;      ///< is something wanted otherwise than a copy would have it?
    bool picksSound = false;     ///< were its sound tracks chosen?
    bool hasNavigation = false;  ///< DVD navigation packs
    /// Of each keyframe, in seconds from the first frame; empty until the frames are counted.
    std::vector<double> keyframes;
    int frames = 0;            ///< 0 until they are counted
    int keyframeInterval = 0;  ///< frames at most from one keyframe to the next, once counted
};

/// Where ffmpeg finds a moment of a film: the same of times after its first frame, wherever that is
/// in its source. `seconds` is the input's own time then, 0 where it is to be read from its start,
/// and `begin` the film's time at the input's 0.
FilmPlace placeIn(const Film& film, double entry, double moment);

/// Has the film begin with a frame at that time, in seconds after its earliest track begins; its
/// chapters' times follow.
void beginAt(Film& film, double start);

}  // namespace tkv::disc
