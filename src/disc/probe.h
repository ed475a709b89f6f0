#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "disc/film.h"

namespace tkv::disc {

/// The files that a request's path stands for, absolute: itself, the VOBs of a VIDEO_TS folder's
/// largest title, or, of a VOB named VTS_nn_1, those of its title. Throws DiscError when nothing is
/// there or a folder holds no film.
std::vector<std::string> sourcesOf(const std::string& path);

/// What is given to ffmpeg and ffprobe as the name of these files, whatever they are called.
/// Several are read as one; their names then hold no '|'.
std::string inputName(const std::vector<std::string>& sources);

/// A film from the JSON that ffprobe answers about it (its format, streams and chapters). Throws
/// DiscError when it has no moving picture.
Film filmFromAnswer(const std::string& path, std::string_view json);

/// What ffprobe has answered before about a film with this stamp; empty when nobody knows.
using KnownAnswer = std::function<std::string(const std::string& stamp)>;

/// Asks ffprobe about a film, unless its answer is known. Takes some tenths of a second; the film's
/// length is the file's word.
Film probeFilm(const std::string& path, const KnownAnswer& knownAnswer = {});

/// Reads the whole film, without decoding it: fills in its frames and keyframes, and corrects its
/// length. Throws DiscError when it ends long before the file's word says it does.
void countFrames(Film& film);

/// Why a film cannot stand on a disc as it is, in some words; empty when it can. Frames counted.
std::string whyNotDvdReady(const Film& film, Standard standard);

}  // namespace tkv::disc
