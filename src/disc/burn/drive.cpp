#include "disc/burn/drive.h"

#include <fmt/format.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <ranges>
#include <sstream>
#include <system_error>
#include <utility>

#include "disc/burn/burner.h"
#include "disc/run/fault.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

constexpr const char* kOption = "--burn";
constexpr std::string_view kFilePrefix = "stdio:";

[[noreturn]] void refuseDrive(const std::string& why) {
    throw DiscError(why, kOption);
}

DeviceFacts deviceFacts(const std::string& path) {
    DeviceFacts facts;
    struct stat item {};
    facts.isThere = stat(path.c_str(), &item) == 0;
    facts.isBlockDevice = S_ISBLK(item.st_mode);
    if (!facts.isBlockDevice) return facts;
    // Of SCSI's device types, 5 is that of CD, DVD and Blu-ray drives.
    const std::string type = readText(
        fmt::format("/sys/dev/block/{}:{}/device/type", major(item.st_rdev), minor(item.st_rdev)));
    facts.isOptical = type == "5\n";
    facts.mayWrite = access(path.c_str(), R_OK | W_OK) == 0;
    const group* const owner = getgrgid(item.st_gid);  // NOLINT(concurrency-mt-unsafe)
    if (owner != nullptr) facts.group = owner->gr_name;
    return facts;
}

std::string firstWriter() {
    std::vector<std::string> names = writersIn(readText("/proc/sys/dev/cdrom/info"));
    if (names.empty())
        refuseDrive(
            "There is no drive that writes DVDs. Connect one, or name it: --burn=/dev/sr0.");
    return "/dev/" + *std::ranges::min_element(names);
}

// What stands behind the name of a line, as "Media status : is blank" has it.
std::string_view valueIn(const std::vector<std::string>& lines, std::string_view name) {
    for (const std::string& line : lines) {
        if (line.starts_with(name) && line.size() > name.size() + 2)
            return std::string_view(line).substr(line.find(':') + 2);
    }
    return {};
}

Medium::State stateIn(std::string_view status) {
    if (status.starts_with("is blank")) return Medium::State::blank;
    if (status.starts_with("is written")) return Medium::State::written;
    if (status.starts_with("is not present")) return Medium::State::missing;
    return Medium::State::unknown;
}

// "DVD-R/DL sequential recording", "DVD+RW, overwriteable"
std::string kindIn(std::string_view profile) {
    std::string kind(profile.substr(0, profile.find_first_of(" ,")));
    std::ranges::replace(kind, '/', ' ');
    return kind;
}

double inGigabytes(std::int64_t bytes) {
    return static_cast<double>(bytes) / 1e9;
}

// Of a sentence.
std::string asBeginning(std::string text) {
    if (text.starts_with("the ")) text[0] = 'T';
    return text;
}

}  // namespace

std::string whyNoDrive(const std::string& path, const DeviceFacts& facts) {
    if (!facts.isThere) return fmt::format("There is no drive {}.", path);
    if (!facts.isBlockDevice || !facts.isOptical)
        return fmt::format("{} is no optical drive, and nothing is written to it.", path);
    if (facts.mayWrite) return {};
    if (facts.group.empty() || facts.group == "root")
        return fmt::format("You may not write to {}. Run this as an administrator.", path);
    return fmt::format(
        "You may not write to {}. An administrator lets you: usermod -aG {} $USER; "
        "it counts from your next login.",
        path, facts.group);
}

std::vector<std::string> writersIn(std::string_view info) {
    constexpr std::string_view kNames = "drive name:", kWrites = "Can write DVD-R:";
    std::vector<std::string> names;
    std::vector<bool> write;
    std::istringstream stream{std::string(info)};
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line.substr(line.find(':') + 1));
        std::string word;
        if (line.starts_with(kNames)) {
            while (words >> word)
                names.push_back(word);
        } else if (line.starts_with(kWrites)) {
            while (words >> word)
                write.push_back(word == "1");
        }
    }
    std::vector<std::string> writers;
    for (std::size_t i = 0; i < std::min(names.size(), write.size()); ++i) {
        if (write[i]) writers.push_back(names[i]);
    }
    return writers;
}

