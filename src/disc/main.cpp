#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>

#include "disc/disc_maker.h"
#include "disc/project/command_line.h"
#include "disc/project_writer.h"
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

/// As the signal would have ended it by itself.
void endBySignal() {
    static_cast<void>(std::signal(endedBy, SIG_DFL));
    static_cast<void>(std::raise(endedBy));
}

/// While it computes something large, a run does not look whether it is to stop.
void endAtOnce(int) {
    run.stop();
    endBySignal();
}

/// The run notices it by itself: its programs end, or no other is started. The second signal, or
/// the time, does not wait for that.
void stopBySignal(int signal) {
    const bool isSecond = endedBy != 0;
    endedBy = signal;
    if (isSecond) endAtOnce(signal);
    static_cast<void>(std::signal(SIGALRM, endAtOnce));
    alarm(run.patience());
    run.stop();
}

/// The terminal's key for it does not reach the programs, which have groups of their own.
void suspend(int) {
    run.signalAll(SIGSTOP);
    static_cast<void>(std::raise(SIGSTOP));
    run.signalAll(SIGCONT);
}

/// Exit statuses; that for wrong words is readCommandLine's.
constexpr int kFailed = 1;
constexpr int kLacking = 3;

int complain(std::string_view why) {
    tkv::writeStandardError(fmt::format("tkvDvdDisc: {}\n", tkv::printable(why)));
    return kFailed;
}

int finish(int status) {
    if (std::fflush(stdout) == 0) return status;
    return complain("the standard output cannot be written to.");
}

int statusOf(const Outcome& outcome) {
    const int written = finish(outcome.how == Outcome::How::lacking ? kLacking : 0);
    const std::size_t count = outcome.faults.size();
    if (outcome.how == Outcome::How::lacking)
        complain(fmt::format("{} film{} left out:", count, count == 1 ? " is" : "s are"));
    for (const Fault& fault : outcome.faults)
        complain(fault.words);
    switch (outcome.how) {
        case Outcome::How::made:
        case Outcome::How::lacking:
            return written;
        case Outcome::How::interrupted:
            endBySignal();  // For a shell that wants to know.
            break;
        case Outcome::How::failed:
            break;
    }
    return kFailed;
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
    tkv::handleSignal(SIGTSTP, suspend, SA_RESTART);
    try {
        int status = 0;
        const std::optional<Options> options =
            readCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc},
                            {currentFolder(), userLanguage(), plainFolders(), userPaper()}, status);
        if (!options) return finish(status);
        useLanguage(options->project.labels.language);
        return statusOf(outcomeOf(*options));
    } catch (const std::bad_alloc&) {
        // As it stands: there may be none to make another text of it.
        tkv::writeStandardError("tkvDvdDisc: there is not enough memory.\n");
    } catch (const std::exception& error) {
        return complain(error.what());
    }
    return 1;
}
