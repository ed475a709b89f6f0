#include "disc_films.h"

#include <unistd.h>

namespace tkv::test::disc {

void Films::make(const std::string& name, const std::string& words, const std::string& marks) {
    const fs::path all = fs::path(discProgramPath()).parent_path().parent_path() / "films";
    const std::string kept = fmt::format("{:016x}{}", std::hash<std::string>()(words + marks),
                                         fs::path(name).extension().string());
    if (!fs::exists(all / kept)) {
        fs::create_directories(all);
        // Two tests may make the same at once.
        const fs::path unfinished = all / fmt::format("{}-{}", getpid(), kept);
        run(fmt::format("printf {} | ffmpeg -nostdin -v error -y {} {}", quoted(marks), words,
                        quoted("file:" + unfinished.string())));
        fs::rename(unfinished, all / kept);
    }
    fs::create_symlink(all / kept, file(name));
}

void Films::makeAllKinds() {
    const std::string sound = "-f lavfi -i sine=r=48000";
    make("chapters a:b 100%.mp4",
         fmt::format("-f lavfi -i color=red:s=640x360:r=25:d=2.2 "
                     "-f lavfi -i color=blue:s=640x360:r=25:d=2.2 {} -f ffmetadata -i pipe:0 "
                     "-filter_complex '[0][1]concat,drawbox=230:100:180:160:white:40,"
                     "scale=out_color_matrix=bt709' -colorspace bt709 -map 2:a -map_metadata 3 "
                     "-t 4.4",
                     sound),
         ";FFMETADATA1\ntitle=Chapters & more\n"
         "[CHAPTER]\nTIMEBASE=1/10\nSTART=0\nEND=22\ntitle=Red\n"
         "[CHAPTER]\nTIMEBASE=1/10\nSTART=22\nEND=44\ntitle=Blue\n");
    make("it's \"upright\" & silent |.mp4", "-f lavfi -i testsrc2=s=180x320:r=30:d=1");
    make("-fields.mkv",
         fmt::format("-f lavfi -i testsrc=s=720x576:r=25:d=1 {0} {0} -map 0:v -map 1:a -map 2:a "
                     "-vf setfield=tff -flags +ilme+ildct -aspect 4:3 -c:v mpeg2video -b:v 6M "
                     "-metadata:s:a:0 language=fra -metadata:s:a:1 language=jpn -t 1",
                     sound));
    makeReady();
}

void Films::makeReady(const std::string& name) {
    make(name,
         "-f lavfi -i testsrc2=s=720x576:r=25:d=2 -f lavfi -i sine=r=48000 -t 2 -target pal-dvd "
         "-aspect 4:3");
}

std::string Films::makeDisc(const std::string& words, const std::string& before) const {
    return run(fmt::format("cd {}; {}{} {}; echo status $?", folder_.path(), before,
                           quoted(discProgramPath()), words));
}

void Films::expectDisc(const std::string& words) const {
    const std::string said = makeDisc(words);
    EXPECT_TRUE(said.ends_with("status 0\n")) << said;
}

std::string Films::faked(const std::string& name, const std::string& script) const {
    const std::string path =
        folder_.write(fmt::format("fake-{}/{}", std::hash<std::string>()(script), name),
                      fmt::format("#!/bin/sh\nreal={}{}", run("command -v " + name), script));
    fs::permissions(path, fs::perms::owner_all);
    return fmt::format("export PATH={}:$PATH; ", fs::path(path).parent_path().string());
}

std::string Films::raw(const std::string& input, const std::string& words) const {
    run(fmt::format("ffmpeg -nostdin -v error -y -i {} {} {}", quoted(input), words, file("raw")));
    return readText(file("raw"));
}

Rgba Films::colorAt(const std::string& input, double seconds, const std::string& filters) const {
    const std::string rgb =
        raw(input, fmt::format("-ss {} -frames:v 1 -vf {},scale=1:1:in_color_matrix=bt601:flags="
                               "area,format=rgb24 -f rawvideo",
                               seconds, filters));
    const auto channel = [&](std::size_t i) { return static_cast<unsigned char>(rgb.at(i)); };
    return {channel(0), channel(1), channel(2), 255};
}

int Films::hertzAt(const std::string& input, double seconds) const {
    const std::string samples =
        raw(input, fmt::format("-ss {} -t 0.2 -map 0:a:0 -ac 1 -f s16le", seconds));
    int waves = 0;
    bool isHigh = true;
    for (std::size_t i = 1; i < samples.size(); i += 2) {
        const int byte = static_cast<unsigned char>(samples[i]);
        const int sample = byte < 128 ? byte : byte - 256;
        if (sample > 0 && !isHigh) ++waves;
        if (sample != 0 && sample != -1) isHigh = sample > 0;
    }
    return waves * 5;
}

Bitmap Films::menu(const std::string& name) const {
    return decodePicture(file(name)).value();
}

}  // namespace tkv::test::disc
