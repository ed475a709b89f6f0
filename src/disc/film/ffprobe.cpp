#include "disc/film/ffprobe.h"

#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "disc/film/source.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace fs = std::filesystem;

void askFfprobe(const std::vector<std::string>& input, const std::vector<std::string>& questions,
                const Tools& tools, const Failure& failure,
                const std::function<void(std::string_view line)>& onLine, std::size_t most) {
    Program program;
    program.command = {"ffprobe", "-v", "error"};
    program.command.insert(program.command.end(), questions.begin(), questions.end());
    program.command.insert(program.command.end(), input.begin(), input.end());
    program.onOutput = onLine;
    program.mostOutput = most;
    tools.run(std::move(program), failure);
}

void requireSound(const std::string& path, const Tools& tools) {
    bool hasSound = false;
    const bool isThere = fs::exists(path);
    if (isThere && !fs::is_regular_file(path))
        throw DiscError(fmt::format("{} is no file. Name another one with --music.", path), path);
    askFfprobe({"-i", inputName(path)},
               {"-select_streams", "a:0", "-show_entries", "stream=codec_name", "-of", "csv=p=0"},
               tools, {path, fmt::format("{} cannot be heard in the menus", path), ""},
               [&](std::string_view) { hasSound = true; });
    if (hasSound) return;
    throw DiscError(fmt::format("{} holds no sound. Name another file with --music.", path), path);
}

}  // namespace tkv::disc
