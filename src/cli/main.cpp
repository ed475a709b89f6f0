#include <fmt/format.h>

#include <csignal>
#include <exception>
#include <new>

#include "cli/front_end.h"
#include "composer/dvd_menu_picture.h"
#include "system/log.h"
#include "system/processes.h"
#include "system/signals.h"
#include "system/unfinished_file.h"

namespace {

/// Terminates as the signal would have, but leaves no half-written file behind.
void endBySignal(int signal) {
    tkv::removeUnfinishedFile();
    // The default action is restored, and runs once this handler returns.
    static_cast<void>(std::raise(signal));
}

}  // namespace

int main(int argc, char** argv) {
    tkv::openStandardStreams();
    tkv::reserveStandardError();
    // A host that has closed its end of the pipe still wants the page, so SIGPIPE is ignored.
    tkv::handleEndingSignals(endBySignal, static_cast<int>(SA_RESETHAND));
    try {
        // argv may be empty, without even the program's name.
        return tkv::runFrontEnd({argv + (argc > 0 ? 1 : 0), argv + argc}, tkv::dvdMenuPicture);
    } catch (const std::bad_alloc&) {
        tkv::writeStandardError("tkvDvdMenuImg: there is not enough memory, exit\n");
    } catch (const std::exception& error) {
        tkv::writeStandardError(fmt::format("tkvDvdMenuImg: {}, exit\n", error.what()));
    }
    return 1;
}
