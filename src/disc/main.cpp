#include <fmt/format.h>

#include <csignal>
#include <exception>
#include <new>
#include <optional>

#include "disc/disc_maker.h"
#include "disc/project/command_line.h"
#include "disc/run/environment.h"
#include "disc/run/fault.h"
#include "disc/run/terminal_progress.h"
#include "system/log.h"
#include "system/processes.h"
#include "system/signals.h"
#include "system/unicode.h"

namespace {

using namespace tkv::disc;

volatile std::sig_atomic_t endedBy = 0;
tkv::ProgramStop run;

/// The run notices it by itself: its programs end, or no other is started.
void stopBySignal(int signal) {
    endedBy = signal;
    run.stop();
}

int complain(std::string_view why) {
    tkv::writeStandardError(fmt::format("tkvDvdDisc: {}\n", tkv::printable(why)));
    return 1;
}

Outcome outcomeOf(const Options& options) {
    const auto style =
        options.isQuiet ? TerminalProgress::Style::quiet : TerminalProgress::suitableStyle();
    TerminalProgress progress(style);
    if (!options.projectFile.empty()) return writeProjectFile(options, progress, run);
    return makeDisc(options, progress, run);
}

}  // namespace

int main(int argc, char** argv) {
    tkv::openStandardStreams();
    tkv::handleEndingSignals(stopBySignal, 0);
    try {
        int status = 0;
        const std::optional<Options> options = readCommandLine(
            {argv + (argc > 0 ? 1 : 0), argv + argc}, {currentFolder(), userLanguage()}, status);
        if (!options) return status;
        useLanguage(options->project.labels.language);
        const Outcome outcome = outcomeOf(*options);
        if (outcome.isInterrupted) {
            // As the signal would have ended it, for a shell that wants to know.
            static_cast<void>(std::signal(endedBy, SIG_DFL));
            static_cast<void>(std::raise(endedBy));
            return 1;
        }
        return outcome.fault ? complain(outcome.fault->words) : 0;
    } catch (const std::bad_alloc&) {
        // As it stands: there may be none to make another text of it.
        tkv::writeStandardError("tkvDvdDisc: there is not enough memory.\n");
    } catch (const std::exception& error) {
        return complain(error.what());
    }
    return 1;
}
