#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tkv::disc {

/// The files of a film, as they are on the disk now.
struct FilmSource {
    std::string path;                ///< as asked for; messages name it
    std::vector<std::string> files;  ///< absolute; one, or the VOBs of a title in their order
    std::int64_t bytes = 0;          ///< of all files together
    std::string stamp;               ///< differs after any of the files has changed
};

/// The files that an absolute path stands for: itself, the VOBs of a VIDEO_TS folder's largest
/// title, or, of a VOB named VTS_nn_1, those of its title. Throws DiscError when nothing is there
/// or a folder holds no film.
FilmSource sourceOf(const std::string& path);

/// What is given to ffmpeg and ffprobe as the name of these files, whatever they are called.
/// Several are read as one; their names then hold no '|'.
std::string inputName(const std::vector<std::string>& files);

/// Differs after any of the files has changed or been replaced.
std::string stampOf(const std::vector<std::string>& files);

}  // namespace tkv::disc
