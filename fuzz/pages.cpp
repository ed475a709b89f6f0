#include <filesystem>
#include <map>

#include "cli/front_end.h"
#include "composer/dvd_menu_picture.h"
#include "fuzzing.h"
#include "graphics/drawing.h"
#include "graphics/formats.h"
#include "system/files.h"
#include "system/verbose.h"

// Any NUL-terminated arguments, given to the real tool: pages are made of tiny pictures, and
// earlier outputs are removed. All paths are confined to the scratch folder: outputs to "out",
// which is empty at the start of each run, pictures to "in", which no run may change.

using namespace tkv;
using namespace tkv::fuzz;
namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPictures[] = {"a.jpg", "b.png", "loop/0.jpg", "loop/1.gif", "c.jp2"};

std::string pathOf(std::string_view name) {
    return scratchFolder() + "/" + std::string(name);
}

void makePictures() {
    for (const std::string_view name : kPictures) {
        const fs::path path = pathOf("in/" + std::string(name));
        fs::create_directories(path.parent_path());
        Bitmap bitmap = Bitmap::create({32, 18}).value();
        require(fillRect(bitmap, {0, 0, 24, 18}, kOrange), "a bitmap can be filled");
        const auto bytes = encodePicture(bitmap, path.extension().string().substr(1), 0.9F);
        require(bytes && writeFile(path, *bytes), "there are pictures");
    }
}

std::map<std::string, FileStamp> stamps() {
    std::map<std::string, FileStamp> found;
    for (const auto& entry : fs::recursive_directory_iterator(pathOf("in"))) {
        if (entry.is_regular_file()) found[entry.path()] = fileStamp(entry.path()).value();
    }
    return found;
}

/// A word without path traversal, a home or the root.
std::string tamed(std::string word) {
    for (std::size_t at = 0; (at = word.find("..")) != std::string::npos;)
        word[at] = '_';
    const bool isPath = word.starts_with("in/") || word.starts_with('/') || word.starts_with('~');
    return isPath ? pathOf(word) : word;
}

/// Any path as one below "out", or below "in" where it says so and nothing is written.
std::string confined(const std::string& path, bool isOutput) {
    constexpr std::size_t kLongest = 300;
    std::string inside = tamed(path).substr(0, pathOf("").size() + kLongest);
    if (inside.starts_with(pathOf(""))) inside.erase(0, pathOf("").size());
    const bool isInput = !isOutput && inside.starts_with("in/");
    return pathOf((isInput ? "" : "out/") + inside);
}

MenuRequest confined(MenuRequest request) {
    request.output = confined(request.output, true);
    for (std::optional<std::string>* const path : {&request.bkg, &request.icon}) {
        if (*path) *path = confined(**path, false);
    }
    if (request.thumbs) {
        for (std::string& thumb : *request.thumbs)
            thumb = confined(thumb, false);
    }
    return request;
}

bool compose(const MenuRequest& given) {
    const MenuRequest request = confined(given);
    // Of the hundreds of frames of a menu three are enough, except in a run that copies them.
    if (request.mode != MenuMode::definitive || (isVerbose() == 0 && request.title == "all"))
        return dvdMenuPicture(request);
    int frames = 0;
    return drawMenuFrames(request, [&](const Bitmap& frame) {
        requireSound(frame);
        require(frame.size() == PixelSize{720, 540}, "a frame has its size");
        return ++frames < 3;
    });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::map<std::string, FileStamp> before = [] {
        makePictures();
        return stamps();
    }();
    fs::remove_all(pathOf("out"));
    fs::create_directory(pathOf("out"));
    std::vector<std::string> words;
    for (Input input(data, size); !input.isAtEnd();)
        words.push_back(tamed(input.word()));
    runFrontEnd(words, compose);
    require(stamps() == before, "a run changes nothing but its output");
    return 0;
}
