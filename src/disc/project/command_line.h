#pragma once

#include <optional>
#include <string>
#include <vector>

#include "disc/project/project.h"
#include "disc/run/environment.h"

namespace tkv::disc {

/// What one run is to do.
struct Options {
    Project project;
    std::string output;       ///< absolute path of the folder; empty when none is needed
    std::string projectFile;  ///< absolute path of the file to be written; else empty
    bool isPreview = false;   ///< only the pictures of the menus
    bool makesImage = true;
    bool burns = false;
    std::string drive;        ///< that the disc is written with, as findDrive takes it
    bool erases = false;      ///< what is on the disc in it?
    bool cleans = false;      ///< are the intermediate results removed?
    bool keepsGoing = false;  ///< without the films that have a fault?
    bool verifies = false;    ///< are the kept ones read whole before they are used?
    bool isQuiet = false;
    Paper paper = Paper::a4;  ///< that the cover is printed on
};

/// Where a command line is read.
struct Surroundings {
    std::string folder;    ///< absolute; relative paths begin there
    std::string language;  ///< of the user, as a locale; that of the menus unless another is given
    std::vector<std::string> plainFolders{};  ///< as Project has them
    Paper paper = Paper::a4;                  ///< that the user prints on
};

/// Reads the words of a command line (without the program's name) and the project file that they
/// name; what stands on the line counts more than what stands in the file, and its films come
/// behind the file's. There are 1 to kMostFilms films then, and an output unless a project file is
/// to be written. Of VOBs of one title only the first is a film, those of menus are none. None, and
/// the exit status in `status`, where the words ask for a text (--help, --version), which is then
/// written to the standard output, or are wrong, which one line on the standard error stream tells.
/// Throws DiscError for what is wrong with the project file, and for too many films.
std::optional<Options> readCommandLine(const std::vector<std::string>& words,
                                       const Surroundings& surroundings, int& status);

}  // namespace tkv::disc
