#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "disc/film/dvd_titles.h"
#include "disc/film/slides.h"

namespace tkv::disc {

/// Some bytes of a file.
struct FilePart {
    std::string path;
    std::int64_t first = 0, end = 0;  ///< behind the last
    bool operator==(const FilePart&) const = default;
};

/// One of the files that make a film together.
struct FilmClip {
    std::string file;
    double start = 0;    ///< of its first frame, in seconds after its earliest track begins
    double seconds = 0;  ///< from that to the end of its last one
};

/// The files of a film, as they are on the disk now.
struct FilmSource {
    std::string path;  ///< as asked for; messages name it
    /// Absolute; one, or in their order those of a film that lies in several: a title's VOBs, or
    /// what a person has joined.
    std::vector<std::string> files;
    std::vector<FilmClip> clips;      ///< where each file has a clock of its own; else empty
    std::vector<FilePart> parts;      ///< what is read of them, in order; empty: all
    std::int64_t bytes = 0;           ///< of all that is read
    std::string stamp;                ///< differs after any of the files has changed
    std::optional<DvdTitle> title;    ///< where they are those of a DVD's title set
    std::optional<SlideShow> slides;  ///< where they are pictures, and the music to them
    std::vector<std::string> notes;   ///< what is worth telling of it, a sentence each
    bool looksFurther = false;        ///< do streams begin where ffmpeg does not look by itself?
};

/// The files that an absolute path stands for: itself, the VOBs of a VIDEO_TS folder's largest
/// title, or, of a VOB named VTS_nn_1, those of its title. Throws DiscError when nothing is there
/// or a folder holds no film.
FilmSource sourceOf(const std::string& path);

/// The same of files that have been found: they are there, and may be read.
FilmSource sourceOf(const std::string& path, std::vector<std::string> files);

/// The VOBs of a title set in a folder, in their order; none where it has no such set.
std::vector<std::string> titleSetIn(const std::string& folder, int number);

/// The title set that a source's files are, from 1; 0 for all other films.
int titleSetOf(const FilmSource& source);

/// Has a source be a title of its set. False, and nothing is changed, where the title has sectors
/// that the files have not. Throws as sourceOf.
bool takeTitle(FilmSource& source, DvdTitle title);

/// What is given to ffmpeg and ffprobe as the name of a file or film, whatever it is called.
/// Several files or parts are read as one; their names then hold no '|'. Of a film of clips it is a
/// list for ffmpeg's demuxer "concat", as inputWords names it; of slides it is their sound.
std::string inputName(const std::string& file);
std::string inputName(const FilmSource& source);

/// What is read of a film, in order.
std::vector<FilePart> partsOf(const FilmSource& source);

/// Where a film is entered, on the way to a moment.
struct FilmPlace {
    std::string input;    ///< as inputName returns it
    double seconds = 0;   ///< of that, after its first frame
    double begin = 0;     ///< of the film, where that begins
    bool isPart = false;  ///< Is it less than the film? Its streams have other numbers then.
    double shift = 0;     ///< seconds by which its first frame is later in it than the film's is
};

/// Where ffmpeg finds a moment of a film when it enters it at `entry`, both in seconds from its
/// begin: of a DVD's title whose time begins anew on the way, which it does not see, the part in
/// which that moment is; of clips, the one in which it is.
FilmPlace placeIn(const FilmSource& source, double entry, double moment);

/// The same with the words before it: "-i" and its name.
std::vector<std::string> inputWords(const FilmSource& source);

/// Differs after any of the files has changed or been replaced.
std::string stampOf(const std::vector<std::string>& files);

}  // namespace tkv::disc
