#pragma once

#include <string>
#include <vector>

namespace tkv::disc {

/// What a file seems to be, by its name's extension.
enum class FileKind {
    film,
    picture,
    sound,
    beside,  ///< a film's: its subtitles, and what cameras and desktops leave
    other,
};
FileKind kindOf(const std::string& path);

/// What a person's folder holds, and the folders in it, sorted by the names' extensions: absolute
/// paths in natural order, a folder's own files first.
struct FolderContents {
    std::vector<std::string> films;     ///< a DVD's folder with VOBs is one of them
    std::vector<std::string> pictures;  ///< that are no film's
    std::vector<std::string> sounds;
    std::vector<std::string> others;  ///< whatever else somebody may miss
};

/// Hidden files and folders, links to folders, and what cameras, desktops and this program leave
/// are not looked at. What cannot be listed is empty. `except`: a folder that is not looked into.
FolderContents contentsOf(const std::string& folder, const std::string& except);

}  // namespace tkv::disc
