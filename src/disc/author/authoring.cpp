#include "disc/author/authoring.h"

#include <fmt/format.h>

#include <filesystem>
#include <sstream>
#include <string_view>

#include "disc/run/fault.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace fs = std::filesystem;

namespace {

// Seconds of work for a gigabyte that is written.
constexpr double kWritingWeight = 8;

// The tables that a player needs, as the author of the disc writes them last.
bool isWhole(const DiscPlan& plan, const std::string& folder) {
    const auto isThere = [&](const std::string& name) {
        std::error_code error;
        return fs::file_size(folder + "/VIDEO_TS/" + name, error) > 0 && !error;
    };
    for (std::size_t i = 1; i <= plan.films.size(); ++i) {
        if (!isThere(fmt::format("VTS_{:02}_0.IFO", i)) ||
            !isThere(fmt::format("VTS_{:02}_1.VOB", i)))
            return false;
    }
    return isThere("VIDEO_TS.IFO");
}

}  // namespace

std::string warningIn(const std::string& lines) {
    constexpr std::string_view kWarning = "WARN:";
    std::string first;
    int count = 0;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with(kWarning)) continue;
        if (count++ == 0) first = line.substr(line.find_first_not_of(' ', kWarning.size()));
    }
    if (count == 0) return {};
    const std::string others = count == 1 ? "" : fmt::format(" (and {} more)", count - 1);
    return fmt::format("dvdauthor warns: {}{}. See work/{}.", first, others, Tools::kLog);
}

double writingWeight(std::int64_t bytes) {
    return kWritingWeight * static_cast<double>(bytes) / 1e9;
}

void authorDisc(const DiscPlan& plan, const DiscPieces& pieces, const std::string& folder,
                const Workshop& workshop, Progress& progress) {
    const Progress::Task task(progress, "Writing the disc", writingWeight(plan.bytes));
    const std::string file = folder + ".xml";
    writeText(workshop.path(file), authorFile(plan, pieces, folder));
    const std::string said =
        workshop.tools().run({"dvdauthor", "-x", file}, {"", "The disc could not be written", ""});
    if (const std::string warning = warningIn(said); !warning.empty()) progress.say(warning);
    if (!isWhole(plan, workshop.path(folder))) {
        throw DiscError("The disc could not be written: dvdauthor has left out some of its files.");
    }
}

void makeImage(const std::string& folder, const std::string& label, const std::string& image,
               const Workshop& workshop, Progress& progress) {
    const std::int64_t bytes = bytesIn(workshop.path(folder));
    const Progress::Task task(progress, "Writing the disc image", writingWeight(bytes));
    // Players open images by their UDF file system.
    workshop.tools().run(
        {"genisoimage", "-quiet", "-dvd-video", "-udf", "-V", label, "-o", image, folder},
        {"", "The disc image could not be written", ""});
    std::error_code error;
    const auto size = fs::file_size(workshop.path(image), error);
    if (error || static_cast<std::int64_t>(size) < bytes)
        throw DiscError("The disc image could not be written: it is shorter than the disc.");
}

std::int64_t bytesIn(const std::string& folder) {
    std::int64_t bytes = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) bytes += static_cast<std::int64_t>(entry.file_size());
    }
    return bytes;
}

}  // namespace tkv::disc
