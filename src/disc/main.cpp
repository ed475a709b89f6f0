#include <fmt/format.h>

#include <csignal>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>

#include "disc/command_line.h"
#include "disc/disc_error.h"
#include "disc/disc_maker.h"
#include "system/log.h"
#include "system/processes.h"
#include "system/signals.h"
#include "system/unicode.h"

namespace {

volatile std::sig_atomic_t endedBy = 0;

/// The run notices it by itself: its programs end, or no other is started.
void stopBySignal(int signal) {
    endedBy = signal;
    tkv::stopPrograms();
}

void complain(std::string_view why) {
    tkv::writeStandardError(fmt::format("tkvDvdDisc: {}\n", tkv::printable(why)));
}

}  // namespace

int main(int argc, char** argv) {
    tkv::openStandardStreams();
    tkv::handleEndingSignals(stopBySignal, 0);
    try {
        int status = 0;
        const std::optional<tkv::disc::Options> options =
            tkv::disc::readCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc}, status);
        if (!options) return status;
        if (options->projectFile.empty()) {
            tkv::disc::makeDisc(*options);
        } else {
            tkv::disc::writeProjectFile(*options);
        }
        return 0;
    } catch (const tkv::disc::Interrupted&) {
        // As the signal would have ended it, for a shell that wants to know.
        static_cast<void>(std::signal(endedBy, SIG_DFL));
        static_cast<void>(std::raise(endedBy));
    } catch (const std::bad_alloc&) {
        // As it stands: there may be none to make another text of it.
        tkv::writeStandardError("tkvDvdDisc: there is not enough memory.\n");
    } catch (const std::filesystem::filesystem_error& error) {
        complain(fmt::format("{}: {}.", error.path1().string(), error.code().message()));
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return 1;
}