Drive findDrive(const std::string& asked) {
    Drive drive;
    drive.isFile = asked.starts_with(kFilePrefix);
    const std::string named =
        asked.empty() ? firstWriter() : asked.substr(drive.isFile ? kFilePrefix.size() : 0);
    std::error_code error;
    // xorriso gives some names of files a meaning of its own.
    drive.path = fs::canonical(named, error).string();
    if (error) drive.path = named;
    if (!drive.isFile) {
        if (const std::string why = whyNoDrive(named, deviceFacts(drive.path)); !why.empty())
            refuseDrive(why);
        return drive;
    }
    // xorriso would write to a disk, too.
    if (!fs::is_regular_file(drive.path, error))
        refuseDrive(
            fmt::format("{} is no file. Behind stdio: stands the name of one that is there; "
                        "an empty one is a blank disc.",
                        named));
    return drive;
}

Medium mediumIn(const Drive& drive, const std::vector<std::string>& lines) {
    Medium medium;
    medium.kind = kindIn(valueIn(lines, "Media current"));
    medium.state = stateIn(valueIn(lines, "Media status"));
    // A file that holds no image is somebody's film or letter, by a slip of the keyboard.
    medium.isErasable =
        drive.isFile ? valueIn(lines, "Media status").find("appendable") != std::string_view::npos
                     : medium.kind.starts_with("DVD-RW") || medium.kind.starts_with("DVD+RW") ||
                           medium.kind == "DVD-RAM";
    for (const std::string& line : lines) {
        // "Media blocks : 352 readable , 2294752 writable , 2295104 overall"
        if (!line.starts_with("Media blocks")) continue;
        const std::size_t last = line.rfind(" , ");
        if (last == std::string::npos) continue;
        std::from_chars(line.data() + last + 3, line.data() + line.size(), medium.sectors);
    }
    return medium;
}

Medium lookAt(const Drive& drive, bool erases, const Tools& tools) {
    std::vector<std::string> lines;
    Program program;
    program.command = {"xorriso", "-no_rc",        "-drive_access", "exclusive:readonly",
                       "-outdev", drive.address(), "-toc"};
    // In this mode all that can be overwritten is told as blank.
    if (erases) {
        for (const std::string& word : {std::string("-as"), std::string("cdrecord"),
                                        "dev=" + drive.address(), std::string("-toc")})
            program.command.push_back(word);
    }
    program.onOutput = [&](std::string_view line) { lines.emplace_back(line); };
    runBurner(std::move(program), drive.address() + " cannot be used",
              "Close what else uses it; a disc in it must not be mounted.", tools);
    return mediumIn(drive, lines);
}

std::string nameOf(const Drive& drive, const Medium& medium) {
    return drive.isFile ? drive.address() : fmt::format("the {} in {}", medium.kind, drive.path);
}

std::string whyNotBurnable(const Drive& drive, const Medium& medium, std::int64_t bytes,
                           bool erases) {
    const std::string name = asBeginning(nameOf(drive, medium));
    switch (medium.state) {
        case Medium::State::missing:
            return fmt::format("There is no disc in {}. Put in a blank DVD.", drive.path);
        case Medium::State::unknown:
            return fmt::format("What is in {} is not recognised. Put in a blank DVD.", drive.path);
        default:
            break;
    }
    if (!drive.isFile && !medium.isDvd())
        return fmt::format("{} is no DVD. Put in a blank DVD.", name);
    if (medium.state == Medium::State::written && !medium.isErasable && drive.isFile)
        return fmt::format("{} holds something else than a disc, and stays as it is.", name);
    if (medium.state == Medium::State::written && !medium.isErasable)
        return fmt::format("{} is written already, and cannot be erased. Put in a blank one.",
                           name);
    if (medium.state == Medium::State::written && !erases)
        return fmt::format("{} is not blank. Put in another one, or have it erased: --erase.",
                           name);
    if (medium.sectors == 0 || bytes <= medium.sectors * 2048) return {};
    return fmt::format("{} takes {:.2f} GB, and the disc needs {:.2f} GB. Put in a larger one{}.",
                       name, inGigabytes(medium.sectors * 2048), inGigabytes(bytes),
                       medium.isDualLayer() ? "" : ", or make a smaller disc: --size dvd5");
}

}  // namespace tkv::disc
