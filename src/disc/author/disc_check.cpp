#include "disc/author/disc_check.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>
#include <vector>

#include "disc/author/disc_walks.h"
#include "disc/run/environment.h"
#include "disc/run/fault.h"
#include "disc/run/text_file.h"

namespace tkv::disc {

namespace {

constexpr const char* kProgram = "tkvDvdCheck";
constexpr const char* kFaulty = "disc-faulty";

// Seconds of work for a gigabyte.
constexpr double kCheckingWeight = 1;

// Lines of the program that are kept.
constexpr std::size_t kMostLines = 100;

// The faults of a disc, in sentences.
std::vector<std::string> faultsOf(const std::string& disc, const std::string& walks,
                                  const Workshop& workshop, Progress& progress) {
    std::vector<std::string> lines;
    std::string complaint;
    Program program;
    program.command = {programBeside(kProgram), walks, disc};
    program.folder = workshop.path("");
    program.onOutput = [&](std::string_view line) {
        if (lines.size() < kMostLines) lines.emplace_back(line);
    };
    program.onError = [&](std::string_view line) { complaint = line; };
    if (program.command.front().empty()) {
        progress.say("The disc was not checked: for that, install the package tkvdvdcheck.");
        return {};
    }
    const ProgramEnd end = runProgram(std::move(program), workshop.tools().stop());
    switch (end.how) {
        case ProgramEnd::How::stopped:
            throw Interrupted();
        case ProgramEnd::How::killed:
            lines.push_back(fmt::format("{} was ended by signal {}.", kProgram, end.status));
            return lines;
        case ProgramEnd::How::exited:
            if (end.status == 1 && !lines.empty()) return lines;
            if (end.status != 0 || lines.empty()) break;
            for (const std::string& line : lines)
                progress.say(line);
            return {};
        default:
            break;
    }
    progress.say(fmt::format("The disc was not checked: {} ended with status {}.{}{}", kProgram,
                             end.status, complaint.empty() ? "" : " ", complaint));
    return {};
}

}  // namespace

double checkingWeight(std::int64_t bytes) {
    return kCheckingWeight * static_cast<double>(bytes) / 1e9;
}

void checkDisc(const DiscPlan& plan, const std::string& disc, const OutputFolder& folder,
               const Workshop& workshop, Progress& progress) {
    const Progress::Task task(progress, "Checking the disc", checkingWeight(plan.bytes));
    const std::string walks = disc + ".json";
    writeText(workshop.path(walks), discWalks(plan));
    const std::vector<std::string> faults = faultsOf(disc, walks, workshop, progress);
    if (faults.empty()) {
        folder.drop(kFaulty);
        return;
    }
    for (std::size_t i = 1; i < faults.size(); ++i)
        progress.say(faults[i]);
    folder.put(disc, kFaulty);
    throw DiscError(fmt::format("The disc is faulty, and is kept in {}/{}. {}", folder.path(),
                                kFaulty, faults.front()));
}

}  // namespace tkv::disc
