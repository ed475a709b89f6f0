#include "disc/film/folder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "disc/film/clips.h"
#include "disc/project/names.h"
#include "disc/run/own_folder.h"
#include "system/files.h"
#include "system/paths.h"

namespace tkv::disc {

namespace {

namespace fs = std::filesystem;

// Folders in folders; links could lead round in a circle.
constexpr int kDeepest = 12;

// Blanks around each, so that no extension is found in another.
constexpr std::string_view kFilms =
    " 3g2 3gp amv asf avi divx dv evo f4v flv h264 h265 hevc insv ivf m1v m2t m2ts m2v m4v mkv mod "
    "mov mp4 mpe mpeg mpg mpv mts mxf nut ogm ogv qt rm rmvb tod ts vob vro webm wmv wtv xvid y4m ";
constexpr std::string_view kPictures =
    " avif bmp gif heic heif hif j2k jp2 jpe jpeg jpg png tif tiff webp ";
constexpr std::string_view kSounds =
    " aac ac3 aif aiff alac flac m4a mka mp2 mp3 oga ogg opus wav wma ";

// Cameras' small copies, thumbnails and indexes; desktops' settings; and subtitles, which films
// find by themselves.
constexpr std::string_view kBeside =
    " ass bdm cont cpi ctg db idx ifo bup ini lrf lrv moi mpl ssa srt sub sup tdt thm tid vtt ";

bool isAmong(std::string_view extensions, const std::string& extension) {
    return !extension.empty() && extensions.find(" " + extension + " ") != std::string_view::npos;
}

bool holdsOwnResults(const std::string& folder) {
    std::error_code error;
    return fs::exists(fs::path(folder) / "work" / kMarker, error);
}

class FolderReader {
  public:
    explicit FolderReader(const std::string& except) : except_(except) {}

    void read(const std::string& folder, int depth) {
        if (depth > kDeepest || folder == except_ || holdsOwnResults(folder)) return;
        std::vector<std::string> folders, films;
        for (const std::string& name : folderNames(folder).value_or(std::vector<std::string>{})) {
            if (name.starts_with('.')) continue;
            const std::string path = joinPath(folder, name);
            std::error_code error;
            if (fs::is_directory(path, error)) {
                if (!fs::is_symlink(path, error)) folders.push_back(path);
                continue;
            }
            const auto part = dvdPartOf(name);
            if (!part) {
                take(path, films);
            } else if (part->isVob && part->number > 0 && !std::ranges::count(films, folder)) {
                films.push_back(folder);
            }
        }
        orderByRecording(films);
        contents_.films.insert(contents_.films.end(), films.begin(), films.end());
        for (const std::string& each : folders)
            read(each, depth + 1);
    }

    const FolderContents& contents() const { return contents_; }

  private:
    void take(const std::string& path, std::vector<std::string>& films) {
        switch (kindOf(path)) {
            case FileKind::film:
                return films.push_back(path);
            case FileKind::picture:
                return contents_.pictures.push_back(path);
            case FileKind::sound:
                return contents_.sounds.push_back(path);
            case FileKind::other:
                return contents_.others.push_back(path);
            case FileKind::beside:
                return;
        }
    }

    const std::string& except_;
    FolderContents contents_;
};

}  // namespace

FileKind kindOf(const std::string& path) {
    const std::string extension = asciiLowered(pathExtension(path));
    if (isAmong(kFilms, extension)) return FileKind::film;
    if (isAmong(kPictures, extension)) return FileKind::picture;
    if (isAmong(kSounds, extension)) return FileKind::sound;
    return isAmong(kBeside, extension) ? FileKind::beside : FileKind::other;
}

FolderContents contentsOf(const std::string& folder, const std::string& except) {
    FolderReader reader(except);
    reader.read(folder, 0);
    return reader.contents();
}

}  // namespace tkv::disc
