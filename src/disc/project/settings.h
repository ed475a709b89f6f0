#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "disc/project/project.h"

// What can be set for a whole disc. Command line, project file and their explanations read these
// tables: "--size dvd9" there, size = "dvd9" here.

namespace tkv::disc {

struct TextSetting {
    std::string_view name;
    std::string_view argument;     ///< what stands for its value in the help
    std::string_view explanation;  ///< of the help and of the file's comment
    std::string_view wanted;       ///< what it may be, behind "wants"
    std::string_view example;      ///< for one that has no value by default
    bool isPath = false;           ///< its value is made absolute first, unless it is kNone
    /// Returns false, with nothing set, when the text is none that is wanted.
    bool (*set)(Project& project, const std::string& text);
    std::optional<std::string> (*text)(const Project& project);
};
std::span<const TextSetting> textSettings();

/// Sets what is either so or not.
struct FlagSetting {
    std::string_view name;
    std::string_view explanation;  ///< of the file's comment
    bool Project::*value;
};
inline constexpr std::array<FlagSetting, 4> kFlagSettings{{
    {"first-film", "true: the first film plays before the menu comes", &Project::playsFirstFilm},
    {"menu", "false: no menu, the films just play", &Project::hasMenu},
    {"dim", "false: the background stays as bright as it is, however the texts read on it",
     &Project::dimsBackground},
    {"join", "true: the pieces into which cameras divide a long recording are one film",
     &Project::joinsClips},
}};

}  // namespace tkv::disc
