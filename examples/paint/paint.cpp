// Paints the example pictures of the menu composer as PNG files into a folder.
#include "scenes.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

using Frame = Picture (*)(double t);

void paintLoop(const std::filesystem::path& folder, Frame frame, int count) {
    std::filesystem::create_directories(folder);
    for (int i = 0; i < count; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "%03d.png", i);
        frame(static_cast<double>(i) / count).save((folder / name).string());
    }
}

void paintAll(const std::filesystem::path& folder) {
    const auto save = [&](const Picture& picture, const char* name) {
        picture.save((folder / name).string());
    };
    std::filesystem::create_directories(folder);
    save(paintBackground(), "background.png");
    save(paintCover(), "cover.png");
    save(paintIcon(), "icon.png");
    save(paintHarbour(), "harbour.png");
    save(paintForest(), "forest.png");
    save(paintCity(), "city.png");
    save(paintDesert(), "desert.png");
    save(paintSnow(), "snow.png");
    paintLoop(folder / "lighthouse", paintLighthouse, 24);
    paintLoop(folder / "sailing", paintSailing, 30);
    paintLoop(folder / "wheel", paintWheel, 18);
    paintLoop(folder / "train", paintTrain, 21);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: paint FOLDER\n");
        return 2;
    }
    try {
        paintAll(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "paint: %s\n", error.what());
        return 1;
    }
    return 0;
}
