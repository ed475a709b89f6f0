#include "disc/burn/burning.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "disc/burn/burner.h"
#include "disc/run/fault.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Seconds of work for a gigabyte, of a drive that writes at 8x.
constexpr double kBurningWeight = 90;
constexpr double kComparingWeight = 70;

// How long a drive may take to stop writing.
constexpr unsigned kDrivePatience = 180;

constexpr std::int64_t kSector = 2048;
constexpr std::int64_t kErrorBlock = 16;  // of error correction, in sectors

// A run that is stopped meanwhile waits for the drive.
class Patience {
  public:
    explicit Patience(ProgramStop& stop) : stop_(stop) { stop_.setPatience(kDrivePatience); }
    ~Patience() { stop_.setPatience(ProgramStop::kPatience); }
    Patience(Patience&&) = delete;

  private:
    ProgramStop& stop_;
};

std::string whatIsLeft(const Drive& drive, const Medium& medium) {
    return fmt::format("Now {} may be spoilt: {}.", nameOf(drive, medium),
                       drive.isFile || medium.isErasable ? "have it written anew with --erase"
                                                         : "take another one");
}

std::vector<std::string> burnCommand(const Burn& what, const Medium& medium) {
    if (what.firstLayer && medium.isDualLayer()) {
        // It is not to ask anything, nor to push the tray into somebody's hand.
        return {"growisofs", "-dvd-compat",
                fmt::format("-use-the-force-luke=tty,notray,break:{}", *what.firstLayer), "-Z",
                fmt::format("{}={}", what.drive.path, what.image)};
    }
    // As one session, which it closes.
    std::vector<std::string> command{
        "xorriso", "-no_rc", "-as", "cdrecord", "-v", "dev=" + what.drive.address(), "-nopad"};
    if (what.erases) command.emplace_back("blank=as_needed");
    command.push_back(what.image);
    return command;
}

void writeImage(const Burn& what, const Medium& medium, std::int64_t bytes,
                const Workshop& workshop, Progress& progress) {
    const ProgramStop& stop = workshop.tools().stop();
    Progress::Task task(progress, fmt::format("Burning {}", nameOf(what.drive, medium)),
                        kBurningWeight * static_cast<double>(bytes) / 1e9);
    bool isTold = false;
    const auto follow = [&](std::string_view line) {
        if (const auto part = writtenPart(line)) task.reach(*part);
        if (!stop.isStopped() || isTold) return;
        isTold = true;
        progress.say("Interrupted; the drive is brought to rest, which may take a minute.");
    };
    Program program;
    program.command = burnCommand(what, medium);
    program.onOutput = follow;
    program.onError = follow;
    try {
        runBurner(std::move(program), "disc.iso is whole, but could not be burnt",
                  whatIsLeft(what.drive, medium), workshop.tools());
    } catch (const Interrupted&) {
        progress.say(whatIsLeft(what.drive, medium));
        throw;
    }
}

// What the medium holds, beside the image.
class Comparison {
  public:
    Comparison(const std::string& image, std::int64_t from)
        : file_(image, std::ios::binary), done_(from * kSector) {
        file_.seekg(done_);
    }

    // False at the first byte that differs.
    bool take(std::string_view bytes) {
        expected_.resize(bytes.size());
        file_.read(expected_.data(), static_cast<std::streamsize>(expected_.size()));
        const std::string_view expected(expected_.data(), static_cast<std::size_t>(file_.gcount()));
        const auto [is, wanted] =
            std::mismatch(bytes.begin(), bytes.end(), expected.begin(), expected.end());
        done_ += is - bytes.begin();
        // Behind the image there may be anything.
        return wanted == expected.end();
    }

    std::int64_t done() const { return done_; }

  private:
    std::ifstream file_;
    std::int64_t done_;
    std::string expected_;
};

// Where a comparison has ended.
struct End {
    std::int64_t bytes = 0;
    std::string cause;  ///< why they cannot be read; empty where they can
};

// Reads by xorriso, which asks the drive itself: the system may hold what was there before the
// disc was written, and its size.
End compareFrom(std::int64_t sector, std::int64_t bytes, const Burn& what, const Workshop& workshop,
                Progress::Task& task) {
    Comparison comparison(workshop.path(what.image), sector);
    End end;
    Program program;
    program.command = {"xorriso",
                       "-no_rc",
                       "-outdev",
                       what.drive.address(),
                       "-check_media",
                       "use=outdev",
                       "data_to=-",
                       fmt::format("min_lba={}", sector),
                       fmt::format("max_lba={}", (bytes + kSector - 1) / kSector - 1),
                       "--",
                       "-eject",
                       "all"};
    bool isSame = true;
    program.onBytes = [&](std::string_view part) {
        isSame = comparison.take(part);
        task.reach(static_cast<double>(comparison.done()) / static_cast<double>(bytes));
        return isSame;
    };
    program.onError = [&](std::string_view line) {
        // That nobody listens any more is our doing.
        if (end.cause.empty() && !line.ends_with("Broken pipe")) end.cause = causeIn(line, true);
    };
    try {
        workshop.tools().run(std::move(program), {"--burn", "The disc could not be read", ""});
    } catch (const DiscError& error) {
        if (end.cause.empty() && isSame) end.cause = error.what();
    }
    end.bytes = comparison.done();
    return end;
}

void compareImage(const Burn& what, const Medium& medium, std::int64_t bytes,
                  const Workshop& workshop, Progress& progress) {
    Progress::Task task(progress, "Comparing the disc",
                        kComparingWeight * static_cast<double>(bytes) / 1e9);
    const std::string name = nameOf(what.drive, medium);
    std::int64_t sector = -1;
    try {
        // What is not read well at first may be the second time, or a key had stopped the reading.
        for (std::int64_t from = 0;;) {
            const End end = compareFrom(from, bytes, what, workshop, task);
            if (end.bytes >= bytes) return;
            const bool isSecond = end.bytes / kSector <= sector;
            sector = end.bytes / kSector;
            from = sector / kErrorBlock * kErrorBlock;
            if (!isSecond) continue;
            const std::string fault =
                end.cause.empty()
                    ? fmt::format("differs from it at sector {}", sector)
                    : fmt::format("cannot be read at sector {}: {}", sector, end.cause);
            throw DiscError(fmt::format("disc.iso is whole, but {} {}. {}", name, fault,
                                        whatIsLeft(what.drive, medium)),
                            "--burn");
        }
    } catch (const Interrupted&) {
        progress.say(fmt::format("disc.iso is written to {}, but not compared.", name));
        throw;
    }
}

}  // namespace

double burningWeight(std::int64_t bytes) {
    return (kBurningWeight + kComparingWeight) * static_cast<double>(bytes) / 1e9;
}

void burn(const Burn& what, const Workshop& workshop, Progress& progress) {
    const auto bytes = static_cast<std::int64_t>(fs::file_size(workshop.path(what.image)));
    const Patience patience(workshop.tools().stop());
    const Medium medium = lookAt(what.drive, what.erases, workshop.tools());
    if (const std::string why = whyNotBurnable(what.drive, medium, bytes, what.erases);
        !why.empty())
        throw DiscError("disc.iso is whole, but is not burnt. " + why, "--burn");
    writeImage(what, medium, bytes, workshop, progress);
    compareImage(what, medium, bytes, workshop, progress);
}

std::optional<double> writtenPart(std::string_view line) {
    // "xorriso : UPDATE :    7 of   57 MB written", "  4227072/6587762688 ( 0.1%) @0.9x"
    const auto numberAt = [&](std::size_t at) {
        double number = -1;
        at = std::min(line.find_first_not_of(' ', at), line.size());
        std::from_chars(line.data() + at, line.data() + line.size(), number);
        return number;
    };
    std::size_t from = 0, to = 0;
    if (line.find(" MB written") != std::string_view::npos) {
        constexpr std::string_view kUpdate = " UPDATE : ", kOf = " of ";
        from = line.find(kUpdate) + kUpdate.size();
        to = line.find(kOf) + kOf.size();
    } else {
        to = line.find('/') + 1;
        if (line.find("%) @") == std::string_view::npos) return std::nullopt;
    }
    const double done = numberAt(from), all = numberAt(to);
    if (done < 0 || all <= 0) return std::nullopt;
    return std::min(done / all, 1.0);
}

}  // namespace tkv::disc
